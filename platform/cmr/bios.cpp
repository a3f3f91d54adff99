// SPDX-License-Identifier: Apache-2.0
#include "cmr/bios.h"

#include <utility>

namespace zel_platform {
namespace {

template <class T>
struct Member {
  const char* name;
  T cmr_bios_attribute::*place;
};

#define MEMBER(name) \
  { #name, &cmr_bios_attribute::name }
constexpr Member<const char*> kTexts[] = {
    MEMBER(AttributeName), MEMBER(SuppressIf),      MEMBER(GrayIf),      MEMBER(GroupID),
    MEMBER(GroupName),     MEMBER(GroupSuppressIf), MEMBER(GroupGrayIf), MEMBER(SettingName),
    MEMBER(Mriname),       MEMBER(ShortDesc),       MEMBER(FullDesc),    MEMBER(Defvalue),
    MEMBER(Mfg_default),   MEMBER(Defaultaction),   MEMBER(RecordId),    MEMBER(Pattern),
    MEMBER(Choices)};
constexpr Member<uint32_t> kWords[] = {MEMBER(LocationByte1), MEMBER(Bus),   MEMBER(Device), MEMBER(Function),
                                       MEMBER(Type),          MEMBER(Flags), MEMBER(Minim),  MEMBER(Maxim),
                                       MEMBER(Step),          MEMBER(Mins),  MEMBER(Maxs)};
constexpr Member<int32_t> kSignedWords[] = {MEMBER(Mininstances), MEMBER(Maxinstances), MEMBER(Numchoices)};
#undef MEMBER

char* keep_text(Bios& bios, std::optional<std::string> text) {
  return text ? bios.texts.emplace_back(std::move(*text)).data() : nullptr;
}

std::string value_id(const std::string& collection, const std::optional<std::string>& attribute) {
  return collection + "." + attribute.value_or("");
}

cmr_bios_attribute read_attribute(Bios& bios, const Json& json) {
  cmr_bios_attribute attribute{};
  for (const auto& text : kTexts) attribute.*text.place = keep_text(bios, text_member(json, text.name));
  for (const auto& word : kWords) attribute.*word.place = word_member(json, word.name).value_or(0);
  for (const auto& word : kSignedWords) {
    attribute.*word.place = static_cast<int32_t>(word_member(json, word.name).value_or(0));
  }
  return attribute;
}

void read_collection(Bios& bios, const Json& json) {
  const std::optional<std::string> name = text_member(json, "name");
  BiosCollection collection{keep_text(bios, name), {}};
  each_element(json, "attributes", IfMissing::Fail, [&](const Json& attribute) {
    collection.attributes.push_back(read_attribute(bios, attribute));
    BiosValue value;
    value.pending = text_member(attribute, "pending");
    value.current = text_member(attribute, "current");
    if (name)
      bios.values.try_emplace(value_id(*name, text_member(attribute, "AttributeName")), std::move(value));
  });
  bios.collections.push_back(std::move(collection));
}

}  // namespace

Bios read_bios(const Json& json) {
  Bios bios;
  each_element(json, "collections", IfMissing::Fail,
               [&](const Json& collection) { read_collection(bios, collection); });
  return bios;
}

void set_pending(Json& json, PendingValues pending) {
  read_bios(json);  // another process may have written something else since
  for (Json& collection : *json.member("collections").as<Json::Array>()) {
    const std::optional<std::string> name = text_member(collection, "name");
    if (!name) continue;
    for (Json& attribute : *collection.member("attributes").as<Json::Array>()) {
      const auto wanted = pending.find(value_id(*name, text_member(attribute, "AttributeName")));
      if (wanted == pending.end()) continue;
      attribute.member("pending") = Json(wanted->second);
      pending.erase(wanted);
    }
  }
  if (!pending.empty()) throw ConfigError("no longer has the value " + pending.begin()->first);
}

}  // namespace zel_platform
