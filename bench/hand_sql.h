// SPDX-License-Identifier: Apache-2.0
//
// The statements of the code written by hand.
#ifndef BENCH_HAND_SQL_H
#define BENCH_HAND_SQL_H

#include <cstdint>
#include <string>

#include "zeldb/ucm.h"

namespace bench {

inline constexpr const char* kFindSql = "SELECT _id FROM PCISetting WHERE SettingID=?";
inline constexpr const char* kKeySql = "SELECT AIMSupported,OOBSrc FROM PCIAdapter WHERE PCIFuncKey=?";
// In the order of ListRow.
inline constexpr const char* kListSql =
    "SELECT "
    "SettingID,SettingName,PendingValue,CurrentValue,PfaKey,GroupID,GroupName,Mriname,ShortDesc,FullDesc,"
    "Defvalue,RecordId,Type,Flags,Minim,Maxim,Step,Numchoices,Choices,Mininstances,Maxinstances FROM "
    "PCISetting";

std::string insert_sql();
// Which of the compared texts are empty: there is an update statement for each such shape.
uint32_t shape_of(const PCISetting_info& record);
std::string update_sql(const PCISetting_info& record);

}  // namespace bench

#endif
