// SPDX-License-Identifier: Apache-2.0
#include "ucm/attribute_record.h"

#include <cstring>
#include <span>

#include "db/field.h"

namespace zeldb {

namespace {

using A = cmr_bios_attribute;
using R = PCISetting_info;

constexpr uint32_t kEndOfList = 0xFFFF;
constexpr int32_t kUnlimitedInstances = -2;
constexpr int32_t kStoredUnlimited = 0x0FFFFFFF;

enum AttributeType : uint32_t { kNumber = 3, kText = 4, kPlain = 5 };

struct TextSource {
  const char* A::*from;
  Field to;
};

constexpr TextSource kTexts[] = {
    {&A::SettingName, ZELDB_FIELD(R, SettingName)},
    {&A::SuppressIf, ZELDB_FIELD(R, SuppressIf)},
    {&A::GrayIf, ZELDB_FIELD(R, GrayIf)},
    {&A::GroupID, ZELDB_FIELD(R, GroupID)},
    {&A::GroupName, ZELDB_FIELD(R, GroupName)},
    {&A::GroupSuppressIf, ZELDB_FIELD(R, GroupSuppressIf)},
    {&A::GroupGrayIf, ZELDB_FIELD(R, GroupGrayIf)},
    {&A::Mriname, ZELDB_FIELD(R, Mriname)},
    {&A::ShortDesc, ZELDB_FIELD(R, ShortDesc)},
    {&A::FullDesc, ZELDB_FIELD(R, FullDesc)},
    {&A::Defvalue, ZELDB_FIELD(R, Defvalue)},
    {&A::Mfg_default, ZELDB_FIELD(R, Mfg_default)},
    {&A::Defaultaction, ZELDB_FIELD(R, Defaultaction)},
    {&A::RecordId, ZELDB_FIELD(R, RecordId)},
};
constexpr TextSource kPatternText = {&A::Pattern, ZELDB_FIELD(R, Pattern)};
constexpr TextSource kChoicesText = {&A::Choices, ZELDB_FIELD(R, Choices)};

void copy_text(const TextSource& source, const A& attribute, R& record) {
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
