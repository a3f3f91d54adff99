// SPDX-License-Identifier: Apache-2.0
#include "zel_db/sql/tokens.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace zel_db {
namespace {

using Kind = Token::Kind;

constexpr std::array<uint8_t, 256> kMarks = [] {
  std::array<uint8_t, 256> marks{};
  for (const char c : std::string_view("\"'`=<>?-/;#@[\\")) marks[static_cast<unsigned char>(c)] = 1;
  return marks;
}();

unsigned mark_of(char c) {
  return kMarks[static_cast<unsigned char>(c)];
}

// The end of a number, which may have the sign of an exponent: 1e-3.
const char* end_of_number(const char* p, const char* end) {
  bool is_decimal = true;
  for (; p < end && (is_word(*p) || *p == '.'); ++p) {
    if (is_digit(*p) || *p == '.') continue;
    const bool has_signed_exponent = is_decimal && (*p == 'e' || *p == 'E') && end - p > 2 &&
                                     (p[1] == '+' || p[1] == '-') && is_digit(p[2]);
    if (has_signed_exponent) ++p;
    is_decimal = false;
  }
  return p;
}

// The end of a number with its sign; p if there is none.
const char* end_of_signed(const char* p, const char* end) {
  const char* const digits = p < end && (*p == '-' || *p == '+') ? p + 1 : p;
  if (digits == end || !is_digit(*digits)) return p;
  const char* rest = digits + 1;
  while (rest < end && is_digit(*rest)) ++rest;
  return rest < end && (is_word(*rest) || *rest == '.') ? end_of_number(digits, end) : rest;
}

// The first character after a comparison and blanks.
const char* operand_after(const char* p, const char* end) {
  do ++p;
  while (p < end && (*p == '=' || *p == '<' || *p == '>' || is_blank(*p)));
  return p;
}

bool begins_comment(const char* p, const char* end) {
  return end - p > 1 && ((p[0] == '-' && p[1] == '-') || (p[0] == '/' && p[1] == '*'));
}

bool is_prefix(char c) {
  return std::string_view("xXbBnN").find(c) != std::string_view::npos;
}

}  // namespace

Token Tokens::quoted(const char* quote, Kind kind) {
  bool has_doubled_quote = false;
  for (const char* p = quote + 1; p < end_; p += 2) {
    p = static_cast<const char*>(std::memchr(p, *quote, static_cast<size_t>(end_ - p)));
    if (p == nullptr) break;
    if (p + 1 == end_ || p[1] != *quote) {
      Token text = token(kind, p + 1);
      text.has_doubled_quote = has_doubled_quote;
      return text;
    }
    has_doubled_quote = true;
  }
  return token(Kind::Open, end_);
}

Token Tokens::word() {
  const char* const end = std::find_if_not(p_, end_, is_word);
  if (end == p_ + 1 && end < end_ && *end == '\'' && is_prefix(*p_)) return quoted(end, Kind::Prefixed);
  return token(Kind::Word, end);
}

// A text may end within a comment, but not with its first two characters.
Token Tokens::comment() {
  const std::string_view rest(p_, static_cast<size_t>(end_ - p_));
  const bool is_line = rest.front() == '-';
  const size_t close = is_line ? rest.find('\n') : rest.find("*/", 2);
  if (!is_line && rest.size() == 2) return token(Kind::Open, end_);
  return token(Kind::Comment, close == std::string_view::npos ? end_ : p_ + close + (is_line ? 1 : 2));
}

Token Tokens::symbol() {
  switch (*p_) {
    case '?':
      return token(Kind::Placeholder, p_ + 1);
    case '(': {
      const Token outside = token(Kind::Symbol, p_ + 1);
      ++depth_;
      return outside;
    }
    case ')':
      --depth_;
      break;
    case '-':
    case '/':
      if (begins_comment(p_, end_)) return comment();
      break;
    case '.':
      if (end_ - p_ > 1 && is_digit(p_[1])) return token(Kind::Number, end_of_number(p_, end_));
      break;
    default:
      break;
  }
  return token(Kind::Symbol, p_ + 1);
}

Token Tokens::next_or_comment() {
  while (p_ < end_ && is_blank(*p_)) ++p_;
  if (p_ == end_) return token(Kind::End, end_);
  if (is_digit(*p_)) return token(Kind::Number, end_of_number(p_, end_));
  if (is_word(*p_)) return word();
  if (*p_ == '"' || *p_ == '\'') return quoted(p_, Kind::Text);
  return *p_ == '`' ? quoted(p_, Kind::Name) : symbol();
}

Token Tokens::next() {
  Token token = next_or_comment();
  while (token.kind == Kind::Comment) token = next_or_comment();
  return token;
}

Token Tokens::next_mark() {
  const char* p = p_;
  const char* const end = end_;
  for (;;) {
    while (end - p >= 4 && (mark_of(p[0]) | mark_of(p[1]) | mark_of(p[2]) | mark_of(p[3])) == 0) p += 4;
    while (p < end && mark_of(*p) == 0) ++p;
    const char* const passed = p_;
    p_ = p;
    if (p == end) return token(Kind::End, end);
    if (*p == '"') return quoted(p, Kind::Text);
    switch (*p) {
      case '\'':
        // The letter of x'00' has been passed.
        if (p == passed || !is_prefix(p[-1]) || (p - 1 != begin_ && is_word(p[-2])))
          return quoted(p, Kind::Text);
        --p_;
        return quoted(p, Kind::Prefixed);
      case '?':
        return token(Kind::Placeholder, p + 1);
      case '=':
      case '<':
      case '>':
        p_ = p = operand_after(p, end);
        if (p < end && *p == '"') return quoted(p, Kind::Text);  // the usual case
        if (const char* const to = end_of_signed(p, end); to != p) return token(Kind::Number, to);
        break;
      case '-':
      case '/':
        if (begins_comment(p, end)) return comment();
        ++p;
        break;
      default:
        return next_or_comment();
    }
  }
}

bool Token::is(std::string_view word) const {
  return kind == Kind::Word && equal_ignoring_case(text(), word);
}

std::string_view Token::name() const {
  if (kind == Kind::Word) return text();
  return kind == Kind::Name ? text().substr(1, size - 2) : std::string_view();
}

bool equal_ignoring_case(std::string_view a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char left, char right) { return lower(left) == lower(right); });
}

bool reads_as_number(std::string_view text) {
  const char* const end = text.end();
  const char* p = std::find_if_not(text.begin(), end, is_blank);
  if (p < end && (*p == '+' || *p == '-')) ++p;
  if (p == end || !(is_digit(*p) || *p == '.'))
    return false;  // from_chars would take "inf" and a second sign
  double number = 0;
  const auto [rest, error] = std::from_chars(p, end, number);
  return error != std::errc::invalid_argument && std::find_if_not(rest, end, is_blank) == end;
}

std::vector<std::string_view> split_statements(std::string_view script) {
  std::vector<std::string_view> statements;
  Tokens tokens(script);
  const char* begin = nullptr;
  for (Token token = tokens.next();; token = tokens.next()) {
    const bool ends = token.kind == Kind::End || token.is(';');
    if (!ends && begin == nullptr) begin = token.begin();
    if (ends && begin != nullptr) {
      statements.emplace_back(begin, static_cast<size_t>(token.begin() - begin));
      begin = nullptr;
    }
    if (token.kind == Kind::End) return statements;
  }
}

}  // namespace zel_db
