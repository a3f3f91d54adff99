// SPDX-License-Identifier: Apache-2.0
#include <exception>
#include <new>
#include <optional>
#include <string>

#include "db/field.h"
#include "db/read.h"
#include "db/tables.h"
#include "db/values.h"
#include "platform/vrel_log.h"
#include "zeldb/db.h"
#include "zeldb/ucm.h"

namespace {

using Setting = PCISetting_info;
using namespace zeldb;

// In the order of the table's columns.
constexpr auto kColumns = field_table(
    ZELDB_FIELD(Setting, SettingID), ZELDB_FIELD(Setting, SettingName), ZELDB_FIELD(Setting, PendingValue),
    ZELDB_FIELD(Setting, CurrentValue), ZELDB_FIELD(Setting, PfaKey), ZELDB_FIELD(Setting, SuppressIf),
    ZELDB_FIELD(Setting, GrayIf), ZELDB_FIELD(Setting, GroupID), ZELDB_FIELD(Setting, GroupName),
    ZELDB_FIELD(Setting, GroupSuppressIf), ZELDB_FIELD(Setting, GroupGrayIf), ZELDB_FIELD(Setting, Mriname),
    ZELDB_FIELD(Setting, ShortDesc), ZELDB_FIELD(Setting, FullDesc), ZELDB_FIELD(Setting, Defvalue),
    ZELDB_FIELD(Setting, Mfg_default), ZELDB_FIELD(Setting, Defaultaction), ZELDB_FIELD(Setting, RecordId),
    ZELDB_FIELD(Setting, Type), ZELDB_FIELD(Setting, Flags), ZELDB_FIELD(Setting, Minim),
    ZELDB_FIELD(Setting, Maxim), ZELDB_FIELD(Setting, Step), ZELDB_FIELD(Setting, Mins),
    ZELDB_FIELD(Setting, Maxs), ZELDB_FIELD(Setting, Pattern), ZELDB_FIELD(Setting, Numchoices),
    ZELDB_FIELD(Setting, Choices), ZELDB_FIELD(Setting, Mininstances), ZELDB_FIELD(Setting, Maxinstances));

// The columns that are compared to detect a change, those that change most often first.
constexpr auto kCompared = field_table(
    ZELDB_FIELD(Setting, PendingValue), ZELDB_FIELD(Setting, SettingName), ZELDB_FIELD(Setting, CurrentValue),
    ZELDB_FIELD(Setting, PfaKey), ZELDB_FIELD(Setting, SuppressIf), ZELDB_FIELD(Setting, GrayIf),
    ZELDB_FIELD(Setting, GroupID), ZELDB_FIELD(Setting, GroupName), ZELDB_FIELD(Setting, GroupSuppressIf),
    ZELDB_FIELD(Setting, GroupGrayIf), ZELDB_FIELD(Setting, Mriname), ZELDB_FIELD(Setting, ShortDesc),
    ZELDB_FIELD(Setting, FullDesc), ZELDB_FIELD(Setting, Defvalue), ZELDB_FIELD(Setting, Mfg_default),
    ZELDB_FIELD(Setting, Defaultaction), ZELDB_FIELD(Setting, RecordId), ZELDB_FIELD(Setting, Type),
    ZELDB_FIELD(Setting, Flags), ZELDB_FIELD(Setting, Minim), ZELDB_FIELD(Setting, Maxim),
    ZELDB_FIELD(Setting, Step), ZELDB_FIELD(Setting, Mins), ZELDB_FIELD(Setting, Maxs),
    ZELDB_FIELD(Setting, Pattern), ZELDB_FIELD(Setting, Numchoices), ZELDB_FIELD(Setting, Choices),
    ZELDB_FIELD(Setting, Mininstances), ZELDB_FIELD(Setting, Maxinstances));

// Leaves room for the terms around the values.
constexpr size_t kFilterReserve = sizeof(Setting) + 1024;

void append_text_differs(std::string& condition, const char* column, const char* value) {
  if (*value == '\0') {
    condition.append(column).append(" IS NOT NULL");
  } else {
    condition.append("(").append(column).append(" IS NULL OR ");
    condition.append(column).append("!=\"").append(value).append("\")");
  }
}

std::string change_filter(const Setting& record) {
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

// Returns the id of the row, a value below 1, or nothing if memory is short.
std::optional<int64_t> store(_zel_db_handle_t* handle, const Setting& record, const char* id) {
  ContentValues values(handle, "extract_PCISetting_info");
  if (values) values.put(kColumns.fields, &record, EmptyText::AsNull);
  if (!values || !values.is_complete()) {
    values.no_memory();
    return std::nullopt;
  }
  try {
    const std::string key = std::string("SettingID=\"") + id + "\"";
    return insert_or_update_db_record(handle, tables::kSettings, key.c_str(), values.get(),
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
