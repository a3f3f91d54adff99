// SPDX-License-Identifier: Apache-2.0
//
// SQL as both engines spell it. This is the only code that knows where a quoted text or a comment ends.
#ifndef ZEL_DB_SQL_TOKENS_H
#define ZEL_DB_SQL_TOKENS_H

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

namespace zel_db {

struct Token {
  enum class Kind : uint8_t {
    End,
    Word,         // a keyword or a name
    Number,       // from its first digit to its last letter: 5, 5.5, 1e-3, 0x5, 15B3
    Text,         // "..." or '...'; a doubled quote stands for one, a backslash for itself
    Prefixed,     // x'00', N'text'
    Name,         // `...`
    Symbol,       // one character
    Placeholder,  // ?
    Comment,      // also one that is not closed: it ends with the text
    Open,         // a text, name or comment that cannot stand because it is not closed
  };

  // Two machine words: a token is returned in registers.
  const char* start = nullptr;
  uint32_t size = 0;
  int16_t depth = 0;  // of parentheses around it; a parenthesis is outside of its own pair
  Kind kind = Kind::End;
  bool has_doubled_quote = false;  // a text

  std::string_view text() const { return {start, size}; }  // as it is spelled
  bool is(char symbol) const { return kind == Kind::Symbol && *start == symbol; }
  bool is(std::string_view word) const;  // a word, in letters of either case
  bool is_comparison() const { return is('=') || is('<') || is('>') || is('!'); }
  // The name that a word or quoted name stands for; empty for anything else.
  std::string_view name() const;
  const char* begin() const { return start; }
  const char* end() const { return start + size; }
};

class Tokens {
 public:
  explicit Tokens(std::string_view text) : begin_(text.data()), p_(begin_), end_(begin_ + text.size()) {}

  bool at_end() const { return p_ == end_; }
  // The next token that is no comment.
  Token next();
  Token next_or_comment();
  // The next token that matters to literals, without its depth. Numbers count if they follow a comparison,
  // and include their sign; symbols count if they are ";" or known to one engine only. The rest of a
  // statement is skipped, four characters at a time.
  Token next_mark();

 private:
  Token token(Token::Kind kind, const char* end) {
    const char* const start = p_;
    p_ = end;
    return {start, static_cast<uint32_t>(end - start), depth_, kind, false};
  }
  Token quoted(const char* quote, Token::Kind kind);
  Token comment();
  Token word();
  Token symbol();

  const char* begin_;
  const char* p_;
  const char* end_;
  int16_t depth_ = 0;
};

constexpr bool is_blank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
constexpr bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
// Bytes above 0x7F are letters to both engines.
inline constexpr std::array<bool, 256> kWordCharacters = [] {
  std::array<bool, 256> are_of_words{};
  for (const char c : std::string_view("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_$"))
    are_of_words[static_cast<unsigned char>(c)] = true;
  for (size_t byte = 0x80; byte < are_of_words.size(); ++byte) are_of_words[byte] = true;
  return are_of_words;
}();
constexpr bool is_word(char c) {
  return kWordCharacters[static_cast<unsigned char>(c)];
}

bool equal_ignoring_case(std::string_view a, std::string_view b);

// Whether all of a text is a decimal number between blanks: "-5", " 5.0e3 ", not "0x5".
bool reads_as_number(std::string_view text);

// The statements of a script, split at ";". Blanks and comments alone are no statement. A quote that is not
// closed makes one statement of the rest.
std::vector<std::string_view> split_statements(std::string_view script);

}  // namespace zel_db

#endif
