// SPDX-License-Identifier: Apache-2.0
#include "cli/snapshot_mask.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <string_view>

#include "cli/settings.h"

namespace zeldb::cli {

namespace {

// A shorter value, or one without a digit, may be an ordinary word.
constexpr size_t kShortest = 6;

// The last part of a property's name, and the column that holds the same kind of value.
constexpr struct {
  const char* name;
  const char* column;
} kProperties[] = {{"sn", "SerialNo"},
                   {"serial", "SerialNo"},
                   {"serial_number", "SerialNo"},
                   {"uuid", "UUID"},
                   {"guid", "UUID"},
                   {"asset_tag", "AssetTag"},
                   {"mac", "PermanentAddress"},
                   {"ip", "NetworkAddresses"},
                   {"model", "Model"},
                   {"mfgr", "Manufacture"},
                   {"pn", "PartNo"},
                   {"fru", "FruNo"},
                   {"fw_version", "FwVer"}};
// Stands for an unknown kind: no column has this name.
constexpr const char* kAnyText = "";
constexpr size_t kShortestText = 4;  // a shorter one may be a number

// Members in files that have other names than the columns they are like.
constexpr struct {
  const char* member;
  const char* column;
} kMembers[] = {{"current", "CurrentValue"},
                {"pending", "PendingValue"},
                {"name", "SettingID"},
                {"AttributeName", "SettingID"},
                {"function", "GenID"}};

bool is_alphanumeric(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

std::string lower(std::string_view text) {
  std::string lowered(text);
  std::ranges::transform(lowered, lowered.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return lowered;
}

const char* column_of_property(const std::string& name) {
  const std::string last = lower(name.substr(name.rfind('/') + 1));
  for (const auto& property : kProperties) {
    if (last == property.name) return property.column;
  }
  return kAnyText;
}

// Empty when it holds a number.
std::string text_of(const std::string& bytes) {
  std::string text = bytes.substr(std::min<size_t>(1, bytes.size()));
  text.resize(std::min(text.find('\0'), text.size()));
  const bool is_text = std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) >= ' '; });
  return is_text ? text : "";
}

using Json = nlohmann::ordered_json;

// False for columns that may have an identifying value inside a text.
bool identifies(const std::string& column) {
  const std::string_view kind = identified_by(column);
  return !kind.empty() && kind != "text" && kind != "value" && kind != "other";
}

std::string column_of_member(const std::string& name) {
  for (const auto& member : kMembers) {
    if (name == member.member) return member.column;
  }
  return name;
}

}  // namespace

void SnapshotMask::learn(const std::string& column, const std::string& value) {
  if (!identifies(column)) return;
  const std::string replacement = mask_(column, value);
  const bool has_digit = std::ranges::any_of(value, [](unsigned char c) { return std::isdigit(c) != 0; });
  if (replacement == value || value.size() < kShortest || !has_digit) return;
  const std::string known = lower(value);
  known_[known.substr(0, kShortest)].emplace(known, replacement);
}

void SnapshotMask::learn_property(const std::string& name, const std::string& bytes) {
  learn(column_of_property(name), text_of(bytes));
}

std::string SnapshotMask::column(const std::string& column, const std::string& value, Holds holds) {
  const bool is_replaced =
      identifies(column) || (holds == Holds::FreeText && identified_by(column) == "value");
  return mask_(column, is_replaced ? value : without_known(value), holds);
}

// Bytes after the text of a property have no meaning: only the NUL at its end is kept.
std::string SnapshotMask::property(const std::string& name, const std::string& bytes) {
  const std::string text = text_of(bytes);
  if (text.empty()) return bytes;
  const char* const as = column_of_property(name);
  const std::string shown = *as == '\0' && text.size() < kShortestText ? text : column(as, text);
  const size_t behind = bytes.size() - 1 - text.size();
  return bytes.front() + shown + std::string(std::min<size_t>(behind, 1), '\0');
}

void SnapshotMask::json(Json& content) {
  json(content, {}, Holds::Choice);
}

void SnapshotMask::json(Json& content, const std::string& name, Holds holds) {
  if (content.is_string()) {
    auto& text = content.get_ref<std::string&>();
    text = column(column_of_member(name), text, holds);
  }
  if (content.is_array()) {
    for (Json& element : content) json(element, name, holds);
  }
  if (!content.is_object()) return;
  const auto type = content.find("Type");
  if (type != content.end() && *type == kTextType) holds = Holds::FreeText;
  for (auto& [key, member] : content.items()) json(member, key, holds);
}

std::string SnapshotMask::without_known(const std::string& text) const {
  const std::string lowered = lower(text);
  std::string masked;
  size_t place = 0;
  const auto ends_word = [&](size_t end) { return end >= text.size() || !is_alphanumeric(text[end]); };
  const auto replaced = [&]() -> bool {
    if (place != 0 && is_alphanumeric(text[place - 1])) return false;
    const auto alike = known_.find(lowered.substr(place, kShortest));
    if (alike == known_.end()) return false;
    for (const auto& [value, replacement] : alike->second) {
      if (lowered.compare(place, value.size(), value) != 0 || !ends_word(place + value.size())) continue;
      masked += replacement;
      place += value.size();
      return true;
    }
    return false;
  };
  while (place < text.size()) {
    if (!replaced()) masked += text[place++];
  }
  return masked;
}

}  // namespace zeldb::cli
