// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_CONTENT_VALUES_H
#define ZEL_DB_CONTENT_VALUES_H

#include <cstdint>
#include <string_view>

#include "zel_db/c_face.h"
#include "zel_db/small_vector.h"
#include "zel_db/value.h"

// An ordered column-to-value set. Names and texts are kept together, so that a set of 30 columns is one
// allocation and the names as a whole serve as the key of a cached statement.
struct zel_db_content_values_t {
 public:
  // A second put of a column replaces its value in place.
  void put(std::string_view column, zel_db::Value value);
  void clear();

  bool empty() const { return entries_.empty(); }
  size_t size() const { return entries_.size(); }
  // Each column's name followed by a comma.
  std::string_view names() const { return names_.view(); }
  // The value points into this set.
  zel_db::Value value(size_t index) const {
    const Entry& entry = entries_[index];
    const bool is_text = entry.kind == zel_db::Value::Kind::Text;
    return {is_text ? texts_.begin() + entry.text_start : nullptr, entry.text_size, entry.number, entry.kind};
  }

 private:
  struct Entry {
    uint64_t name_hash;
    uint32_t name_start;
    uint32_t name_size;
    uint32_t text_start;
    uint32_t text_size;
    int64_t number;
    zel_db::Value::Kind kind;
  };

  Entry& entry_of(std::string_view column);

  zel_db::SmallVector<Entry, 32> entries_;
  zel_db::SmallVector<char, 384> names_;
  zel_db::SmallVector<char, 2048> texts_;
  uint64_t seen_ = 0;  // a bit per group of names: if it is unset, the column is new and needs no search
};

namespace zel_db {
using ContentValues = zel_db_content_values_t;
}

#endif
