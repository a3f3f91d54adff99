// SPDX-License-Identifier: Apache-2.0
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "db/values.h"
#include "platform/vrel_log.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

// The functions below differ in the order that they send.
Filter<128> slot_first(int location, int slotNo) {
  return Filter<128>("SlotNo=%d AND Location=%d", slotNo, location);
}
Filter<128> location_first(int location, int slotNo) {
  return Filter<128>("Location=%d AND SlotNo=%d", location, slotNo);
}

int update_ncsi_id(const ContentValues& values, int location, int slotNo, int id1, int id2) {
  const Filter<128> filter = slot_first(location, slotNo);
  const int status = values.update(tables::kNcsiIds, filter);
  if (status != ZELDB_OK) {
    vrel_log::logErr(
        "Update pci location [%d], slot [%d]  id1 [%d], id2 [%d] fail, sql where segment:[%s], return [%d]",
        location, slotNo, id1, id2, static_cast<const char*>(filter), status);
  }
  return status;
}

int insert_ncsi_id(const ContentValues& values, int location, int slotNo, int id1, int id2) {
  int64_t row = 0;
  const int status = values.insert(tables::kNcsiIds, &row);
  if (status != ZELDB_OK) {
    vrel_log::logErr("insert pci location [%d], slot [%d]  id1 [%d], id2 [%d] fail, return [%d]", location,
                     slotNo, id1, id2, status);
  }
  return status;
}

}  // namespace

int zeldb_get_adapter_health_status(int location, int slotNo, unsigned char* status) {
  static constexpr const char* kColumns[] = {"HealthStatus"};
  if (status == nullptr) return ZELDB_INVALID_ARGUMENT;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  const Filter<128> filter = slot_first(location, slotNo);
  Result result;
  const int code = query(handle, {.table = tables::kAdapters, .columns = kColumns, .where = filter}, result);
  if (code != ZELDB_OK) return code;
  if (!result || result.row_count() == 0) return ZELDB_NO_MATCH;
  const std::optional<int> ended = result.no_row();
  return ended ? *ended : result.row().read(0, *status);
}

int zeldb_set_adapter_health_status(int location, int slotNo, unsigned int status) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  // The log has always shown the name of another function.
  ContentValues values(handle, "zeldb_set_network_physical_port_state");
  if (!values) return values.no_memory();
  values.clear();
  values.put_uint("HealthStatus", status);
  const Filter<128> filter = slot_first(location, slotNo);
  const int code = values.update(tables::kAdapters, filter);
  if (code != ZELDB_OK) {
    vrel_log::logErr(
        "Update pci location [%d], slot [%d]  health status [%d] fail, sql where segment:[%s], return [%d]",
        location, slotNo, static_cast<int>(status), static_cast<const char*>(filter), code);
  }
  return code;
}

int zeldb_get_adapter_pcikey_by_slotNo(int location, int slotNo, uint32_t* pciKey) {
  static constexpr const char* kColumns[] = {"PCIKey"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr || pciKey == nullptr) return ZELDB_NO_HANDLE;
  const Filter<128> filter = location_first(location, slotNo);
  Result result;
  const int status =
      query(handle, {.table = tables::kAdapters, .columns = kColumns, .where = filter}, result);
  if (status != ZELDB_OK || !result.next()) return ZELDB_NO_HANDLE;
  return result.row().read(0, *pciKey);
}

int zeldb_get_ncsi_id_by_slotNo(int location, int slotNo, unsigned char* id1, unsigned char* id2) {
  static constexpr const char* kColumns[] = {"PackageID1", "PackageID2"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr || id1 == nullptr || id2 == nullptr) return ZELDB_NO_HANDLE;
  const Filter<128> filter = location_first(location, slotNo);
  Result result;
  const int status = query(handle, {.table = tables::kNcsiIds, .columns = kColumns, .where = filter}, result);
  if (status != ZELDB_OK || !result.next()) return ZELDB_NO_HANDLE;
  result.row().read(0, *id1);
  result.row().read(1, *id2);
  return ZELDB_OK;
}

int zeldb_set_ncsi_id_by_slotNo(int location, int slotNo, unsigned char type, unsigned char id1,
                                unsigned char id2) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  ContentValues values(handle, "zeldb_set_ncsi_id_by_slotNo");
  if (!values) return values.no_memory();
  values.clear();
  values.put_uint8("PackageID1", id1);
  values.put_uint8("PackageID2", id2);
  unsigned char known1 = 0;
  unsigned char known2 = 0;
  if (zeldb_get_ncsi_id_by_slotNo(location, slotNo, &known1, &known2) == ZELDB_OK) {
    return update_ncsi_id(values, location, slotNo, id1, id2);
  }
  values.put_uint8("Location", static_cast<uint8_t>(location));
  values.put_uint16("SlotNo", static_cast<uint16_t>(slotNo));
  values.put_uint8("Type", type);
  return insert_ncsi_id(values, location, slotNo, id1, id2);
}
