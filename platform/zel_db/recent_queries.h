// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_RECENT_QUERIES_H
#define ZEL_DB_RECENT_QUERIES_H

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "zel_db/hash.h"

namespace zel_db {

// Remembers the statement that the parts of a query led to. Programs ask the same few questions again and
// again: to compare the parts with those of an earlier call takes less than to put them together, to look for
// literals, and to hash.
class RecentQuery {
 public:
  // Makes it that of these columns, if it is of others.
  void select(std::string_view table, std::span<const char* const> columns);
  // Whether the whole statement is known: one of a condition without literals.
  bool knows(std::string_view where, std::string_view order, size_t parameters) const {
    return statement_hash != 0 && parameters == parameters_ && where == where_ && order == order_;
  }
  void learn(std::string_view where, std::string_view order, size_t parameters, std::string_view text,
             uint64_t hash);

  std::string head;  // SELECT columns FROM table
  uint64_t head_hash = 0;
  std::string statement;
  uint64_t statement_hash = 0;  // 0: none

 private:
  bool is_of(std::string_view table, std::span<const char* const> columns) const;

  std::string table_;
  std::string names_;  // each ends with a NUL
  std::vector<size_t> starts_;
  std::string where_;
  std::string order_;
  size_t parameters_ = 0;
};

class RecentQueries {
 public:
  // The address of the columns only tells where to look; their names are compared.
  RecentQuery& of(std::span<const char* const> columns) {
    return queries_[static_cast<size_t>(mix(0, reinterpret_cast<uintptr_t>(columns.data()))) %
                    queries_.size()];
  }

 private:
  std::array<RecentQuery, 16> queries_;
};

}  // namespace zel_db

#endif
