// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <exception>
#include <string>

#include "db/read.h"
#include "platform/vrel_log.h"
#include "platform/zel_db.h"
#include "zeldb/db.h"

using vrel_log::logErr;
using vrel_log::logInfo;
using namespace zeldb;

namespace {

constexpr const char* kRowId[] = {"_id"};
constexpr int64_t kFailed = -1;

const char* or_null(const char* text) {
  return text != nullptr ? text : "null";
}

std::string slot_update(const char* table, const std::map<std::string, std::string>& columns, unsigned slot) {
  std::string statement = std::string("update ") + table + " set ";
  const char* separator = "";
  for (const auto& [name, value] : columns) {
    statement.append(separator).append(name).append("='").append(value).append("'");
    separator = ", ";
  }
  statement.append(" where SlotNo=").append(std::to_string(slot));
  return statement;
}

}  // namespace

int64_t find_db_record(_zel_db_handle_t* handle, const char* table, const char* where) {
  if (handle == nullptr || table == nullptr || where == nullptr) return kFailed;
  Result result;
  const int status = query(handle, {.table = table, .columns = kRowId, .where = where}, result);
  if (status != ZELDB_OK || !result) {
    result.free();
    logErr("Failed to query record:");
    logErr("table=%s", table);
    logErr("where=%s", where);
    return kFailed;
  }
  int64_t id = 0;
  if (result.next() && result.row().read(0, id) != 0) return kFailed;
  return id;
}

int64_t insert_db_record(_zel_db_handle_t* handle, const char* table, const zel_db_content_values_t* values) {
  if (handle == nullptr || table == nullptr || values == nullptr) return kFailed;
  int64_t id = 0;
  const int status = zel_db_insert(handle, table, values, 0, &id);
  if (status == ZELDB_OK) return id;
  logErr("Failed to insert record: %s", zel_db_get_error_str(status));
  return kFailed;
}

int delete_db_record(_zel_db_handle_t* handle, const char* table, const char* where,
                     const _zel_db_param_t* params, int count) {
  if (handle == nullptr || table == nullptr) return ZELDB_INVALID_ARGUMENT;
  int64_t deleted = 0;
  const int status = zel_db_delete(handle, table, where, params, count, &deleted);
  if (status != ZELDB_OK) {
    logErr("failed to delete db records");
    logErr("table=%s, where=%s", table, or_null(where));
  } else if (deleted != 0) {
    logInfo("Delete from %s, %s\n", table, or_null(where));
  }
  return status;
}

int64_t update_db_record(_zel_db_handle_t* handle, const char* table, const char* where,
                         const zel_db_content_values_t* values, const char* filter) {
  if (handle == nullptr || table == nullptr || where == nullptr || values == nullptr) return kFailed;
  const int64_t id = find_db_record(handle, table, where);
  if (id < 1) return id;
  try {
    std::string update = "_id=" + std::to_string(id);
    if (filter != nullptr) {
      update.reserve(update.size() + std::strlen(filter) + sizeof(" AND ()"));
      update.append(" AND (").append(filter).append(")");
    }
    if (zel_db_update(handle, table, values, update.c_str(), nullptr, 0, nullptr) == ZELDB_OK) return id;
    logErr("Failed to update record:");
    logErr("table=%s", table);
    logErr("filter=%s", update.c_str());
  } catch (const std::exception&) {
    // Reported as a failed update.
  }
  return kFailed;
}

int64_t insert_or_update_db_record(_zel_db_handle_t* handle, const char* table, const char* where,
                                   const zel_db_content_values_t* values, const char* filter) {
  if (handle == nullptr || table == nullptr || values == nullptr || where == nullptr) return kFailed;
  int64_t id = update_db_record(handle, table, where, values, filter);
  if (id == 0) id = insert_db_record(handle, table, values);
  if (id < 1) {
    logErr("insert/update record failed: table=%s, where=%s", table, where);
    logErr("insert/update record failed: filter=%s", or_null(filter));
  }
  return id;
}

int put_text_value(zel_db_content_values_t* values, const char* column, const unsigned char* value) {
  if (value == nullptr || value[0] == 0) return zel_db_content_put_null(values, column);
  return zel_db_content_put_text(values, column, reinterpret_cast<const char*>(value));
}

void update_pci_table(const char* table, const std::map<std::string, std::string>& columns, unsigned slot) {
  if (table == nullptr || columns.empty()) return;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return;
  try {
    const std::string statement = slot_update(table, columns, slot);
    if (zel_db_raw_query(handle, statement.c_str(), static_cast<int>(statement.size()), nullptr) != ZELDB_OK)
      logErr("%s: sql failed: %s", "update_pci_table", statement.c_str());
  } catch (const std::exception&) {
    logErr("%s, ZEL_DB_STATUS_NO_MEMORY", "update_pci_table");
  }
}
