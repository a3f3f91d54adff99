// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "zeldb/cpumem.h"

using namespace zeldb;

namespace {

constexpr uint32_t kNonVolatile = 0x1000;

int list_ids(_ZELDB_Id_List* list, const char* table) {
  static constexpr const char* kColumns[] = {"_id"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  Result result;
  const int status = query(handle, {.table = table, .columns = kColumns}, result);
  if (status != ZELDB_OK) return status;
  *list = {};
  if (!result) return ZELDB_OK;
  return collect(
      result, list,
      [](const Row& row, uint32_t& id) { return row.read(0, id) == ZELDB_OK ? Next::Keep : Next::Skip; },
      {.on_error = OnError::PublishAndFail});
}

// Lists those of Intel's modules that wanted accepts. As many steps are made as rows were counted, whatever
// they answer: a row that does not come is not accepted.
template <typename Wanted>
int list_intel_modules(_ZELDB_Id_List* list, const char* column, Wanted wanted) {
  const char* const columns[] = {"_id", column};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<128> filter("Manufacturer='Intel'");
  Result result;
  const int status = query(handle, {.table = tables::kModules, .columns = columns, .where = filter}, result);
  if (status != ZELDB_OK) return status;
  *list = {};
  const unsigned rows = result ? result.row_count() : 0;
  MallocArray<uint32_t> ids;
  if (rows > 0 && !ids.allocate(rows)) return ZEL_DB_STATUS_NO_MEMORY;
  for (unsigned i = 0; i < rows; ++i) {
    result.step();
    const Row row = result.row();
    const uint32_t id = row.number(0);
    if (wanted(row)) ids[list->Count++] = id;
  }
  list->Items = ids.release();
  return ZELDB_OK;
}

bool is_high_bandwidth(const Row& row) {
  char locator[63];
  row.text(1, locator);
  return std::strstr(locator, "Hbm") != nullptr;
}

bool is_non_volatile(const Row& row) {
  return (row.number(1) & kNonVolatile) != 0;
}

}  // namespace

int zeldb_get_processor_list(_ZELDB_Id_List* list) {
  return list_ids(list, tables::kProcessors);
}

int zeldb_get_memory_list(_ZELDB_Id_List* list) {
  return list_ids(list, tables::kModules);
}

int zeldb_get_HBM_memory_list(_ZELDB_Id_List* list) {
  return list_intel_modules(list, "DevLocator", is_high_bandwidth);
}

int zeldb_get_AEP_memory_list(_ZELDB_Id_List* list) {
  return list_intel_modules(list, "TypeDetail", is_non_volatile);
}
