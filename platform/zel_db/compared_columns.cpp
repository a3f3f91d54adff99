// SPDX-License-Identifier: Apache-2.0
#include "zel_db/compared_columns.h"

#include "zel_db/schema.h"
#include "zel_db/sql_text.h"

namespace zel_db {
namespace {

// A select with its table, or with several: then nobody knows whose its columns are.
struct Scope {
  std::string_view table;
  int tables = 0;
  int depth = 0;  // of the parentheses that it stands in
  size_t outer = 0;
};

struct Compared {
  std::string_view column;  // empty where it is none
  size_t scope;
};

class Scan {
 public:
  void word(std::string_view word, bool is_qualified) {
    if (is_opened_ && equal_ignoring_case(word, "select")) {
      scopes_.push_back({{}, 0, depth_, current_});
      current_ = scopes_.size() - 1;
    }
    Scope& scope = scopes_[current_];
    if (names_table_) scope.table = word;
    names_table_ = equal_ignoring_case(word, "from") || equal_ignoring_case(word, "update");
    if (names_table_) ++scope.tables;
    column_ = is_qualified ? std::string_view() : word;
    is_opened_ = false;
    is_compared_ = false;
  }

  void symbol(char c) {
    if (c == '=' || c == '<' || c == '>' || c == '!') {
      is_compared_ = true;
      return;
    }
    if (c == '?') placeholders_.push_back({is_compared_ ? column_ : std::string_view(), current_});
    is_opened_ = c == '(';
    if (c == '(') ++depth_;
    if (c == ')' && scopes_[current_].depth == depth_) current_ = scopes_[current_].outer;
    if (c == ')') --depth_;
    column_ = {};
    is_compared_ = false;
  }

  std::vector<bool> numbers() const {
    std::vector<bool> numbers;
    for (const Compared& compared : placeholders_)
      numbers.push_back(is_number(compared.column, compared.scope));
    return numbers;
  }

 private:
  // A name that the table of a select does not have is one of the select around it.
  bool is_number(std::string_view column, size_t place) const {
    for (;; place = scopes_[place].outer) {
      const Scope& scope = scopes_[place];
      if (scope.tables != 1) return false;
      if (place == 0 || has_column(scope.table, column)) return has_number(scope.table, column);
    }
  }

  std::vector<Scope> scopes_ = std::vector<Scope>(1);
  std::vector<Compared> placeholders_;
  std::string_view column_;
  size_t current_ = 0;
  int depth_ = 0;
  bool is_opened_ = false;
  bool names_table_ = false;
  bool is_compared_ = false;
};

}  // namespace

std::vector<bool> compares_numbers(std::string_view sql) {
  Scan scan;
  const char* const end = sql.data() + sql.size();
  const char* behind = nullptr;
  for (const char* p = sql.data(); p < end; p = behind) {
    behind = skip_blanks(p, end);
    if (behind != p) continue;
    behind = p + 1;
    if (is_word(*p)) {
      const std::string_view word = first_word({p, static_cast<size_t>(end - p)});
      scan.word(word, p != sql.data() && p[-1] == '.');
      behind = p + word.size();
      continue;
    }
    if (*p == '\'' || *p == '"' || *p == '`') behind = skip_quoted(p, end);
    if (behind == nullptr) break;
    scan.symbol(*p);
  }
  return scan.numbers();
}

}  // namespace zel_db
