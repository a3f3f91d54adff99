// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "db/filter.h"
#include "db/read.h"
#include "db/syslog_info.h"
#include "db/tables.h"
#include "zeldb/firmware.h"

using namespace zeldb;

namespace {

constexpr const char* kFunction = "zeldb_get_pldm_downstream_software_ids";
constexpr int kThroughDownstream = 0x40;

// The disks of the controller in the slot, if its component is updated through them.
Filter<1024> disk_filter(int location, int slot) {
  return Filter<1024>(
      " HardwareTypeId=2 AND HardwareId IN (SELECT _id FROM Disks WHERE RAIDCtrlId IN (SELECT _id FROM "
      "RAIDControllers WHERE ControllerUID=%d AND (SELECT UpdateMethod FROM PldmDeviceFirmware WHERE "
      "location=%d AND SlotNo=%d) & %d > 0))",
      slot, location, slot, kThroughDownstream);
}

}  // namespace

int zeldb_get_pldm_downstream_software_ids(int location, int slot, char (*ids)[32], int* count) {
  static constexpr const char* kColumns[] = {"L2PartNo"};
  if (ids == nullptr || count == nullptr || *count < 0) return ZELDB_INVALID_ARGUMENT;
  const Filter<1024> filter = disk_filter(location, slot);
  syslog_info("%s: filter: %s\n\n", kFunction, static_cast<const char*>(filter));
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_FAILED;
  syslog_info("%s: get_dmdb_handle()\n\n", kFunction);
  Result result;
  const int status = query(handle, {.table = tables::kVpds, .columns = kColumns, .where = filter}, result);
  if (status != ZELDB_OK || !result) return ZELDB_FAILED;
  syslog_info("%s: zel_db_query()\n\n", kFunction);
  syslog_info("%s: pResultSet not empty\n\n", kFunction);
  const unsigned rows = std::min(result.row_count(), static_cast<unsigned>(*count));
  *count = static_cast<int>(rows);
  for (unsigned read = 0; read < rows && result.next(); ++read) result.row().text(0, ids[read]);
  return ZELDB_OK;
}
