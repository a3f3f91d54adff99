// SPDX-License-Identifier: Apache-2.0
#include "cli/mask.h"

#include <algorithm>
#include <iterator>
#include <regex>

namespace zeldb::cli {

namespace {

constexpr std::string_view kText = "text";

// Every identifying column, of whatever listing or table.
constexpr struct {
  std::string_view column;
  std::string_view kind;
} kIdentifying[] = {
    {"SerialNo", "serial"},
    {"PreviousSerialNo", "serial"},
    {"SupplierSN", "serial"},
    {"GPUChipSerialNumber", "serial"},
    {"AssetTag", "asset"},
    {"UUID", "uuid"},
    {"GPUChipUniqueID", "uuid"},
    {"FoDUid", "uuid"},
    {"PermanentAddress", "address"},
    {"NetworkAddresses", "address"},
    {"FCoEPermanentAddress", "address"},
    {"FCoENetworkAddressess", "address"},
    {"CurrentValue", kText},
    {"PendingValue", kText},
    {"Defvalue", kText},
    {"Mfg_default", kText},
    {"Choices", kText},
    {"Message", kText},
    {"UpdateErrString", kText},
};

// UUIDs; addresses of IPv6, MAC addresses and world-wide names, those without separators, addresses of IPv4.
constexpr const char* kInsideTexts =
    R"(\b(?:[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12})"
    R"(|(?:[0-9a-f]{1,4}:){7}[0-9a-f]{1,4}|[0-9a-f]{1,4}(?::[0-9a-f]{1,4})*::(?:[0-9a-f]{1,4}(?::[0-9a-f]{1,4})*)?)"
    R"(|[0-9a-f]{2}(?:[:-][0-9a-f]{2}){5,7}|[0-9a-f]{12}|[0-9a-f]{16}|[0-9a-f]{32})"
    R"(|(?:\d{1,3}\.){3}\d{1,3})\b)";

// Such as "not set" in the place of an address.
bool says_nothing(std::string_view kind, const std::string& value) {
  const bool has_digit = std::ranges::any_of(value, [](char c) { return c >= '0' && c <= '9'; });
  return value.empty() || value == "N/A" || (kind == "address" && !has_digit);
}

}  // namespace

std::string_view identified_by(std::string_view column) {
  const auto* const known =
      std::ranges::find(kIdentifying, column, [](const auto& entry) { return entry.column; });
  return known != std::end(kIdentifying) ? known->kind : std::string_view();
}

std::string Mask::operator()(std::string_view column, const std::string& value) {
  const std::string_view kind = identified_by(column);
  if (kind.empty() || says_nothing(kind, value)) return value;
  return kind == kText ? inside(value) : replacement(kind, value);
}

const std::string& Mask::replacement(std::string_view kind, const std::string& value) {
  std::string& known = known_[value];
  if (known.empty()) {
    const auto count = counts_.try_emplace(std::string(kind), 0).first;
    // Four digits at least: the library leaves out ports with an address of fewer than 12 characters.
    const std::string number = std::to_string(++count->second);
    known.append(kind).append("-").append(number.size() < 4 ? 4 - number.size() : 0, '0').append(number);
  }
  return known;
}

std::string Mask::inside(std::string text) {
  static const std::regex pattern(kInsideTexts, std::regex::icase);
  std::string masked;
  for (std::smatch match; std::regex_search(text, match, pattern); text = match.suffix()) {
    masked += match.prefix().str() + replacement("address", match.str());
  }
  return masked + text;
}

}  // namespace zeldb::cli
