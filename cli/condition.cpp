// SPDX-License-Identifier: Apache-2.0
#include "cli/condition.h"

#include <strings.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <string_view>
#include <vector>

#include "cli/similar.h"
#include "platform/zel_db.h"

namespace zeldb::cli {

namespace {

constexpr const char* kKeywords[] = {"AND", "BETWEEN", "CASE", "ELSE", "END", "ESCAPE", "EXISTS", "IN",
                                     "IS",  "LIKE",    "NOT",  "NULL", "OR",  "THEN",   "WHEN"};

bool is_letter(char c) {
  return c == '_' || std::isalnum(static_cast<unsigned char>(c)) != 0;
}

// Takes the text that begins with a quote, or what there is of it, off the condition.
void skip_quoted(std::string_view& rest) {
  const size_t end = rest.find(rest.front(), 1);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
}

// Returns the words that can only be columns.
std::vector<std::string> columns_in(std::string_view rest) {
  std::vector<std::string> words;
  while (!rest.empty()) {
    if (rest.front() == '"' || rest.front() == '\'' || rest.front() == '`') {
      skip_quoted(rest);
      continue;
    }
    const auto size = static_cast<size_t>(std::ranges::find_if_not(rest, is_letter) - rest.begin());
    const std::string word(rest.substr(0, size));
    rest.remove_prefix(std::max<size_t>(size, 1));
    const bool is_number = word.empty() || std::isdigit(static_cast<unsigned char>(word.front())) != 0;
    const bool is_keyword = std::ranges::any_of(
        kKeywords, [&](const char* keyword) { return strcasecmp(keyword, word.c_str()) == 0; });
    if (!is_number && !is_keyword && !rest.starts_with('(')) words.push_back(word);
  }
  return words;
}

bool has_column(const char* table, const std::string& word) {
  constexpr int kSqlError = 2;
  _zel_db_handle_t* const handle = get_dmdb_handle(0, nullptr, 0);
  const char* const column = word.c_str();
  zel_db_result_t* rows = nullptr;
  const int status = zel_db_query(handle, table, &column, 1, "1=0", nullptr, 0, nullptr, &rows);
  zel_db_free_result(rows);
  return handle == nullptr || status != kSqlError;
}

}  // namespace

void require_columns(const std::string& condition, const char* table, std::span<const Column> known) {
  std::vector<std::string> names;
  for (const Column& column : known) names.emplace_back(column.key);
  for (const std::string& word : columns_in(condition)) {
    // A sub-select has columns of other tables.
    if (strcasecmp(word.c_str(), "SELECT") == 0) return;
    if (!has_column(table, word))
      throw WrongUse("--where: " + word + ": no such column in " + table + did_you_mean(word, names));
  }
}

}  // namespace zeldb::cli
