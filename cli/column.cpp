// SPDX-License-Identifier: Apache-2.0
#include "cli/column.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

namespace zeldb::cli {

namespace {

static_assert(std::endian::native == std::endian::little, "numbers are widened as their low bytes");

// The codes that sensors and adapters report.
constexpr struct {
  uint64_t health;
  const char* text;
} kHealth[] = {{0, "Unknown"},  {1, "Other"},   {2, "OK"},   {3, "Degraded"},
               {4, "Stressed"}, {5, "Failing"}, {6, "Error"}};

// The words above, and those of the library for persistent memory.
constexpr struct {
  const char* text;
  Tone tone;
} kTones[] = {{"OK", Tone::Good},
              {"Normal", Tone::Good},
              {"Degraded", Tone::Warning},
              {"Stressed", Tone::Warning},
              {"Failing", Tone::Bad},
              {"Error", Tone::Bad},
              {"Noncritical", Tone::Warning},
              {"Critical", Tone::Bad},
              {"Fatal", Tone::Bad}};

std::string hexadecimal(uint64_t number, unsigned digits) {
  std::string text(digits, '0');
  for (size_t place = digits; place-- > 0; number >>= 4U) text[place] = "0123456789abcdef"[number & 0xFU];
  return text;
}

}  // namespace

Value value_of(const Column& column, const void* record) {
  const char* const bytes = static_cast<const char*>(record) + column.offset;
  if (column.type == Type::Text || column.type == Type::HealthText) {
    const size_t length = strnlen(bytes, column.size);
    return length != 0 ? Value(std::string(bytes, length)) : Value();
  }
  uint64_t number = 0;
  std::memcpy(&number, bytes, column.size);
  if (column.type == Type::Hex) return hexadecimal(number, column.digits);
  if (column.type != Type::Signed) return number;
  const unsigned unused = 64U - 8U * column.size;
  return static_cast<int64_t>(number << unused) >> unused;
}

std::string type_name(const Column& column) {
  switch (column.type) {
    case Type::Hex:
      return "hex, " + std::to_string(column.digits) + " digits";
    case Type::Text:
      return column.digits != 0 ? "hex, " + std::to_string(column.digits) + " digits, or nothing" : "text";
    case Type::HealthText:
      return "text";
    default:
      return "number";
  }
}

std::string health_text(uint64_t health) {
  const auto* const known =
      std::ranges::find(kHealth, health, [](const auto& entry) { return entry.health; });
  return known != std::end(kHealth) ? known->text : std::to_string(health);
}

Tone tone_of(const std::string& health) {
  const auto* const known = std::ranges::find(kTones, health, [](const auto& entry) { return entry.text; });
  return known != std::end(kTones) ? known->tone : Tone::None;
}

}  // namespace zeldb::cli
