// SPDX-License-Identifier: Apache-2.0
#ifndef DB_VALUES_H
#define DB_VALUES_H

#include <cstdint>
#include <span>

#include "db/field.h"
#include "platform/zel_db.h"

namespace zeldb {

enum class EmptyText { AsNull, AsText, LeftOut };

// Content values, cleared and released on every path; false when they could not be allocated.
class ContentValues {
 public:
  explicit ContentValues(_zel_db_handle_t* handle) : values_(zel_db_get_content_values(handle)) {}
  ContentValues(const ContentValues&) = delete;
  ContentValues& operator=(const ContentValues&) = delete;
  ~ContentValues() {
    if (values_ == nullptr) return;
    clear();
    zel_db_free_content_values(values_);
  }

  explicit operator bool() const { return values_ != nullptr; }
  zel_db_content_values_t* get() const { return values_; }
  void clear() { zel_db_content_clear(values_); }

  // One column per field, in their order, but for empty texts that are left out. The texts of the record must
  // be terminated.
  void put(std::span<const Field> fields, const void* record, EmptyText empty);

 private:
  zel_db_content_values_t* values_;
};

// Logs that the function's content values could not be allocated, and returns the status for it.
int no_memory(const char* function);

}  // namespace zeldb

#endif
