// SPDX-License-Identifier: Apache-2.0
#include "cli/mask.h"

#include <re2/re2.h>

#include <algorithm>
#include <iterator>

namespace zeldb::cli {

namespace {

constexpr const char* kProduct = "tells a kind of product, not one of its kind";
constexpr const char* kVersion = "a version, or a day";
constexpr const char* kPlace = "a place in the machine";
constexpr const char* kCode = "a code, or a word of a fixed list";
constexpr const char* kSetting = "describes a setting or property of every machine of this kind";
constexpr const char* kAbout = "about listings, not about a machine";

constexpr std::string_view kText = "text";
constexpr std::string_view kValue = "value";

// Every identifying column, of whatever listing or table.
constexpr struct {
  std::string_view column;
  std::string_view kind;
} kIdentifying[] = {
    {kMachineKey, "machine"},
    {"Names", "machine"},
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
    {"CurrentValue", kValue},
    {"PendingValue", kValue},
    {"Defvalue", kValue},
    {"Mfg_default", kValue},
    {"Choices", kText},
    {"Message", kText},
    {"Finding", kText},
    {"UpdateErrString", kText},
};

// Columns that stay as they are, and why.
constexpr Unmasked kUnmasked[] = {
    {"CardName", kProduct},
    {"ProductName", kProduct},
    {"Manufacture", kProduct},
    {"Manufacturer", kProduct},
    {"ManufacturerName", kProduct},
    {"SecondaryText", kProduct},
    {"Model", kProduct},
    {"PartNo", kProduct},
    {"FRUNo", kProduct},
    {"FruNo", kProduct},
    {"L2PartNo", kProduct},
    {"DeviceName", kProduct},
    {"FirmwareName", kProduct},
    {"Description", kProduct},
    {"SoftwareID", kProduct},
    {"Version", kProduct},
    {"OtherPackageType", kProduct},
    {"GPUChipName", kProduct},
    {"GPUChipManufacturer", kProduct},
    {"GPUChipModel", kProduct},
    {"GPUChipPartNumber", kProduct},
    {"GPUChipSKU", kProduct},
    {"GPUChipFamily", kProduct},
    {"VideoMemorySize", kProduct},
    {"Capacity", kProduct},
    {"Name", kProduct},
    {"Detail", kProduct},
    {"Value", kProduct},
    {"VersionString", kVersion},
    {"PendingVersionString", kVersion},
    {"PkgVersionString", kVersion},
    {"ReleaseDate", kVersion},
    {"PendingReleaseDate", kVersion},
    {"FirmwareVersion", kVersion},
    {"FwVersion", kVersion},
    {"FwVer", kVersion},
    {"AIMSpecVersion", kVersion},
    {"Date", kVersion},
    {"SlotDesignation", kPlace},
    {"Socket", kPlace},
    {"DevLocator", kPlace},
    {"BankLocator", kPlace},
    {"Location", kPlace},
    {"Address", kPlace},
    {"Place", kPlace},
    {"ConnectorType", kCode},
    {"ConnectorTypeText", kCode},
    {"ConnectorLayout", kCode},
    {"ConnectorLayoutText", kCode},
    {"PackageType", kCode},
    {"PackageTypeText", kCode},
    {"LinkTechnology", kCode},
    {"LinkTechnologyText", kCode},
    {"ProtocolTypeText", kCode},
    {"vNICMode", kCode},
    {"vNICModeText", kCode},
    {"ConnectionType", kCode},
    {"ConnectionTypeText", kCode},
    {"Role", kCode},
    {"RoleText", kCode},
    {"VideoMemoryType", kCode},
    {"VideoMemoryTypeText", kCode},
    {"GPUChipFormFactor", kCode},
    {"GPUChipFormFactorText", kCode},
    {"Classification", kCode},
    {"DriveTypeId", kCode},
    {"DriveType", kCode},
    {"MediaTypeId", kCode},
    {"MediaType", kCode},
    {"HealthStatusText", kCode},
    {"SecurityStateText", kCode},
    {"FIPSModeText", kCode},
    {"GenID", kCode},
    {"Change", kCode},
    {"Kind", kCode},
    {"What", kCode},
    {"Severity", kCode},
    {"Type", kCode},
    {"Defaultaction", kSetting},
    {"RecordId", kSetting},
    {"SettingID", kSetting},
    {"SettingName", kSetting},
    {"SuppressIf", kSetting},
    {"GrayIf", kSetting},
    {"GroupID", kSetting},
    {"GroupName", kSetting},
    {"GroupSuppressIf", kSetting},
    {"GroupGrayIf", kSetting},
    {"Mriname", kSetting},
    {"ShortDesc", kSetting},
    {"FullDesc", kSetting},
    {"Pattern", kSetting},
    {"propName", kSetting},
    {"View", kAbout},
    {"Column", kAbout},
    {"Identifies", kAbout},
    {"Help", kAbout},
    {"Heading", kAbout},
    {"Why", kAbout},
};

// UUIDs; addresses of IPv6, MAC addresses and world-wide names, those without separators, addresses of IPv4.
constexpr const char* kInsideTexts =
    R"(\b(?:[0-9a-f]{8}(?:-[0-9a-f]{4}){3}-[0-9a-f]{12})"
    R"(|(?:[0-9a-f]{1,4}:){7}[0-9a-f]{1,4}|[0-9a-f]{1,4}(?::[0-9a-f]{1,4})*::(?:[0-9a-f]{1,4}(?::[0-9a-f]{1,4})*)?)"
    R"(|[0-9a-f]{2}(?:[:-][0-9a-f]{2}){5,7}|[0-9a-f]{12}|[0-9a-f]{16}|[0-9a-f]{32})"
    R"(|(?:\d{1,3}\.){3}\d{1,3})\b)";

RE2::Options any_case() {
  RE2::Options options(RE2::Latin1);
  options.set_case_sensitive(false);
  return options;
}

// Whether the value is a placeholder, such as "not set" for an address.
bool says_nothing(std::string_view kind, const std::string& value) {
  const bool has_digit = std::ranges::any_of(value, [](char c) { return c >= '0' && c <= '9'; });
  return value.empty() || value == "N/A" || (kind == "address" && !has_digit);
}

}  // namespace

std::span<const Unmasked> unmasked_columns() {
  return kUnmasked;
}

std::string_view identified_by(std::string_view column) {
  const auto* const known =
      std::ranges::find(kIdentifying, column, [](const auto& entry) { return entry.column; });
  if (known != std::end(kIdentifying)) return known->kind;
  return std::ranges::find(kUnmasked, column, &Unmasked::column) != std::end(kUnmasked) ? "" : "other";
}

std::string Mask::operator()(std::string_view column, const std::string& value, Holds holds) {
  const std::string_view kind = identified_by(column);
  if (kind.empty() || says_nothing(kind, value)) return value;
  if (kind == kValue && holds == Holds::FreeText) return replacement(kText, value);
  return kind == kText || kind == kValue ? inside(value) : replacement(kind, value);
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

std::string Mask::inside(const std::string& text) {
  static const RE2 pattern(kInsideTexts, any_case());
  std::string masked;
  size_t begin = 0;
  for (re2::StringPiece found; pattern.Match(text, begin, text.size(), RE2::UNANCHORED, &found, 1);) {
    const auto place = static_cast<size_t>(found.data() - text.data());
    masked += text.substr(begin, place - begin) + replacement("address", std::string(found));
    begin = place + found.size();
  }
  return masked + text.substr(begin);
}

}  // namespace zeldb::cli
