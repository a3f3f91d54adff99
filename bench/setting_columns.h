// SPDX-License-Identifier: Apache-2.0
//
// The columns of PCISetting for the code written by hand, which shares nothing with the library.
#ifndef BENCH_SETTING_COLUMNS_H
#define BENCH_SETTING_COLUMNS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "zeldb/ucm.h"

namespace bench {

struct Column {
  const char* name;
  size_t offset;
  bool text;
};

#define BENCH_TEXT(Member) \
  { #Member, offsetof(PCISetting_info, Member), true }
#define BENCH_NUMBER(Member) \
  { #Member, offsetof(PCISetting_info, Member), false }

inline constexpr Column kStored[] = {
    BENCH_TEXT(SettingID),       BENCH_TEXT(SettingName),    BENCH_TEXT(PendingValue),
    BENCH_TEXT(CurrentValue),    BENCH_NUMBER(PfaKey),       BENCH_TEXT(SuppressIf),
    BENCH_TEXT(GrayIf),          BENCH_TEXT(GroupID),        BENCH_TEXT(GroupName),
    BENCH_TEXT(GroupSuppressIf), BENCH_TEXT(GroupGrayIf),    BENCH_TEXT(Mriname),
    BENCH_TEXT(ShortDesc),       BENCH_TEXT(FullDesc),       BENCH_TEXT(Defvalue),
    BENCH_TEXT(Mfg_default),     BENCH_TEXT(Defaultaction),  BENCH_TEXT(RecordId),
    BENCH_NUMBER(Type),          BENCH_NUMBER(Flags),        BENCH_NUMBER(Minim),
    BENCH_NUMBER(Maxim),         BENCH_NUMBER(Step),         BENCH_NUMBER(Mins),
    BENCH_NUMBER(Maxs),          BENCH_TEXT(Pattern),        BENCH_NUMBER(Numchoices),
    BENCH_TEXT(Choices),         BENCH_NUMBER(Mininstances), BENCH_NUMBER(Maxinstances)};

inline constexpr Column kCompared[] = {
    BENCH_TEXT(PendingValue),   BENCH_TEXT(SettingName),   BENCH_TEXT(CurrentValue),
    BENCH_NUMBER(PfaKey),       BENCH_TEXT(SuppressIf),    BENCH_TEXT(GrayIf),
    BENCH_TEXT(GroupID),        BENCH_TEXT(GroupName),     BENCH_TEXT(GroupSuppressIf),
    BENCH_TEXT(GroupGrayIf),    BENCH_TEXT(Mriname),       BENCH_TEXT(ShortDesc),
    BENCH_TEXT(FullDesc),       BENCH_TEXT(Defvalue),      BENCH_TEXT(Mfg_default),
    BENCH_TEXT(Defaultaction),  BENCH_TEXT(RecordId),      BENCH_NUMBER(Type),
    BENCH_NUMBER(Flags),        BENCH_NUMBER(Minim),       BENCH_NUMBER(Maxim),
    BENCH_NUMBER(Step),         BENCH_NUMBER(Mins),        BENCH_NUMBER(Maxs),
    BENCH_TEXT(Pattern),        BENCH_NUMBER(Numchoices),  BENCH_TEXT(Choices),
    BENCH_NUMBER(Mininstances), BENCH_NUMBER(Maxinstances)};

#undef BENCH_TEXT
#undef BENCH_NUMBER

inline const char* text_at(const PCISetting_info& record, const Column& column) {
  return reinterpret_cast<const char*>(&record) + column.offset;
}

inline uint32_t number_at(const PCISetting_info& record, const Column& column) {
  uint32_t number = 0;
  std::memcpy(&number, text_at(record, column), sizeof(number));
  return number;
}

}  // namespace bench

#endif
