// SPDX-License-Identifier: Apache-2.0
#include "cli/text.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cwchar>

#include "cli/terminal.h"

namespace zeldb::cli {

namespace {

constexpr const char* kReplacement = "\xEF\xBF\xBD";
constexpr const char* kEllipsis = "\xE2\x80\xA6";

struct Character {
  char32_t code;
  size_t length;  // in bytes
  bool valid;
};

// Overlong forms, surrogates and codes beyond the last one are not valid; each of their bytes is on its own.
Character first_character(std::string_view text) {
  const auto byte = [text](size_t place) { return static_cast<unsigned char>(text[place]); };
  const unsigned lead = byte(0);
  if (lead < 0x80) return {lead, 1, true};
  const size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  constexpr Character kBroken{0, 1, false};
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return kBroken;
  char32_t code = lead & (0x7FU >> length);
  for (size_t place = 1; place < length; ++place) {
    if ((byte(place) & 0xC0U) != 0x80) return kBroken;
    code = code << 6U | (byte(place) & 0x3FU);
  }
  constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return kBroken;
  return {code, length, true};
}

// The number of terminal cells of the first character: two, one, or none if it combines.
size_t width_of(std::string_view text) {
  const int width = wcwidth(static_cast<wchar_t>(first_character(text).code));
  return static_cast<size_t>(std::max(width, 0));
}

// Control characters, and characters that change the direction of a line.
bool steers_a_terminal(char32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || (code >= 0x202A && code <= 0x202E) ||
         (code >= 0x2066 && code <= 0x2069);
}

}  // namespace

std::string printable(std::string_view text, Escape escape) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const Character character = first_character(text);
    if (!character.valid) {
      shown += kReplacement;
    } else if ((steers_a_terminal(character.code) && escape != Escape::None) ||
               (escape == Escape::Ascii && character.code >= 0x80)) {
      char code[16];
      std::snprintf(code, sizeof(code), character.code < 0x100 ? "\\x%02x" : "\\u%04x",
                    static_cast<unsigned>(character.code));
      shown += code;
    } else {
      if (character.code == U'\\' && escape == Escape::Raw) shown += '\\';
      shown += text.substr(0, character.length);
    }
    text.remove_prefix(character.length);
  }
  return shown;
}

namespace {

template <typename Measure>
std::string cut_by(Measure measure, const std::string& text, size_t most, const char* ellipsis) {
  size_t taken = 0;
  size_t kept = 0;  // bytes before the ellipsis
  for (std::string_view rest = text; !rest.empty(); rest.remove_prefix(first_character(rest).length)) {
    taken += measure(rest);
    if (taken > most) return text.substr(0, kept) + ellipsis;
    if (taken < most) kept = text.size() - rest.size() + first_character(rest).length;
  }
  return text;
}

}  // namespace

std::string cut(const std::string& text, size_t characters) {
  return cut_by([](std::string_view) { return size_t{1}; }, text, characters, kEllipsis);
}

std::string cut_to_places(const std::string& text, size_t places) {
  return cut_by(width_of, text, places, prints_utf8() ? kEllipsis : "+");
}

std::string in_locale(const std::string& text) {
  return prints_utf8() ? text : printable(text, Escape::Ascii);
}

}  // namespace zeldb::cli
