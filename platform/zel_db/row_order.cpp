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
  const char* const end = text.data() + text.size();
  int depth = 0;
  for (const char* p = text.data(); p != nullptr && p < end;) {
    if (*p == '\'' || *p == '"' || *p == '`') {
      p = skip_quoted(p, end);
    } else if (is_word(*p)) {
      const std::string_view word = first_word({p, static_cast<size_t>(end - p)});
      if (depth == 0) take_word(word, tail);
      p += word.size();
    } else {
      tail.is_closed = tail.is_closed || skip_comment(p, end) != p;
      depth += *p == '(' ? 1 : *p == ')' ? -1 : 0;
      ++p;
    }
  }
  return tail;
}

std::string_view without_blanks(std::string_view text) {
  const char* const end = text.data() + text.size();
  const char* const begin = skip_blanks(text.data(), end);
  return {begin, static_cast<size_t>(end - begin)};
}

bool takes(std::string_view& text, std::string_view expected) {
  if (!text.starts_with(expected)) return false;
  text = without_blanks(text.substr(expected.size()));
  return true;
}

// Column=?
bool takes_equality(std::string_view& text) {
  const std::string_view name = first_word(text);
  return !name.empty() && takes(text, name) && takes(text, "=") && takes(text, "?");
}

bool are_equalities(std::string_view where) {
  std::string_view before = "where";
  while (equal_ignoring_case(first_word(where), before)) {
    takes(where, first_word(where));
    if (!takes_equality(where)) return false;
    before = "and";
  }
  return where.empty();
}

bool names_two_columns(std::string_view columns) {
  std::string_view first;
  for (std::string_view name = first_word(columns); !name.empty(); name = first_word(columns)) {
    takes(columns, name);
    if (!columns.empty() && !takes(columns, ",")) return false;
    if (name == "_id") continue;
    if (!first.empty() && !equal_ignoring_case(first, name)) return true;
    first = name;
  }
  return false;
}

// Whether rows come in the order of their ids unasked. They do where columns are equal to something and that
// is all, for the rows of one key stand in an index as they stand in the table. Where nothing is asked for,
// an index could be taken for the table if it had all that is read, but none here has more than one column.
bool come_in_row_order(std::string_view columns, std::string_view where) {
  if (!where.empty()) return are_equalities(where);
  return columns.starts_with('*') || names_two_columns(columns);
}

}  // namespace

std::string_view in_row_order(std::string_view sql, size_t table_end, const Dialect& dialect,
                              std::string& scratch) {
  const std::string_view head = sql.substr(0, table_end);
  const std::string_view columns = without_blanks(head.substr(first_word(head).size()));
  const Tail tail = tail_of(sql.substr(table_end));
  const bool is_aggregate = columns.find('(') != std::string_view::npos;
  if (tail.is_closed || is_aggregate || !has_row_ids(head.substr(head.rfind(' ') + 1))) return sql;
  const bool is_distinct = equal_ignoring_case(first_word(columns), "distinct");
  const std::string_view where = without_blanks(sql.substr(table_end));
  if (dialect.pays_for_order && !is_distinct && come_in_row_order(columns, where)) return sql;
  scratch.assign(head);
  if (is_distinct) scratch.append(dialect.without_indexes);
  scratch.append(sql.substr(table_end));
  if (!is_distinct) scratch.append(tail.is_ordered ? ", _id" : " ORDER BY _id");
  return scratch;
}

}  // namespace zel_db
