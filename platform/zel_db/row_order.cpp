// SPDX-License-Identifier: Apache-2.0
#include "zel_db/row_order.h"

#include <algorithm>
#include <array>

#include "zel_db/engine.h"
#include "zel_db/schema.h"
#include "zel_db/sql_text.h"

namespace zel_db {
namespace {

// What stands behind the name of the table, outside of parentheses.
struct Tail {
  bool is_ordered = false;
  bool is_closed = false;  // takes no order behind it
};

void take_word(std::string_view word, Tail& tail) {
  static constexpr std::array<std::string_view, 7> kClosing = {"group", "having", "limit", "offset",
                                                               "union", "for",    "window"};
  tail.is_ordered = tail.is_ordered || equal_ignoring_case(word, "order");
  tail.is_closed = tail.is_closed ||
                   std::any_of(kClosing.begin(), kClosing.end(),
                               [&](std::string_view closing) { return equal_ignoring_case(word, closing); });
}

Tail tail_of(std::string_view text) {
  Tail tail;
  int depth = 0;
  scan(
      text,
      [&](std::string_view word) {
        if (depth == 0) take_word(word, tail);
      },
      [&](char c) { depth += c == '('   ? 1
                             : c == ')' ? -1
                                        : 0; });
  return tail;
}

// WHERE Column=? AND ...
bool are_equalities(std::string_view table, std::string_view where) {
  Cursor cursor(where);
  for (const char* before = "where"; !cursor.at_end(); before = "and") {
    if (!cursor.takes_word(before) || !has_column(table, cursor.word())) return false;
    if (!cursor.takes('=') || !cursor.takes('?')) return false;
  }
  return true;
}

bool are_two_columns(std::string_view table, std::string_view columns) {
  Cursor cursor(columns);
  std::string_view first;
  do {
    const std::string_view name = cursor.word();
    if (!has_column(table, name)) return false;
    if (equal_ignoring_case(name, "_id")) continue;
    if (!first.empty() && !equal_ignoring_case(first, name)) return true;
    first = name;
  } while (cursor.takes(','));
  return false;
}

// Whether rows come in the order of their ids unasked. They do where columns are equal to something and that
// is all, for the rows of one key stand in an index as they stand in the table. Where nothing is asked for,
// an index could be taken for the table if it had all that is read, but none here has more than one column.
bool come_in_row_order(std::string_view table, std::string_view columns, std::string_view where) {
  if (!Cursor(where).at_end()) return are_equalities(table, where);
  return Cursor(columns).takes('*') || are_two_columns(table, columns);
}

}  // namespace

std::string_view in_row_order(std::string_view sql, size_t table_end, const Dialect& dialect,
                              std::string& scratch) {
  const std::string_view head = sql.substr(0, table_end);
  const std::string_view where = sql.substr(table_end);
  const std::string_view table = head.substr(head.rfind(' ') + 1);
  const std::string_view columns = head.substr(first_word(head).size());
  const Tail tail = tail_of(where);
  const bool is_aggregate = columns.find('(') != std::string_view::npos;
  if (tail.is_closed || is_aggregate || !has_row_ids(table)) return sql;
  const bool is_distinct = equal_ignoring_case(first_word(columns), "distinct");
  if (dialect.pays_for_order && !is_distinct && come_in_row_order(table, columns, where)) return sql;
  scratch.assign(head);
  if (is_distinct) scratch.append(dialect.without_indexes);
  scratch.append(where);
  // The line may end in a comment.
  if (!is_distinct) scratch.append(tail.is_ordered ? "\n, _id" : "\nORDER BY _id");
  return scratch;
}

}  // namespace zel_db
