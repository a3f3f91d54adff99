// SPDX-License-Identifier: Apache-2.0
//
// The little of SQL's spelling on which literal lifting and script splitting have to agree.
#ifndef ZEL_DB_SQL_TEXT_H
#define ZEL_DB_SQL_TEXT_H

#include <string_view>

namespace zel_db {

inline bool is_blank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}
inline bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
// Bytes above 0x7F are letters to both engines.
inline bool is_word(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || is_digit(c) || c == '_' ||
         c == '$' || byte >= 0x80;
}

// Behind the quoted text whose opening quote stands at begin; null when it is not closed. A doubled quote
// does not close it, a backslash means nothing.
const char* skip_quoted(const char* begin, const char* end);

// Behind the comment that starts at begin, begin itself when none starts there, null when it is not closed.
const char* skip_comment(const char* begin, const char* end);

// The first character that is neither blank nor in a closed comment, end when there is none.
const char* skip_blanks(const char* begin, const char* end);

// The word that a statement starts with, empty when it starts with none.
std::string_view first_word(std::string_view statement);

// Whether a "select" stands in it behind a parenthesis.
bool has_sub_select(std::string_view text);

bool equal_ignoring_case(std::string_view a, std::string_view b);

// Whether all of a text is a decimal number, between blanks.
bool reads_as_number(std::string_view text);

// Shows what is neither blank nor in a comment, word by word and character by character; of a quoted text or
// name only its opening quote. Ends at a quote or comment that is not closed.
template <class OnWord, class OnSymbol>
void scan(std::string_view text, OnWord on_word, OnSymbol on_symbol) {
  const char* const end = text.data() + text.size();
  const char* p = skip_blanks(text.data(), end);
  while (p != nullptr && p < end) {
    if (is_word(*p)) {
      const std::string_view word = first_word({p, static_cast<size_t>(end - p)});
      on_word(word);
      p += word.size();
    } else {
      on_symbol(*p);
      p = *p == '\'' || *p == '"' || *p == '`' ? skip_quoted(p, end) : p + 1;
    }
    if (p != nullptr) p = skip_blanks(p, end);
  }
}

// Reads a text from its beginning. Blanks mean nothing, comments are not understood.
class Cursor {
 public:
  explicit Cursor(std::string_view text) : rest_(text) { skip_blanks(); }

  bool at_end() const { return rest_.empty(); }
  // The next word, empty when none is next.
  std::string_view word();
  // Whether this is next, which is then behind it.
  bool takes(char symbol);
  bool takes_word(std::string_view word);

 private:
  void skip_blanks();

  std::string_view rest_;
};

}  // namespace zel_db

#endif
