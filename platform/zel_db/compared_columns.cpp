// SPDX-License-Identifier: Apache-2.0
#include "zel_db/compared_columns.h"

#include "zel_db/schema.h"
#include "zel_db/sql_text.h"

namespace zel_db {
namespace {

// A select, or an update.
struct Scope {
  explicit Scope(int parentheses = 0, size_t around = 0) : depth(parentheses), outer(around) {}

  std::string_view table;
  int tables = 0;
  int depth;  // of the parentheses that it stands in
  size_t outer;
  bool names_tables = false;
};

struct Compared {
  std::string_view column;  // empty where it is none
  size_t scope;
};

class Comparisons {
 public:
  void word(std::string_view word) {
    if (before_ == '(' && equal_ignoring_case(word, "select")) {
      scopes_.emplace_back(depth_, current_);
      current_ = scopes_.size() - 1;
    }
    take_table(word, scopes_[current_]);
    column_ = before_ == '.' ? std::string_view() : word;
    before_ = ' ';
    is_compared_ = false;
  }

  void symbol(char c) {
    before_ = c;
    if (c == '=' || c == '<' || c == '>' || c == '!') {
      is_compared_ = true;
      return;
    }
    Scope& scope = scopes_[current_];
    if (c == '?') placeholders_.push_back({is_compared_ ? column_ : std::string_view(), current_});
    if (c == ',' && scope.names_tables) ++scope.tables;
    if (c == '(') ++depth_;
    if (c == ')' && scope.depth == depth_) current_ = scope.outer;
    if (c == ')') --depth_;
    column_ = {};
    is_compared_ = false;
  }

  std::vector<bool> with_numbers() const {
    std::vector<bool> numbers;
    for (const Compared& compared : placeholders_)
      numbers.push_back(is_number(compared.column, compared.scope));
    return numbers;
  }

 private:
  void take_table(std::string_view word, Scope& scope) {
    if (is_table_next_) scope.table = word;
    const bool is_from = equal_ignoring_case(word, "from");
    is_table_next_ = is_from || equal_ignoring_case(word, "update");
    if (is_table_next_ || equal_ignoring_case(word, "join")) ++scope.tables;
    scope.names_tables = is_from || (scope.names_tables && !equal_ignoring_case(word, "where"));
  }

  // A name that the table of a select does not have is one of the select around it. Where there are several
  // tables, or an unknown one, nobody knows.
  bool is_number(std::string_view column, size_t place) const {
    for (;; place = scopes_[place].outer) {
      const Scope& scope = scopes_[place];
      if (scope.tables != 1 || !has_row_ids(scope.table)) return false;
      if (place == 0 || has_column(scope.table, column)) return has_number(scope.table, column);
    }
  }

  std::vector<Scope> scopes_ = std::vector<Scope>(1);
  std::vector<Compared> placeholders_;
  std::string_view column_;
  size_t current_ = 0;
  int depth_ = 0;
  char before_ = ' ';  // the symbol, unless it was a word
  bool is_table_next_ = false;
  bool is_compared_ = false;
};

}  // namespace

std::vector<bool> compares_numbers(std::string_view sql) {
  Comparisons comparisons;
  scan(
      sql, [&](std::string_view word) { comparisons.word(word); },
      [&](char symbol) { comparisons.symbol(symbol); });
  return comparisons.with_numbers();
}

}  // namespace zel_db
