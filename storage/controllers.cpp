// SPDX-License-Identifier: Apache-2.0
//
// The storage controllers of the system board, and the function of a drive.
#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "db/codes.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "storage/drive_completion.h"
#include "storage/property.h"
#include "zeldb/storage.h"

using namespace zeldb;

namespace {

// The RAID controller of Intel's processors.
constexpr int kOnBoard = 0;
constexpr int kRaidDevice = 0x28C0;

}  // namespace

int zeldb_vroc_enabled(uint32_t selector, uint32_t* enabled) {
  using Statement = Filter<128>;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (enabled == nullptr) return ZELDB_INVALID_ARGUMENT;
  *enabled = 0;
  const Statement statement(
      "select 1 from PCIs where Location=%d AND VendorId=%d AND DeviceId%s%d AND ClsCode=%d;", kOnBoard,
      kIntel, selector != 0 ? "=" : "!=", kRaidDevice, kRaidController);
  Result result;
  const int status = zel_db_raw_query(handle, statement, Statement::capacity(), result.out());
  if (status == ZELDB_OK && result && result.row_count() > 0) *enabled = 1;
  return status;
}

int zeldb_get_vmd_count(_zel_db_handle_t* handle, uint32_t* count) {
  if (handle == nullptr) handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (count == nullptr) return ZELDB_INVALID_ARGUMENT;
  Filter<128> statement(
      "select Location from PCIs where Location=0 AND VendorId=%d AND DeviceId=%d AND ClsCode=%d", kIntel,
      kRaidDevice, kRaidController);
  Result result;
  const auto length = static_cast<int>(std::strlen(statement));
  if (zel_db_raw_query(handle, statement, length, result.out()) != ZELDB_OK || !result)
    return ZELDB_NO_HANDLE;
  *count = result.row_count();
  return ZELDB_OK;
}

int zeldb_get_ctrl_slot(uint32_t deviceId, uint32_t subDeviceId, uint8_t* slot) {
  static constexpr const char* kColumns[] = {"SlotNo"};
  static constexpr uint8_t kUnreadable = 0xFF;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (slot == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<64> filter("DeviceId=%d AND SubDeviceId=%d", static_cast<int>(deviceId),
                          static_cast<int>(subDeviceId));
  return read_one(handle, {.table = tables::kFunctions, .columns = kColumns, .where = filter},
                  [slot](const Row& row) { *slot = row.number<uint8_t>(0, kUnreadable); });
}

int zeldb_get_nvme_drv_funkey(uint32_t location, uint32_t slot, uint32_t* funKey) {
  static constexpr const char* kColumns[] = {"SegNo", "BusNo", "DeviceNo", "FunctionNo"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (funKey == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<128> filter("Location=%d AND SlotNo=%d AND ClsCode=%d", static_cast<int>(location),
                           static_cast<int>(slot), kNvmeController);
  Result result;
  const int status =
      query(handle, {.table = tables::kFunctions, .columns = kColumns, .where = filter}, result);
  if (status != ZELDB_OK) return status;
  if (!result.next()) return ZELDB_NO_HANDLE;
  const Row row = result.row();
  *funKey = row.number(0) << 24 | row.number(1) << 16 | row.number(2) << 8 | row.number(3);
  return ZELDB_OK;
}

int zeldb_get_mvl_ctrl_type(uint8_t* type, uint32_t controller) {
  const PropertyDatabase properties;
  if (!properties) return ZELDB_NO_HANDLE;
  if (type == nullptr) return ZELDB_INVALID_ARGUMENT;
  *type = 0;
  const char* const condition =
      controller == 0 ? "propName like \"%mv/0/type\"" : "propName like \"%mv/1/type\"";
  Result result;
  const int status = query(properties.get(), properties_where(condition), result);
  if (status == ZELDB_OK && result.next()) {
    char name[48];  // ignored
    uint8_t value[sizeof(Property::value)];
    result.row().text(0, name);
    result.row().blob(1, value);
    *type = value[1];
  }
  return status;
}

int zeldb_get_marvell_ctrl_slots(uint8_t* slots, uint32_t* funKeys, uint32_t* count) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (slots == nullptr || funKeys == nullptr || count == nullptr || *count == 0)
    return ZELDB_INVALID_ARGUMENT;
  const uint32_t room = *count;
  *count = 0;
  try {
    std::vector<OnboardController> controllers;
    const int status = read_onboard_controllers(handle, controllers);
    if (status != ZELDB_OK) return status;
    if (controllers.size() > room) controllers.resize(room);
    for (const OnboardController& controller : controllers) {
      *slots++ = controller.slot;
      *funKeys++ = controller.function_key;
    }
    *count = static_cast<uint32_t>(controllers.size());
    return ZELDB_OK;
  } catch (const std::bad_alloc&) {
    return ZEL_DB_STATUS_NO_MEMORY;
  }
}
