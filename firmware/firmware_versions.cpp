// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstring>

#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "firmware/doubled.h"
#include "platform/vrel_log.h"
#include "zeldb/firmware.h"

using namespace zeldb;

namespace {

constexpr size_t kStatement = 192;

struct KeyedTable {
  const char* table;
  const char* key;
};
constexpr KeyedTable kKeyedTables[] = {{tables::kImages, "HardwareId"}, {tables::kComponents, "PCIFuncKey"}};

int set_text(_zel_db_handle_t* handle, const char* function, const KeyedTable& keyed, const char* column,
             const char* text, uint32_t key) {
  char statement[kStatement];
  const int length = std::snprintf(statement, kStatement, "update %s set %s=\"%s\" where %s = %u;",
                                   keyed.table, column, text, keyed.key, key);
  // A statement that was cut could still be valid, for another key or for all rows.
  const bool cut = length < 0 || static_cast<size_t>(length) >= kStatement;
  const int status = cut ? ZELDB_INVALID_ARGUMENT
                         : zel_db_raw_query(handle, statement, static_cast<int>(kStatement), nullptr);
  if (status != ZELDB_OK) vrel_log::logErr("%s: sql failed. %s", function, statement);
  return status;
}

int set_everywhere(const char* function, const char* column, const char* text, uint32_t key) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (text == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Doubled<kStatement> value(text, '"');  // a text of this length leaves no room for the rest
  int status = ZELDB_OK;
  for (const KeyedTable& keyed : kKeyedTables) {
    status = set_text(handle, function, keyed, column, value.text(), key);
  }
  return status;
}

}  // namespace

int zeldb_update_firmware(uint32_t hardwareId, const char* version) {
  return set_everywhere("zeldb_update_firmware", "VersionString", version, hardwareId);
}

int zeldb_update_firmware_release_date(uint32_t hardwareId, const char* releaseDate) {
  return set_everywhere("zeldb_update_firmware_release_date", "ReleaseDate", releaseDate, hardwareId);
}

int zeldb_get_firmware_version(int hardwareId, char* buffer, int size) {
  static constexpr const char* kColumns[] = {"VersionString"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (buffer == nullptr || size <= 0) return ZELDB_INVALID_ARGUMENT;
  const Filter<32> filter("HardwareId=%d", hardwareId);
  Result result;
  int status = query(handle, {.table = tables::kImages, .columns = kColumns, .where = filter}, result);
  if (status != ZELDB_OK || !result) return status;
  if (result.row_count() != 1) return ZELDB_NO_MATCH;
  if (const auto ended = result.no_row()) return *ended;
  char version[32] = {};
  status = result.row().text(0, version);
  if (status == ZELDB_OK) std::strncpy(buffer, version, static_cast<size_t>(size));
  return status;
}
