// SPDX-License-Identifier: Apache-2.0
//
// Conversions from columns to properties. Unknown values are null: an empty text, a text such as "N/A" that
// firmware writes for no value, and a number or text that the schema does not allow.
#ifndef CLI_REDFISH_VALUES_H
#define CLI_REDFISH_VALUES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "cli/redfish/machine.h"
#include "cli/redfish/tree.h"

namespace zeldb::cli::redfish {

// A value that is left out if it does not apply to the part. Arguments go by value, because members of some
// records are not aligned.
template <typename Value>
Json only_if(bool applies, Value value) {
  return applies ? Json(std::move(value)) : Json::left_out();
}

constexpr bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
constexpr bool is_letter_or_digit(char c) {
  return is_digit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
// A text fit for a URI: letters and digits stay, other characters become hyphens.
std::string slug(std::string_view text);

bool says_nothing(const std::string& text);

struct Text {
  static constexpr const char* kNote = "";
  static Json of(const Machine& machine, std::string_view column, const std::string& text);
};

// For properties that cannot be null in the schema.
struct TextIfKnown {
  static constexpr const char* kNote = "left out if it is not known";
  static Json of(const Machine& machine, std::string_view column, const std::string& text);
};

struct Number {
  static constexpr const char* kNote = "";
  static Json of(const Machine&, std::string_view, uint64_t number) { return number; }
};

struct Count {
  static constexpr const char* kNote = "0: null";
  static Json of(const Machine&, std::string_view, uint64_t number);
};

struct Percent {
  static constexpr const char* kNote = "more than 100: null";
  static Json of(const Machine&, std::string_view, uint64_t number);
};

struct Flag {
  static constexpr const char* kNote = "0: false, otherwise true";
  static Json of(const Machine&, std::string_view, uint64_t number) { return number != 0; }
};

struct Health {
  static constexpr const char* kNote = "2 `OK`, 3 and 4 `Warning`, 5 and 6 `Critical`, others null";
  static Json of(const Machine&, std::string_view, uint64_t health);
};

struct Lanes {
  static constexpr const char* kNote = "0 and more than 32: null; a NULL reads as 4 or 16, see above";
  static Json of(const Machine&, std::string_view, uint64_t lanes);
};

struct Generation {
  static constexpr const char* kNote = "N is `GenN` up to 6, others null; a NULL reads as 3 or 4, see above";
  static Json of(const Machine&, std::string_view, uint64_t generation);
};

template <int kDigits>
struct Hex {
  static constexpr const char* kNote = "a text, as `0x1F`";
  static Json of(const Machine&, std::string_view, uint64_t number);
};

struct PciId {
  static constexpr const char* kNote = "a text, as `0x8086`; 0 and 65535: null";
  static Json of(const Machine&, std::string_view, uint64_t id);
};

struct Mebibytes {
  static constexpr const char* kNote = "bytes divided by 2^20";
  static Json of(const Machine&, std::string_view, uint64_t bytes) { return bytes >> 20U; }
};

struct Uuid {
  static constexpr const char* kNote =
      "32 hexadecimal digits: hyphens after the 8th, 12th, 16th and 20th; another form: null";
  static Json of(const Machine& machine, std::string_view column, const std::string& text);
};

struct Day {
  static constexpr const char* kNote = "a day, as `2024-03-11`: with `T00:00:00Z`; another form: null";
  static Json of(const Machine&, std::string_view, const std::string& text);
};

// Bytes of a text such as "960GB" or "3.84TB"; null for another one.
struct Capacity {
  static constexpr const char* kNote = "`960GB`, `3.84TB`: times 10^9, 10^12; another form: null";
  static Json of(const Machine&, std::string_view, const std::string& text);
};

// Hexadecimal digits of an identifying column; masking keeps their number.
std::string in_digits(const Machine& machine, std::string_view column, const std::string& digits);

// An address of so many bytes, or null. A masked one has the form of an address.
Json address(const Machine& machine, const std::string& text, size_t bytes);

// The worst of several healths, or null where none is known.
Json worst(const std::vector<Json>& healths);

struct Code {
  uint64_t code;
  const char* text;
};
// The text of a code, or null.
template <size_t N>
Json coded(const Code (&codes)[N], uint64_t code) {
  for (const Code& known : codes) {
    if (known.code == code) return known.text;
  }
  return nullptr;
}

std::string hexadecimal(uint64_t number, int digits);

extern template struct Hex<1>;
extern template struct Hex<2>;
extern template struct Hex<4>;
extern template struct Hex<6>;

}  // namespace zeldb::cli::redfish

#endif
