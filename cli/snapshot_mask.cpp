// SPDX-License-Identifier: Apache-2.0
#include "cli/snapshot_mask.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cctype>
#include <functional>
#include <string_view>

#include "cli/command.h"

namespace zeldb::cli {

namespace {

// A shorter one, or one without a digit, may as well be a word.
constexpr size_t kShortest = 6;

// What a property is, by the last part of its name; the column that holds the like.
constexpr struct {
  const char* name;
  const char* column;
} kProperties[] = {
    {"sn", "SerialNo"}, {"serial", "SerialNo"},    {"serial_number", "SerialNo"}, {"uuid", "UUID"},
    {"guid", "UUID"},   {"asset_tag", "AssetTag"}, {"mac", "PermanentAddress"},   {"ip", "NetworkAddresses"}};
constexpr const char* kAnyText = "CurrentValue";

// Members of settings in files that have other names than their columns.
constexpr struct {
  const char* member;
  const char* column;
} kMembers[] = {{"current", "CurrentValue"}, {"pending", "PendingValue"}};

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

void for_each_text(Json& json, const std::string& name,
                   const std::function<void(const std::string& name, std::string& text)>& change) {
  if (json.is_string()) change(name, json.get_ref<std::string&>());
  if (json.is_array()) {
    for (Json& element : json) for_each_text(element, name, change);
  }
  if (!json.is_object()) return;
  for (auto& [key, member] : json.items()) for_each_text(member, key, change);
}

// Not where an identifying value may stand inside a text.
bool identifies(const std::string& column) {
  const std::string_view kind = identified_by(column);
  return !kind.empty() && kind != "text";
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

std::string SnapshotMask::column(const std::string& column, const std::string& value) {
  return mask_(column, identifies(column) ? value : without_known(value));
}

std::string SnapshotMask::property(const std::string& name, const std::string& bytes) {
  const std::string text = text_of(bytes);
  if (text.empty()) return bytes;
  return bytes.front() + column(column_of_property(name), text) + bytes.substr(1 + text.size());
}

std::string SnapshotMask::json(const char* file, const std::string& content) {
  Json json = Json::parse(content, nullptr, false);
  if (json.is_discarded()) throw Failure(std::string(file) + ": is no JSON and cannot be masked");
  for_each_text(json, {}, [this](const std::string& name, std::string& text) {
    text = column(column_of_member(name), text);
  });
  return json.dump(2) + "\n";
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
