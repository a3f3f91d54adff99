// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstring>
#include <optional>

#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "db/values.h"
#include "platform/vrel_log.h"
#include "zeldb/pci.h"
#include "zeldb/ucm.h"

using vrel_log::logErr;
using vrel_log::logInfo;
using vrel_log::logWarn;
using namespace zeldb;

namespace {

constexpr uint32_t kMerged = 3;

// A function on its way from PCIs, and from a row of its adapter, into PCIAdapter.
struct Function {
  uint32_t NodeIndex, SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location, DevKey, FunKey;
  uint32_t AIMSupported;
  char CardName[129];
  char ConnectorType[8];
};

constexpr auto kPosition = field_table(
    ZELDB_FIELD(Function, NodeIndex), ZELDB_FIELD(Function, SlotNo), ZELDB_FIELD(Function, SegNo),
    ZELDB_FIELD(Function, BusNo), ZELDB_FIELD(Function, DeviceNo), ZELDB_FIELD(Function, FunctionNo),
    ZELDB_FIELD(Function, Location), ZELDB_FIELD(Function, DevKey), ZELDB_FIELD(Function, FunKey));

constexpr auto kCard = field_table(ZELDB_FIELD(Function, CardName), ZELDB_FIELD(Function, ConnectorType));

constexpr auto kWritten = field_table(
    ZELDB_FIELD(Function, SegNo), ZELDB_FIELD(Function, BusNo), ZELDB_FIELD(Function, DeviceNo),
    ZELDB_FIELD(Function, FunctionNo), ZELDB_FIELD_AS(Function, NodeIndex, "NodeNo"),
    ZELDB_FIELD(Function, SlotNo), ZELDB_FIELD(Function, CardName), ZELDB_FIELD(Function, ConnectorType),
    ZELDB_FIELD(Function, AIMSupported), ZELDB_FIELD_AS(Function, DevKey, "PCIKey"),
    ZELDB_FIELD_AS(Function, FunKey, "PCIFuncKey"), ZELDB_FIELD(Function, Location));

enum class By { Function, Adapter };

// One I/O error must not cost rows in silence: these go with the delete that follows.
void log_rows_to_lose(_zel_db_handle_t* handle, const char* where, int reason) {
  static constexpr const char* kShown[] = {"PCIFuncKey", "CardName"};
  logErr("Merge: failed to unmark adapters without settings, rc = %d\n", reason);
  Result rows;
  int status = query(handle, {.table = tables::kAdapters, .columns = kShown, .where = where}, rows);
  const auto log_row = [](const Row& row) {
    char name[129] = "";
    row.text(1, name);
    logErr("Merge: funkey %d, %s: its row is deleted from PCIAdapter for that\n",
           static_cast<int>(row.number(0)), name);
  };
  const bool walked = status == ZELDB_OK && rows;
  if (walked) status = walk(rows, SIZE_MAX, log_row).value_or(ZELDB_OK);
  if (!walked || status != ZELDB_OK)
    logErr("Merge: which rows of PCIAdapter that removes is not known, rc = %d\n", status);
}

// False if memory is short. The second step would then remove the rows that the first one should have kept.
bool release_adapters_without_settings(_zel_db_handle_t* handle, ContentValues& values) {
  values.put_uint8("AIMSupported", 0);
  if (!values.is_complete()) return false;
  const Filter<128> known(
      "AIMSupported=%d AND PCIFuncKey NOT IN ( SELECT PfaKey FROM PCISetting) AND PCIFuncKey IN (SELECT "
      "FunKey FROM PCIs)",
      kMerged);
  const int status = values.update(tables::kAdapters, known);
  if (status != ZELDB_OK) log_rows_to_lose(handle, known, status);
  // The rows that are still marked belong to functions that are gone from PCIs.
  const Filter<128> gone("AIMSupported=%d AND PCIFuncKey NOT IN ( SELECT PfaKey FROM PCISetting)", kMerged);
  zel_db_delete(handle, tables::kAdapters, gone, nullptr, 0, nullptr);
  return true;
}

// Reads the fields from the row that the key selects. Returns nothing, or the status that ends the merge.
template <size_t N>
std::optional<int> look_up(_zel_db_handle_t* handle, By by, uint32_t key, const FieldTable<N>& table,
                           Function& function) {
  const int shown = static_cast<int>(key);
  const bool by_function = by == By::Function;
  const char* const table_name = by_function ? tables::kFunctions : tables::kAdapters;
  const Filter<128> where("%s=%d", by_function ? "FunKey" : "PCIKey", shown);
  Result result;
  int status = query(handle, {.table = table_name, .columns = table.columns, .where = where}, result);
  if (status != ZELDB_OK || !result) {
    logErr(by_function ? "Merge: Can not find funkey %d in PCIs table, rc = %d\n"
                       : "Merge: Can not find pcikey %d in PCIAdapter table, rc = %d\n",
           shown, status);
    return status;
  }
  if (const auto ended = result.no_row()) {
    logErr(by_function ? "Merge: Can not step query result for funkey %d, rc = %d\n"
                       : "Merge: Can not step query result for pcikey %d, rc = %d\n",
           shown, *ended);
    return ended;
  }
  result.row().fill(table.fields, &function);
  terminate_texts(table.fields, &function);
  return std::nullopt;
}

bool is_generic_name(const char* name) {
  return std::strncmp(name, "Adapter", 7) == 0;
}

// Returns nothing if the next function may follow, or else the status that ends the merge.
std::optional<int> merge_function(_zel_db_handle_t* handle, ContentValues& values, uint32_t key) {
  const int shown = static_cast<int>(key);
  unsigned supported = 0;
  const bool known = zeldb_get_pci_function_oob_type(key, &supported, nullptr) == ZELDB_OK;
  if (known && supported != 0) return std::nullopt;
  if (known) {
    logInfo("Merge: funkey %d in UCM already recorded in PCIAdapter, will update oobType\n", shown);
  } else {
    logInfo("Merge: funkey %d in UCM is not recorded in PCIAdapter.\n", shown);
  }

  Function function = {};
  function.AIMSupported = kMerged;
  if (const auto ended = look_up(handle, By::Function, key, kPosition, function)) return ended;
  if (const auto ended = look_up(handle, By::Adapter, function.DevKey, kCard, function)) return ended;
  if (is_generic_name(function.CardName)) {
    std::snprintf(function.CardName, sizeof(function.CardName), "Adapter %02X:%02X:%02X", function.BusNo,
                  function.DeviceNo, function.FunctionNo);
  }

  values.clear();
  values.put(kWritten.fields, &function, EmptyText::AsText);
  const Filter<128> own_row("PCIFuncKey=%u", function.FunKey);
  const int status =
      known ? values.update(tables::kAdapters, own_row) : values.insert(tables::kAdapters, nullptr);
  if (status != ZELDB_OK) {
    logWarn("Merge: failed to insert/update funkey %d to PCIAdapter, rc=%d\n", shown, status);
    return status;
  }
  logInfo("Merge: insert/update funkey %d to PCIAdapter successfully\n", shown);
  return std::nullopt;
}

int merge_functions(_zel_db_handle_t* handle, ContentValues& values) {
  static constexpr const char* kKeys[] = {"PfaKey"};
  const Filter<128> distinct("1 GROUP BY PfaKey");
  Result keys;
  const int status = query(handle, {.table = tables::kSettings, .columns = kKeys, .where = distinct}, keys);
  if (status != ZELDB_OK || !keys) {
    logErr("Merge: Can not query all function key from PCISettings, rc = %d\n", status);
    return status;
  }
  return walk(keys, keys.row_count(),
              [&](const Row& row) { return merge_function(handle, values, row.number(0)); })
      .value_or(ZELDB_OK);
}

}  // namespace

int zeldb_merge_aim_ucm_pfa(void) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  ContentValues values(handle, "zeldb_merge_aim_ucm_pfa");
  if (!values || !release_adapters_without_settings(handle, values)) return values.no_memory();
  const int status = merge_functions(handle, values);
  return ended_well(status) ? ZELDB_OK : status;
}
