// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/values.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "cli/parts.h"

namespace zeldb::cli::redfish {

namespace {

constexpr size_t kLongestId = 48;

bool is_hexadecimal(char c) {
  return is_digit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool are_hexadecimal(std::string_view text) {
  return std::ranges::all_of(text, is_hexadecimal);
}

// "17" of "uuid-0017".
uint64_t number_of(const std::string& word) {
  const size_t begin = word.find_last_not_of("0123456789") + 1;
  return std::strtoull(word.c_str() + begin, nullptr, 10);
}

std::string with_separators(const std::string& digits) {
  std::string text;
  for (size_t place = 0; place < digits.size(); place += 2)
    text += (text.empty() ? "" : ":") + digits.substr(place, 2);
  return text;
}

}  // namespace

std::string slug(std::string_view text) {
  std::string id;
  for (const char c : text) {
    if (id.size() == kLongestId) break;
    if (is_letter_or_digit(c))
      id += c;
    else if (!id.empty() && id.back() != '-')
      id += '-';
  }
  while (id.ends_with('-')) id.pop_back();
  return id.empty() ? "Unnamed" : id;
}

bool says_nothing(const std::string& text) {
  return text.empty() || is_placeholder(text.c_str());
}

Json Text::of(const Machine& machine, std::string_view column, const std::string& text) {
  return says_nothing(text) ? Json() : Json(machine.shown(column, text));
}

Json TextIfKnown::of(const Machine& machine, std::string_view column, const std::string& text) {
  return only_if(!says_nothing(text), machine.shown(column, text));
}

Json Count::of(const Machine&, std::string_view, uint64_t number) {
  return number != 0 ? Json(number) : Json();
}

Json Percent::of(const Machine&, std::string_view, uint64_t number) {
  constexpr uint64_t kAll = 100;
  return number <= kAll ? Json(number) : Json();
}

Json Health::of(const Machine&, std::string_view, uint64_t health) {
  constexpr Code kHealth[] = {{2, "OK"}, {3, "Warning"}, {4, "Warning"}, {5, "Critical"}, {6, "Critical"}};
  return coded(kHealth, health);
}

Json Lanes::of(const Machine&, std::string_view, uint64_t lanes) {
  constexpr uint64_t kMost = 32;
  return lanes != 0 && lanes <= kMost ? Json(lanes) : Json();
}

Json Generation::of(const Machine&, std::string_view, uint64_t generation) {
  constexpr uint64_t kLast = 6;
  return generation != 0 && generation <= kLast ? Json("Gen" + std::to_string(generation)) : Json();
}

std::string hexadecimal(uint64_t number, int digits) {
  char text[24];
  std::snprintf(text, sizeof(text), "%llX", static_cast<unsigned long long>(number));
  const std::string shown = text;
  const auto wanted = static_cast<size_t>(digits);
  return shown.size() < wanted ? std::string(wanted - shown.size(), '0') + shown : shown;
}

template <int kDigits>
Json Hex<kDigits>::of(const Machine&, std::string_view, uint64_t number) {
  const std::string digits = hexadecimal(number, kDigits);
  return digits.size() == kDigits ? Json("0x" + digits) : Json();
}

template struct Hex<1>;
template struct Hex<2>;
template struct Hex<4>;
template struct Hex<6>;

Json PciId::of(const Machine& machine, std::string_view column, uint64_t id) {
  constexpr uint64_t kNone = 0xFFFF;
  return id != 0 && id != kNone ? Hex<4>::of(machine, column, id) : Json();
}

std::string in_digits(const Machine& machine, std::string_view column, const std::string& digits) {
  if (machine.mask == nullptr) return digits;
  return hexadecimal(number_of(machine.shown(column, digits)), static_cast<int>(digits.size()));
}

Json Uuid::of(const Machine& machine, std::string_view column, const std::string& text) {
  constexpr size_t kDigits = 32;
  if (text.size() != kDigits || !are_hexadecimal(text)) return nullptr;
  const std::string digits = in_digits(machine, column, text);
  return digits.substr(0, 8) + "-" + digits.substr(8, 4) + "-" + digits.substr(12, 4) + "-" +
         digits.substr(16, 4) + "-" + digits.substr(20);
}

Json Day::of(const Machine&, std::string_view, const std::string& text) {
  constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const std::string form = "0000-00-00";
  const auto fits = [](char c, char wanted) { return wanted == '0' ? is_digit(c) : c == wanted; };
  if (text.size() != form.size() || !std::ranges::equal(text, form, fits)) return nullptr;
  const long year = std::strtol(text.c_str(), nullptr, 10);
  const long month = std::strtol(text.c_str() + 5, nullptr, 10);
  const long day = std::strtol(text.c_str() + 8, nullptr, 10);
  const bool is_leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
  if (year == 0 || month < 1 || month > 12) return nullptr;
  const int last = kDays[month - 1] + (month == 2 && is_leap ? 1 : 0);
  return day >= 1 && day <= last ? Json(text + "T00:00:00Z") : Json();
}

Json Capacity::of(const Machine&, std::string_view, const std::string& text) {
  char* end = nullptr;
  const double number = !text.empty() && is_digit(text.front()) ? std::strtod(text.c_str(), &end) : 0;
  if (end == nullptr) return nullptr;
  std::string_view unit = end;
  while (unit.starts_with(' ')) unit.remove_prefix(1);
  constexpr struct {
    std::string_view unit;
    double bytes;
  } kUnits[] = {{"GB", 1e9}, {"TB", 1e12}, {"PB", 1e15}};
  constexpr double kMost = 1e18;
  for (const auto& known : kUnits) {
    const double bytes = number * known.bytes;
    if (unit == known.unit && bytes > 0 && bytes < kMost) return std::llround(bytes);
  }
  return nullptr;
}

Json address(const Machine& machine, const std::string& text, size_t bytes) {
  constexpr size_t kStep = 3;  // two digits and a separator
  if (text.size() != bytes * kStep - 1) return nullptr;
  for (size_t place = 0; place < text.size(); ++place) {
    const bool is_separator = place % kStep == 2;
    if (is_separator ? text[place] != ':' && text[place] != '-' : !is_hexadecimal(text[place]))
      return nullptr;
  }
  if (machine.mask == nullptr) return text;
  // The bit for a locally administered address.
  const uint64_t number = number_of(machine.shown("PermanentAddress", text));
  return with_separators("02" + hexadecimal(number, static_cast<int>(2 * bytes) - 2));
}

Json worst(const std::vector<Json>& healths) {
  Json found;
  for (const char* health : {"OK", "Warning", "Critical"}) {
    if (std::ranges::find(healths, health, &Json::text) != healths.end()) found = health;
  }
  return found;
}

}  // namespace zeldb::cli::redfish
