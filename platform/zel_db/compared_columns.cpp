// SPDX-License-Identifier: Apache-2.0
#include "zel_db/compared_columns.h"

#include "zel_db/schema.h"
#include "zel_db/sql_text.h"

namespace zel_db {
namespace {

// Names of columns are looked up in the statement's table: with a second one they could be that one's.
class Scan {
 public:
  void word(std::string_view word, bool is_qualified) {
    if (names_table_) table_ = word;
    names_table_ = equal_ignoring_case(word, "from") || equal_ignoring_case(word, "update");
    if (names_table_) ++tables_;
    column_ = is_qualified ? std::string_view() : word;
    is_compared_ = false;
  }
  void comparison() { is_compared_ = true; }
  void placeholder() {
    compared_.push_back(is_compared_ ? column_ : std::string_view());
    other();
  }
  void other() {
    column_ = {};
    is_compared_ = false;
  }
  std::vector<bool> numbers() const {
    std::vector<bool> numbers(compared_.size());
    for (size_t i = 0; i < numbers.size(); ++i) numbers[i] = tables_ == 1 && is_number(table_, compared_[i]);
    return numbers;
  }

 private:
  bool names_table_ = false;
  bool is_compared_ = false;
  int tables_ = 0;
  std::string_view table_;
  std::string_view column_;
  std::vector<std::string_view> compared_;
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
    if (*p == '\'' || *p == '"' || *p == '`') {
      behind = skip_quoted(p, end);
      if (behind == nullptr) break;
      scan.other();
    } else if (is_word(*p)) {
      const std::string_view word = first_word({p, static_cast<size_t>(end - p)});
      scan.word(word, p != sql.data() && p[-1] == '.');
      behind = p + word.size();
    } else if (*p == '=' || *p == '<' || *p == '>' || *p == '!') {
      scan.comparison();
    } else if (*p == '?') {
      scan.placeholder();
    } else {
      scan.other();
    }
  }
  return scan.numbers();
}

}  // namespace zel_db
