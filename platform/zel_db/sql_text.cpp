// SPDX-License-Identifier: Apache-2.0
#include "zel_db/sql_text.h"

#include <algorithm>
#include <cstring>

namespace zel_db {

const char* skip_quoted(const char* begin, const char* end) {
  const char quote = *begin;
  for (const char* p = begin + 1; p < end;) {
    p = static_cast<const char*>(std::memchr(p, quote, static_cast<size_t>(end - p)));
    if (p == nullptr) return nullptr;
    if (p + 1 == end || p[1] != quote) return p + 1;
    p += 2;
  }
  return nullptr;
}

const char* skip_comment(const char* begin, const char* end) {
  const std::string_view text(begin, static_cast<size_t>(end - begin));
  if (text.starts_with("--")) {
    const size_t line_end = text.find('\n');
    return line_end == std::string_view::npos ? end : begin + line_end + 1;
  }
  if (text.starts_with("/*")) {
    const size_t close = text.find("*/", 2);
    return close == std::string_view::npos ? nullptr : begin + close + 2;
  }
  return begin;
}

const char* skip_blanks(const char* begin, const char* end) {
  while (begin < end) {
    if (is_blank(*begin)) {
      ++begin;
      continue;
    }
    const char* behind = skip_comment(begin, end);
    if (behind == begin || behind == nullptr) return begin;
    begin = behind;
  }
  return end;
}

std::string_view first_word(std::string_view statement) {
  const char* end = statement.data() + statement.size();
  const char* word = skip_blanks(statement.data(), end);
  return {word, static_cast<size_t>(std::find_if_not(word, end, is_word) - word)};
}

bool has_sub_select(std::string_view text) {
  for (size_t at = text.find('('); at != std::string_view::npos; at = text.find('(', at + 1)) {
    const char* const inside = skip_blanks(text.data() + at + 1, text.data() + text.size());
    const auto rest = static_cast<size_t>(text.data() + text.size() - inside);
    if (equal_ignoring_case(first_word({inside, rest}), "select")) return true;
  }
  return false;
}

bool reads_as_number(std::string_view text) {
  const char* p = std::find_if_not(text.begin(), text.end(), is_blank);
  const char* const end = text.end();
  const auto skip_sign = [&] { p += p < end && (*p == '+' || *p == '-') ? 1 : 0; };
  const auto skip_digits = [&] {
    const char* const from = p;
    p = std::find_if_not(p, end, is_digit);
    return p - from;
  };
  skip_sign();
  auto digits = skip_digits();
  if (p < end && *p == '.') {
    ++p;
    digits += skip_digits();
  }
  if (digits == 0) return false;
  if (p < end && (*p == 'e' || *p == 'E')) {
    ++p;
    skip_sign();
    if (skip_digits() == 0) return false;
  }
  return std::find_if_not(p, end, is_blank) == end;
}

std::string_view Cursor::word() {
  const auto end = std::find_if_not(rest_.begin(), rest_.end(), is_word);
  const std::string_view word = rest_.substr(0, static_cast<size_t>(end - rest_.begin()));
  rest_.remove_prefix(word.size());
  skip_blanks();
  return word;
}

bool Cursor::takes(char symbol) {
  if (!rest_.starts_with(symbol)) return false;
  rest_.remove_prefix(1);
  skip_blanks();
  return true;
}

bool Cursor::takes_word(std::string_view word) {
  const Cursor before = *this;
  if (equal_ignoring_case(this->word(), word)) return true;
  *this = before;
  return false;
}

void Cursor::skip_blanks() {
  rest_.remove_prefix(
      static_cast<size_t>(std::find_if_not(rest_.begin(), rest_.end(), is_blank) - rest_.begin()));
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char left, char right) { return lower(left) == lower(right); });
}

}  // namespace zel_db
