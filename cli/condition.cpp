// SPDX-License-Identifier: Apache-2.0
#include "cli/condition.h"

#include <strings.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "cli/similar.h"
#include "db/owners.h"
#include "platform/zel_db.h"
#include "zel_db/sql/tokens.h"
#include "zel_db/status.h"

namespace zeldb::cli {

namespace {

constexpr std::string_view kKeywords[] = {"AND", "BETWEEN", "CASE", "ELSE", "END", "ESCAPE", "EXISTS", "IN",
                                          "IS",  "LIKE",    "NOT",  "NULL", "OR",  "THEN",   "WHEN"};

// Returns the words that can only be columns.
std::vector<std::string> columns_in(std::string_view condition) {
  std::vector<std::string> columns;
  zel_db::Tokens tokens(condition);
  for (zel_db::Token token = tokens.next(), next; token.kind != zel_db::Token::Kind::End; token = next) {
    next = tokens.next();
    const bool is_keyword =
        std::ranges::any_of(kKeywords, [&](std::string_view word) { return token.is(word); });
    if (!token.name().empty() && !is_keyword && !next.is('(')) columns.emplace_back(token.name());
  }
  return columns;
}

// Whether the database understands a query for a column.
bool understands(const char* table, const char* column, const std::string& condition) {
  _zel_db_handle_t* const handle = get_dmdb_handle(0, nullptr, 0);
  Result rows;
  const int status =
      zel_db_query(handle, table, &column, 1, condition.c_str(), nullptr, 0, nullptr, rows.out());
  return handle == nullptr || status != zel_db::kSqlError;
}

bool has_column(const char* table, const char* word) {
  return understands(table, word, "1=0");
}

}  // namespace

void require_condition(const std::string& condition, const char* table, std::span<const Column> known) {
  std::vector<std::string> names;
  for (const std::string& word : columns_in(condition)) {
    // A sub-select has columns of other tables.
    if (strcasecmp(word.c_str(), "SELECT") == 0) return;
    if (has_column(table, word.c_str())) continue;
    // Members of a record may come from other tables, too.
    for (const Column& column : known)
      if (has_column(table, column.key)) names.emplace_back(column.key);
    throw WrongUse("--where: " + word + ": no such column in " + table + did_you_mean(word, names));
  }
  if (!understands(table, "_id", condition))
    throw WrongUse("--where: " + condition + ": is no SQL condition");
}

}  // namespace zeldb::cli
