// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_VALUE_H
#define ZEL_DB_VALUE_H

#include <cstdint>
#include <string_view>

namespace zel_db {

// The value of one placeholder. A text is not owned: it outlives the run of the statement.
struct Value {
  enum class Kind : uint8_t { Null, Integer, Unsigned, Text };

  static Value null() { return {}; }
  static Value integer(int64_t number) { return {nullptr, 0, number, Kind::Integer}; }
  static Value unsigned64(uint64_t number) {
    return {nullptr, 0, static_cast<int64_t>(number), Kind::Unsigned};
  }
  // A number of a condition, which may be compared with a column of either kind.
  static Value compared(int64_t number) { return {nullptr, 0, number, Kind::Integer, true}; }
  static Value text_of(std::string_view text) { return {text.data(), text.size(), 0, Kind::Text}; }

  const char* text = nullptr;
  size_t size = 0;
  int64_t number = 0;  // the bits of an unsigned one
  Kind kind = Kind::Null;
  bool is_compared = false;
};

}  // namespace zel_db

#endif
