// SPDX-License-Identifier: Apache-2.0
#include "zel_db/recent_queries.h"

#include <cstring>
#include <utility>

#include "zel_db/sql/statements.h"

namespace zel_db {

bool RecentQuery::is_of(std::string_view table, std::span<const char* const> columns) const {
  if (head.empty() || table != table_ || columns.size() != starts_.size()) return false;
  for (size_t i = 0; i < columns.size(); ++i) {
    if (std::strcmp(columns[i], names_.c_str() + starts_[i]) != 0) return false;
  }
  return true;
}

void RecentQuery::select(std::string_view table, std::span<const char* const> columns) {
  if (is_of(table, columns)) return;
  *this = {};
  for (const char* column : columns) {
    starts_.push_back(names_.size());
    names_.append(column).push_back('\0');
  }
  std::string text = select_text(table, columns);
  table_ = table;
  head_hash = hash_of(text);
  head = std::move(text);
}

void RecentQuery::learn(std::string_view where, std::string_view order, size_t parameters,
                        std::string_view text, uint64_t hash) {
  statement_hash = 0;
  where_ = where;
  order_ = order;
  parameters_ = parameters;
  statement = text;
  statement_hash = hash;
}

}  // namespace zel_db
