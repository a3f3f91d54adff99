// SPDX-License-Identifier: Apache-2.0
#include "cmr/bios.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

namespace zel_platform {
namespace {

constexpr size_t kBlock = 0x10000;        // the places in one have 16 bits
constexpr uint32_t kInFile = 0x80000000;  // a file has less than 27

#define TEXT(name) \
  { #name, offsetof(cmr_bios_attribute, name), true }
#define WORD(name) \
  { #name, offsetof(cmr_bios_attribute, name), false }
constexpr size_t kOfNoRecord = sizeof(cmr_bios_attribute);
constexpr std::array<BiosMember, kBiosMembers> kTable = {{{"pending", kOfNoRecord, true},
                                                          {"current", kOfNoRecord, true},
                                                          TEXT(AttributeName),
                                                          TEXT(SuppressIf),
                                                          TEXT(GrayIf),
                                                          TEXT(GroupID),
                                                          TEXT(GroupName),
                                                          TEXT(GroupSuppressIf),
                                                          TEXT(GroupGrayIf),
                                                          TEXT(SettingName),
                                                          TEXT(Mriname),
                                                          TEXT(ShortDesc),
                                                          TEXT(FullDesc),
                                                          TEXT(Defvalue),
                                                          TEXT(Mfg_default),
                                                          TEXT(Defaultaction),
                                                          TEXT(RecordId),
                                                          TEXT(Pattern),
                                                          TEXT(Choices),
                                                          WORD(LocationByte1),
                                                          WORD(Bus),
                                                          WORD(Device),
                                                          WORD(Function),
                                                          WORD(Type),
                                                          WORD(Flags),
                                                          WORD(Minim),
                                                          WORD(Maxim),
                                                          WORD(Step),
                                                          WORD(Mins),
                                                          WORD(Maxs),
                                                          WORD(Mininstances),
                                                          WORD(Maxinstances),
                                                          WORD(Numchoices)}};
#undef TEXT
#undef WORD
enum { kPending, kCurrent, kName };

constexpr bool has(uint64_t present, size_t member) {
  return (present >> member & 1U) != 0;
}

std::string value_id(const std::string& collection, const std::optional<std::string>& attribute) {
  return collection + "." + attribute.value_or("");
}

}  // namespace

constexpr std::array<BiosMember, kBiosMembers> kBiosMemberTable = kTable;

uint32_t Bios::kept(std::string_view text) {
  if (texts_.empty() || size_ - used_ <= text.size()) {
    const size_t size = std::max(kBlock, text.size() + 1);
    texts_.push_back(std::make_unique<char[]>(size));
    used_ = 0;
    size_ = size;
  }
  const auto place = static_cast<uint32_t>((texts_.size() - 1) << 16U | used_);
  text.copy(text_at(place), text.size());
  used_ += text.size() + 1;
  return place;
}

void Bios::set_text(size_t member, std::string_view text, std::optional<size_t> place) {
  if (!place || member <= kName) return set_word(member, kept(text));
  const auto start = static_cast<uint32_t>(*place);
  from_ = std::min(from_, start);
  to_ = std::max(to_, start + static_cast<uint32_t>(text.size()) + 1);
  set_word(member, kInFile | start);
}

void Bios::set_word(size_t member, uint32_t word) {
  members_[member] = word;
  present_ |= uint64_t{1} << member;
}

void Bios::end_attribute() {
  starts_.push_back(static_cast<uint32_t>(packed_.size()));
  packed_.push_back(static_cast<uint32_t>(present_));
  packed_.push_back(static_cast<uint32_t>(present_ >> 32U));
  for (size_t i = 0; i < kBiosMembers; ++i) {
    if (has(present_, i)) packed_.push_back(members_[i]);
  }
  present_ = 0;
}

void Bios::forget_attributes() {
  starts_.resize(collections_.empty() ? 0 : collections_.back().end);
}

void Bios::end_collection(const std::optional<std::string>& name) {
  Collection collection = {};
  collection.first = collections_.empty() ? 0 : collections_.back().end;
  collection.end = static_cast<uint32_t>(starts_.size());
  collection.name = name ? text_at(kept(*name)) : nullptr;
  collection.from = std::min(from_, to_);
  collection.to = std::exchange(to_, 0);
  from_ = UINT32_MAX;
  collections_.push_back(collection);
  for (uint32_t i = collection.first; i < collection.end; ++i) by_name_.push_back(i);
  std::stable_sort(
      by_name_.begin() + collection.first, by_name_.end(),
      [this](uint32_t left, uint32_t right) { return std::strcmp(name_of(left), name_of(right)) < 0; });
}

uint64_t Bios::unpack(uint32_t attribute, Members& members) const {
  auto next = packed_.begin() + starts_[attribute];
  const uint64_t low = *next++;
  const uint64_t present = uint64_t{*next++} << 32U | low;
  for (size_t i = 0; i < kBiosMembers; ++i) {
    if (has(present, i)) members[i] = *next++;
  }
  return present;
}

const char* Bios::name_of(uint32_t attribute) const {
  Members members;
  return has(unpack(attribute, members), kName) ? text_at(members[kName]) : "";
}

Bios::Attributes Bios::attributes(const Collection& collection) const {
  Attributes all;
  all.texts = file_->read_at(collection.from, collection.to - collection.from);
  all.records.resize(collection.end - collection.first);
  const auto text_of = [&](uint32_t place) {
    if ((place & kInFile) == 0) return text_at(place);
    char* const text = all.texts.data() + ((place & ~kInFile) - collection.from);
    *std::find(text, &all.texts.back(), '"') = '\0';
    return text;
  };
  for (uint32_t number = collection.first; number < collection.end; ++number) {
    auto* const record = reinterpret_cast<char*>(&all.records[number - collection.first]);
    Members members;
    const uint64_t present = unpack(number, members);
    for (size_t i = kName; i < kBiosMembers; ++i) {
      if (!has(present, i)) continue;
      const char* const text = kTable[i].is_text ? text_of(members[i]) : nullptr;
      if (text != nullptr) {
        std::memcpy(record + kTable[i].offset, &text, sizeof(text));
      } else {
        std::memcpy(record + kTable[i].offset, &members[i], sizeof(members[i]));
      }
    }
  }
  return all;
}

std::optional<Bios::Value> Bios::value(std::string_view id) const {
  for (const Collection& collection : collections_) {
    if (collection.name == nullptr) continue;
    const std::string_view name = collection.name;
    if (!id.starts_with(name) || !id.substr(name.size()).starts_with('.')) continue;
    const std::string_view wanted = id.substr(name.size() + 1);
    const auto first = by_name_.begin() + collection.first, end = by_name_.begin() + collection.end;
    const auto found = std::lower_bound(
        first, end, wanted,
        [this](uint32_t attribute, std::string_view sought) { return name_of(attribute) < sought; });
    if (found == end || name_of(*found) != wanted) continue;
    Members members;
    const uint64_t present = unpack(*found, members);
    const auto text = [&](size_t i) { return has(present, i) ? text_at(members[i]) : nullptr; };
    return Value{text(kPending), text(kCurrent)};
  }
  return std::nullopt;
}

void set_pending(Json& json, PendingValues pending) {
  each_element(json, "collections", [&](Json& collection) {
    const std::optional<std::string> name = text_member(collection, "name");
    if (!name) return;
    each_element(collection, "attributes", [&](Json& attribute) {
      const std::optional<std::string> attribute_name = text_member(attribute, "AttributeName");
      const auto wanted = pending.find(value_id(*name, attribute_name));
      if (wanted == pending.end()) return;
      attribute.member("pending") = Json(wanted->second);
      pending.erase(wanted);
    });
  });
  if (!pending.empty()) throw ConfigError("no longer has the value " + pending.begin()->first);
}

}  // namespace zel_platform
