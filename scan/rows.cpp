// SPDX-License-Identifier: Apache-2.0
#include "scan/rows.h"

#include <algorithm>

namespace zeldb::scan {

namespace {

// The length of the UTF-8 character at the front; 0 if there is none.
size_t length_of_character(std::string_view text) {
  const auto byte = [&](size_t at) { return static_cast<unsigned char>(text[at]); };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || text.size() < length) return 0;
  for (size_t at = 1; at < length; ++at) {
    if ((byte(at) & 0xC0U) != 0x80) return 0;
  }
  const unsigned second = byte(1);
  const bool is_shortest = (first != 0xE0 || second >= 0xA0) && (first != 0xF0 || second >= 0x90);
  const bool is_character = (first != 0xED || second < 0xA0) && (first != 0xF4 || second < 0x90);
  return is_shortest && is_character ? length : 0;
}

}  // namespace

Value text_value(std::string_view text, size_t limit) {
  std::string clean;
  text = text.substr(0, std::min(text.find('\0'), text.size()));
  while (!text.empty()) {
    const size_t length = length_of_character(text);
    const bool is_control = length == 1 && (static_cast<unsigned char>(text[0]) < ' ' || text[0] == 0x7F);
    const std::string_view next = length == 0 ? "?" : is_control ? " " : text.substr(0, length);
    const bool is_leading_blank = clean.empty() && next == " ";
    if (clean.size() + next.size() > limit) break;
    if (!is_leading_blank) clean += next;
    text.remove_prefix(std::max<size_t>(length, 1));
  }
  clean.erase(clean.find_last_not_of(' ') + 1);
  return clean.empty() ? Value() : Value(clean);
}

}  // namespace zeldb::scan
