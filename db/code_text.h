// SPDX-License-Identifier: Apache-2.0
#ifndef DB_CODE_TEXT_H
#define DB_CODE_TEXT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <span>

namespace zeldb {

struct CodeText {
  uint32_t code;
  const char* text;
};

// For a static_assert beside each table: the lookup is a binary search.
constexpr bool is_code_table(std::span<const CodeText> table) {
  return std::ranges::adjacent_find(table, std::ranges::greater_equal{}, &CodeText::code) == table.end();
}

constexpr const char* text_of(std::span<const CodeText> table, uint32_t code, const char* fallback) {
  const auto entry = std::ranges::lower_bound(table, code, {}, &CodeText::code);
  return entry != table.end() && entry->code == code ? entry->text : fallback;
}

template <size_t N>
void copy_text(char (&to)[N], const char* from) {
  std::snprintf(to, N, "%s", from);
}

}  // namespace zeldb

#endif
