// SPDX-License-Identifier: Apache-2.0
#include "ucm/attribute_record.h"

#include <cstring>
#include <span>

#include "db/field.h"

namespace zeldb {

namespace {

using Attribute = cmr_bios_attribute;
using Setting = PCISetting_info;

constexpr uint32_t kEndOfList = 0xFFFF;
constexpr int32_t kUnlimitedInstances = -2;
constexpr int32_t kStoredUnlimited = 0x0FFFFFFF;

enum AttributeType : uint32_t { kNumber = 3, kText = 4, kPlain = 5 };

struct TextSource {
  const char* Attribute::*from;
  Field to;
};

constexpr TextSource kTexts[] = {
    {&Attribute::SettingName, ZELDB_FIELD(Setting, SettingName)},
    {&Attribute::SuppressIf, ZELDB_FIELD(Setting, SuppressIf)},
    {&Attribute::GrayIf, ZELDB_FIELD(Setting, GrayIf)},
    {&Attribute::GroupID, ZELDB_FIELD(Setting, GroupID)},
    {&Attribute::GroupName, ZELDB_FIELD(Setting, GroupName)},
    {&Attribute::GroupSuppressIf, ZELDB_FIELD(Setting, GroupSuppressIf)},
    {&Attribute::GroupGrayIf, ZELDB_FIELD(Setting, GroupGrayIf)},
    {&Attribute::Mriname, ZELDB_FIELD(Setting, Mriname)},
    {&Attribute::ShortDesc, ZELDB_FIELD(Setting, ShortDesc)},
    {&Attribute::FullDesc, ZELDB_FIELD(Setting, FullDesc)},
    {&Attribute::Defvalue, ZELDB_FIELD(Setting, Defvalue)},
    {&Attribute::Mfg_default, ZELDB_FIELD(Setting, Mfg_default)},
    {&Attribute::Defaultaction, ZELDB_FIELD(Setting, Defaultaction)},
    {&Attribute::RecordId, ZELDB_FIELD(Setting, RecordId)},
};
constexpr TextSource kPatternText = {&Attribute::Pattern, ZELDB_FIELD(Setting, Pattern)};
constexpr TextSource kChoicesText = {&Attribute::Choices, ZELDB_FIELD(Setting, Choices)};

void copy_text(const TextSource& source, const Attribute& attribute, Setting& record) {
  const char* const text = attribute.*source.from;
  if (text == nullptr) return;
  const size_t limit = source.to.size - 1U;
  std::memcpy(bytes_of(source.to, &record), text, strnlen(text, limit));
}

}  // namespace

bool ends_list(const cmr_bios_attribute& attribute) {
  return attribute.Bus == kEndOfList;
}

uint32_t function_key_of(const cmr_bios_attribute& attribute) {
  return (attribute.LocationByte1 << 24) + ((attribute.Bus & 0xFF) << 16) + ((attribute.Device & 0xFF) << 8) +
         (attribute.Function & 0xFF);
}

void describe(const cmr_bios_attribute& attribute, PCISetting_info& record) {
  for (const TextSource& text : kTexts) copy_text(text, attribute, record);
  record.Type = attribute.Type;
  record.Flags = attribute.Flags;
  record.Mininstances = attribute.Mininstances;
  record.Maxinstances =
      attribute.Maxinstances == kUnlimitedInstances ? kStoredUnlimited : attribute.Maxinstances;
  switch (attribute.Type) {
    case kNumber:
      record.Minim = attribute.Minim;
      record.Maxim = attribute.Maxim;
      record.Step = attribute.Step;
      break;
    case kText:
      record.Mins = attribute.Mins;
      record.Maxs = attribute.Maxs;
      copy_text(kPatternText, attribute, record);
      break;
    case kPlain:
      break;
    default:
      record.Numchoices = attribute.Numchoices;
      copy_text(kChoicesText, attribute, record);
  }
}

}  // namespace zeldb
