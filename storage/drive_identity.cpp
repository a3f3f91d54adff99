// SPDX-License-Identifier: Apache-2.0
//
// Finds the vendor of a drive by its model, and removes the vendor from a model.
#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

#include "zeldb/storage.h"

namespace {

// Lower case as in ASCII, in every locale.
constexpr char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr bool begins_in_any_case(std::string_view text, std::string_view start) {
  return text.size() >= start.size() &&
         std::ranges::equal(text.substr(0, start.size()), start, {}, lower, lower);
}

// The first row whose prefix a model begins with names its vendor. If one prefix begins another, the longer
// one has to come first. A model begins with a capital letter, even if the rest may be in any case.
struct Vendor {
  std::string_view prefix;
  const char* name;
  bool any_case = false;

  constexpr bool matches(std::string_view model) const {
    return any_case ? model.starts_with(prefix.front()) && begins_in_any_case(model, prefix)
                    : model.starts_with(prefix);
  }
};

constexpr Vendor kVendors[] = {
    {"AL", "Toshiba"},    {"CV", "SSSTC"},
    {"ER", "SSSTC"},      {"HU", "WDC"},
    {"HM", "WDC"},        {"HF", "Hynix"},
    {"KHK", "KIOXIA"},    {"KPM", "KIOXIA"},
    {"KCD", "KIOXIA"},    {"Liteon", "Liteon", true},
    {"MTF", "Micron"},    {"Micron", "Micron"},
    {"MZ", "Samsung"},    {"MG", "Toshiba"},
    {"ST", "Seagate"},    {"SSD", "Intel"},
    {"SSSTC", "SSSTC"},   {"SVE", "SMART"},
    {"SFPC", "SWISSBIT"}, {"THN", "KIOXIA"},
    {"WD", "WDC"},        {"WU", "WDC"},
};

constexpr bool every_vendor_can_match() {
  const std::span<const Vendor> rows(kVendors);
  for (size_t row = 0; row < rows.size(); ++row) {
    const std::string_view prefix = rows[row].prefix;
    if (prefix.empty() || prefix.front() < 'A' || prefix.front() > 'W') return false;
    for (const Vendor& earlier : rows.first(row)) {
      if (earlier.matches(prefix)) return false;
    }
  }
  return true;
}
static_assert(every_vendor_can_match());

// The vendor words that models may begin with. A model may also begin with a leading piece of one. The first
// row with that piece decides, so no word may be a leading piece of an earlier one.
constexpr std::string_view kVendorWords[] = {"Seagate", "WD",     "WDC",   "Intel",  "Samsung", "Toshiba",
                                             "Kioxia",  "Micron", "Hynix", "Liteon", "SSSTC",   "HGST"};
constexpr size_t kTooLong = 9;

constexpr bool is_piece_of_vendor_word(std::string_view text, std::span<const std::string_view> words) {
  return std::ranges::any_of(words, [text](std::string_view word) { return begins_in_any_case(word, text); });
}

constexpr bool every_word_can_match() {
  const std::span<const std::string_view> words(kVendorWords);
  for (size_t row = 0; row < words.size(); ++row) {
    if (words[row].size() >= kTooLong || is_piece_of_vendor_word(words[row], words.first(row))) return false;
  }
  return true;
}
static_assert(every_word_can_match());

// A series name between vendor and model is removed too, unless it is long enough to be the model.
constexpr size_t kLongWord = 8;

// The number of characters to remove from a model that has no leading blanks.
size_t vendor_length(std::string_view model) {
  size_t vendor_end = std::string_view::npos;
  for (size_t i = 0; i < model.size(); ++i) {
    if (model[i] != ' ' && model[i] != '_') continue;
    if (vendor_end != std::string_view::npos) {
      const size_t word = i - vendor_end - 1;
      return (word >= kLongWord ? vendor_end : i) + 1;
    }
    if (i >= kTooLong) return 0;
    if (is_piece_of_vendor_word(model.substr(0, i), kVendorWords)) vendor_end = i;
  }
  return vendor_end != std::string_view::npos ? vendor_end + 1 : 0;
}

}  // namespace

const char* driveModel2Manufacture(const char* model) {
  if (model == nullptr) return model;
  const std::string_view text(model);
  const auto* const vendor =
      std::ranges::find_if(kVendors, [text](const Vendor& row) { return row.matches(text); });
  return vendor != std::end(kVendors) ? vendor->name : "";
}

char* trim_drive_model(char* model) {
  if (model == nullptr) return model;
  const std::string_view text(model);
  const size_t blanks = text.find_first_not_of(' ');
  const size_t start = blanks != std::string_view::npos ? blanks : 0;
  return model + start + vendor_length(text.substr(start));
}
