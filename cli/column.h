// SPDX-License-Identifier: Apache-2.0
//
// One descriptor per column: from it come the table, the JSON, the choice of columns, the help text, the
// schema and the manual page, so that they cannot disagree.
#ifndef CLI_COLUMN_H
#define CLI_COLUMN_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

namespace zeldb::cli {

// Hex: a key or a PCI id, a text of a fixed number of lower-case hexadecimal digits wherever it is shown.
// Health: a number that a table shows in words and in colour. HealthText: words alone.
enum class Type : uint8_t { Text, Unsigned, Signed, Hex, Health, HealthText };

struct Column {
  const char* key;  // in JSON and for --output; the name of the record's member, never to be changed
  const char* heading;
  const char* help;
  Type type;
  uint8_t digits;  // of a Hex, and of a Text that holds such digits; 0 otherwise
  bool is_extra;   // in a table only when asked for
  bool is_whole;   // a text that is never cut
  bool is_summed;  // a table ends with the sum of it
  bool is_minor;   // among the first that a narrow terminal has no room for
  uint16_t size;
  uint32_t offset;
  // The rest tells how a table shows a number; --raw and JSON have it as it is.
  std::string (*words)(uint64_t code) = nullptr;  // empty for a code without a word
  std::optional<uint64_t> none{};                 // the number that means nothing
  // The column applies only if this other one is not 0, or, with "!" before its name, if it is 0.
  const char* condition = nullptr;
};

template <typename Member>
constexpr Column column_of(const char* key, size_t offset, const char* heading, const char* help) {
  using Element = std::remove_extent_t<Member>;
  constexpr bool kText = std::is_array_v<Member>;
  static_assert(kText ? sizeof(Element) == 1 : std::is_integral_v<Element>);
  constexpr Type kType = kText ? Type::Text : std::is_signed_v<Element> ? Type::Signed : Type::Unsigned;
  return {.key = key,
          .heading = heading,
          .help = help,
          .type = kType,
          .digits = kText ? 0 : 2 * sizeof(Element),
          .is_extra = false,
          .is_whole = false,
          .is_summed = false,
          .is_minor = false,
          .size = static_cast<uint16_t>(sizeof(Member)),
          .offset = static_cast<uint32_t>(offset)};
}

// _IN: a member of a record that is itself a member of a row.
#define ZELDB_COLUMN(Record, Member, Heading, Help) \
  ::zeldb::cli::column_of<decltype(Record::Member)>(#Member, offsetof(Record, Member), Heading, Help)
#define ZELDB_COLUMN_IN(Row, Record, Member, Heading, Help)         \
  ::zeldb::cli::column_of<decltype(decltype(Row::Record)::Member)>( \
      #Member, offsetof(Row, Record) + offsetof(decltype(Row::Record), Member), Heading, Help)

constexpr Column extra(Column column) {
  column.is_extra = true;
  return column;
}
constexpr Column whole(Column column) {
  column.is_whole = true;
  return column;
}
constexpr Column summed(Column column) {
  column.is_summed = true;
  return column;
}
constexpr Column minor(Column column) {
  column.is_minor = true;
  return column;
}
// A text column already holds the digits, or is empty.
constexpr Column hex(Column column, uint8_t digits = 0) {
  if (column.type != Type::Text) column.type = Type::Hex;
  if (digits != 0) column.digits = digits;
  return column;
}
constexpr Column in_words(Column column, std::string (*words)(uint64_t code)) {
  column.words = words;
  return column;
}
constexpr Column without(Column column, uint64_t none) {
  column.none = none;
  return column;
}
constexpr Column only_if(Column column, const char* condition) {
  column.condition = condition;
  return column;
}
constexpr Column health(Column column) {
  column.type = column.type == Type::Text ? Type::HealthText : Type::Health;
  return column;
}

// The first column if the rows are of several machines.
constexpr const char* kMachineKey = "Machine";
constexpr Column kMachineColumn = {.key = kMachineKey,
                                   .heading = "MACHINE",
                                   .help = "Name of the machine, if several are read",
                                   .type = Type::Text,
                                   .digits = 0,
                                   .is_extra = false,
                                   .is_whole = true,
                                   .is_summed = false,
                                   .is_minor = false,
                                   .size = 0,
                                   .offset = 0};

// An empty text is monostate.
using Value = std::variant<std::monostate, uint64_t, int64_t, std::string>;
using Row = std::vector<Value>;

Value value_of(const Column& column, const void* record);

constexpr bool is_text(Type type) {
  return type == Type::Text || type == Type::HealthText || type == Type::Hex;
}

// "text", "number", "key of 8 digits", ... for help texts.
std::string type_name(const Column& column);

// Health in words; the number if it has none.
std::string health_text(uint64_t health);
enum class Tone : uint8_t { None, Good, Warning, Bad };
Tone tone_of(const std::string& health);

}  // namespace zeldb::cli

#endif
