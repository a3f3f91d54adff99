// SPDX-License-Identifier: Apache-2.0
//
// The columns of a record as data. One Field per column feeds the column list of a query, the fill of a
// record, and the content values of a write, so that they cannot drift apart.
#ifndef DB_FIELD_H
#define DB_FIELD_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

namespace zeldb {

static_assert(std::endian::native == std::endian::little,
              "numbers are truncated and widened as their low bytes");

// A Code is a number that its column holds as text.
enum class Kind : uint8_t { Text, Unsigned, Signed, Code };

struct Field {
  const char* column;
  Kind kind;
  uint16_t size;
  uint32_t offset;
  uint32_t fallback;
};

template <typename Member>
constexpr Field field_of(const char* column, size_t offset, uint32_t fallback = 0) {
  using Element = std::remove_extent_t<Member>;
  constexpr bool kText = std::is_array_v<Member>;
  static_assert(kText ? sizeof(Element) == 1 : std::is_integral_v<Element>);
  constexpr Kind kKind = kText ? Kind::Text : std::is_signed_v<Element> ? Kind::Signed : Kind::Unsigned;
  return {column, kKind, static_cast<uint16_t>(sizeof(Member)), static_cast<uint32_t>(offset), fallback};
}

constexpr Field code_field(Field field) {
  field.kind = Kind::Code;
  return field;
}

// The column has the member's name. _OR gives the value for an unreadable column, _AS another name for the
// column.
#define ZELDB_FIELD(Record, Member) \
  ::zeldb::field_of<decltype(Record::Member)>(#Member, offsetof(Record, Member))
#define ZELDB_FIELD_OR(Record, Member, Fallback) \
  ::zeldb::field_of<decltype(Record::Member)>(#Member, offsetof(Record, Member), Fallback)
#define ZELDB_CODE_FIELD(Record, Member, Fallback) \
  ::zeldb::code_field(ZELDB_FIELD_OR(Record, Member, Fallback))
#define ZELDB_FIELD_AS(Record, Member, Column) \
  ::zeldb::field_of<decltype(Record::Member)>(Column, offsetof(Record, Member))

// Without a constructor of its own: g++ 12 puts a constant of a class that has one into writable memory.
template <size_t N>
struct FieldTable {
  std::array<Field, N> fields;
  std::array<const char*, N> columns;
};
template <typename... Fields>
constexpr FieldTable<sizeof...(Fields)> field_table(Fields... list) {
  return {{list...}, {list.column...}};
}

// Records may be packed: members are reached as bytes.
inline const unsigned char* bytes_of(const Field& field, const void* record) {
  return static_cast<const unsigned char*>(record) + field.offset;
}
inline unsigned char* bytes_of(const Field& field, void* record) {
  return static_cast<unsigned char*>(record) + field.offset;
}

// Copies of a size that is known are no calls.
inline void set_number(const Field& field, void* record, uint64_t value) {
  unsigned char* const place = bytes_of(field, record);
  if (field.size == sizeof(uint32_t)) {
    std::memcpy(place, &value, sizeof(uint32_t));
  } else if (field.size == 1) {
    *place = static_cast<unsigned char>(value);
  } else {
    std::memcpy(place, &value, field.size);
  }
}

inline uint64_t number_of(const Field& field, const void* record) {
  uint64_t value = 0;
  std::memcpy(&value, bytes_of(field, record), field.size);
  return value;
}

inline void terminate_texts(std::span<const Field> fields, void* record) {
  for (const Field& field : fields) {
    if (field.kind == Kind::Text) bytes_of(field, record)[field.size - 1] = 0;
  }
}

}  // namespace zeldb

#endif
