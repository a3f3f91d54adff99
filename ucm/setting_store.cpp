// SPDX-License-Identifier: Apache-2.0
#include <exception>
#include <new>
#include <optional>
#include <string>

#include "db/field.h"
#include "db/read.h"
#include "db/values.h"
#include "platform/vrel_log.h"
#include "zeldb/db.h"
#include "zeldb/ucm.h"

namespace {

using R = PCISetting_info;
using namespace zeldb;

// In the order of the table's columns.
constexpr FieldTable kColumns{ZELDB_FIELD(R, SettingID),     ZELDB_FIELD(R, SettingName),
                              ZELDB_FIELD(R, PendingValue),  ZELDB_FIELD(R, CurrentValue),
                              ZELDB_FIELD(R, PfaKey),        ZELDB_FIELD(R, SuppressIf),
                              ZELDB_FIELD(R, GrayIf),        ZELDB_FIELD(R, GroupID),
                              ZELDB_FIELD(R, GroupName),     ZELDB_FIELD(R, GroupSuppressIf),
                              ZELDB_FIELD(R, GroupGrayIf),   ZELDB_FIELD(R, Mriname),
                              ZELDB_FIELD(R, ShortDesc),     ZELDB_FIELD(R, FullDesc),
                              ZELDB_FIELD(R, Defvalue),      ZELDB_FIELD(R, Mfg_default),
                              ZELDB_FIELD(R, Defaultaction), ZELDB_FIELD(R, RecordId),
                              ZELDB_FIELD(R, Type),          ZELDB_FIELD(R, Flags),
                              ZELDB_FIELD(R, Minim),         ZELDB_FIELD(R, Maxim),
                              ZELDB_FIELD(R, Step),          ZELDB_FIELD(R, Mins),
                              ZELDB_FIELD(R, Maxs),          ZELDB_FIELD(R, Pattern),
                              ZELDB_FIELD(R, Numchoices),    ZELDB_FIELD(R, Choices),
                              ZELDB_FIELD(R, Mininstances),  ZELDB_FIELD(R, Maxinstances)};

// The columns that tell a changed row, those that change most often first.
constexpr FieldTable kCompared{
    ZELDB_FIELD(R, PendingValue),  ZELDB_FIELD(R, SettingName), ZELDB_FIELD(R, CurrentValue),
    ZELDB_FIELD(R, PfaKey),        ZELDB_FIELD(R, SuppressIf),  ZELDB_FIELD(R, GrayIf),
    ZELDB_FIELD(R, GroupID),       ZELDB_FIELD(R, GroupName),   ZELDB_FIELD(R, GroupSuppressIf),
    ZELDB_FIELD(R, GroupGrayIf),   ZELDB_FIELD(R, Mriname),     ZELDB_FIELD(R, ShortDesc),
    ZELDB_FIELD(R, FullDesc),      ZELDB_FIELD(R, Defvalue),    ZELDB_FIELD(R, Mfg_default),
    ZELDB_FIELD(R, Defaultaction), ZELDB_FIELD(R, RecordId),    ZELDB_FIELD(R, Type),
    ZELDB_FIELD(R, Flags),         ZELDB_FIELD(R, Minim),       ZELDB_FIELD(R, Maxim),
    ZELDB_FIELD(R, Step),          ZELDB_FIELD(R, Mins),        ZELDB_FIELD(R, Maxs),
    ZELDB_FIELD(R, Pattern),       ZELDB_FIELD(R, Numchoices),  ZELDB_FIELD(R, Choices),
    ZELDB_FIELD(R, Mininstances),  ZELDB_FIELD(R, Maxinstances)};

// Room for the terms around the values.
constexpr size_t kFilterReserve = sizeof(R) + 1024;

void append_text_differs(std::string& condition, const char* column, const char* value) {
  if (*value == '\0') {
    condition.append(column).append(" IS NOT NULL");
  } else {
    condition.append("(").append(column).append(" IS NULL OR ");
    condition.append(column).append("!=\"").append(value).append("\")");
  }
}

std::string change_filter(const R& record) {
  std::string filter;
  filter.reserve(kFilterReserve);
  for (const Field& field : kCompared.fields) {
    if (!filter.empty()) filter.append(" OR ");
    if (field.kind == Kind::Text) {
      append_text_differs(filter, field.column, reinterpret_cast<const char*>(bytes_of(field, &record)));
    } else {
      filter.append(field.column).append("!=").append(std::to_string(number_of(field, &record)));
    }
  }
  return filter;
}

// The row's id, or a value below 1; nothing when memory is short.
std::optional<int64_t> store(_zel_db_handle_t* handle, const R& record, const char* id) {
  ContentValues values(handle, "extract_PCISetting_info");
  if (values) values.put(kColumns.fields, &record, EmptyText::AsNull);
  if (!values || !values.is_complete()) {
    values.no_memory();
    return std::nullopt;
  }
  try {
    const std::string key = std::string("SettingID=\"") + id + "\"";
    return insert_or_update_db_record(handle, "PCISetting", key.c_str(), values.get(),
                                      change_filter(record).c_str());
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

}  // namespace

std::string get_sql_str(const char* column, const unsigned char* value) {
  try {
    std::string condition;
    append_text_differs(condition, column, reinterpret_cast<const char*>(value));
    return condition;
  } catch (const std::exception&) {
    return {};
  }
}

unsigned extract_PCISetting_info(const PCISetting_info* rec) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (rec == nullptr) return ZELDB_OK;
  PCISetting_info record = *rec;
  terminate_texts(kColumns.fields, &record);
  const auto* const id = reinterpret_cast<const char*>(record.SettingID);
  const std::optional<int64_t> row = store(handle, record, id);
  if (!row) return ZEL_DB_STATUS_NO_MEMORY;
  if (*row >= 1) return ZELDB_OK;
  vrel_log::logErr("Failed to insert ZELDB_PCI_Config_Setting info: ZELDB_PCI_Setting_ID=%s", id);
  return ZELDB_FAILED;
}
