// SPDX-License-Identifier: Apache-2.0
#include "cpumem/read_by_name.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "zeldb/cpumem.h"

using namespace zeldb;

namespace {

using R = _ZELDB_Memory;

constexpr FieldTable kFields{ZELDB_FIELD(R, _id),
                             ZELDB_FIELD(R, ArrayId),
                             ZELDB_FIELD(R, SlotNo),
                             ZELDB_FIELD(R, TotalWidth),
                             ZELDB_FIELD(R, DataWidth),
                             ZELDB_FIELD(R, MemSize),
                             ZELDB_FIELD(R, FormFactor),
                             ZELDB_FIELD(R, MemType),
                             ZELDB_FIELD(R, TypeDetail),
                             ZELDB_FIELD(R, MaxSpeed),
                             ZELDB_FIELD(R, ClockSpeed),
                             ZELDB_FIELD(R, DevLocator),
                             ZELDB_FIELD(R, BankLocator),
                             ZELDB_FIELD(R, Manufacturer),
                             ZELDB_FIELD(R, SerialNo),
                             ZELDB_FIELD(R, AssetTag),
                             ZELDB_FIELD(R, PartNo),
                             ZELDB_FIELD(R, Attributes),
                             ZELDB_FIELD(R, NodeIndex),
                             ZELDB_FIELD(R, Capacity),
                             ZELDB_FIELD(R, MemCapacity),
                             ZELDB_FIELD(R, AppDirCap),
                             ZELDB_FIELD(R, UnconfigCap),
                             ZELDB_FIELD(R, InaccCap),
                             ZELDB_FIELD(R, ReservedCap),
                             ZELDB_FIELD(R, Classification),
                             ZELDB_FIELD(R, RemainingLife),
                             ZELDB_FIELD(R, SecurityState),
                             ZELDB_FIELD(R, HealthStatus),
                             ZELDB_FIELD(R, AlarmTrips),
                             ZELDB_FIELD(R, LDShutdownCount),
                             ZELDB_FIELD(R, AITDRAMStatus),
                             ZELDB_FIELD(R, HealthStatusReason),
                             ZELDB_FIELD(R, LLShutdownStatus),
                             ZELDB_FIELD(R, FIPSMode),
                             ZELDB_FIELD(R, InfoMask),
                             ZELDB_FIELD(R, CPUIndex),
                             ZELDB_FIELD(R, iMCNum),
                             ZELDB_FIELD(R, ChannelNum),
                             ZELDB_FIELD(R, DimmNum),
                             ZELDB_FIELD(R, FirmwareVersion),
                             ZELDB_FIELD(R, SoftwareID),
                             ZELDB_FIELD(R, MajorHealth),
                             ZELDB_FIELD(R, MinorHealth),
                             ZELDB_FIELD(R, RepairStatus)};
constexpr const char* kModules = "Memory";

}  // namespace

int zeldb_get_memory_with_filter(_ZELDB_Memory* memory, const char* filter, const _zel_db_param_t* param) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (memory == nullptr || filter == nullptr || param == nullptr) return ZELDB_INVALID_ARGUMENT;
  return read_by_name(handle, kModules, filter, *param, kFields.fields, memory);
}

int zeldb_get_memory_by_slot(_ZELDB_Memory* memory, int32_t slot) {
  const Filter<64> filter("%s=?", "SlotNo");
  const _zel_db_param_t param = bound(slot);
  return zeldb_get_memory_with_filter(memory, filter, &param);
}

int zeldb_get_memory_by_id(_ZELDB_Memory* memory, uint32_t id) {
  const Filter<64> filter("%s=?", "_id");
  const _zel_db_param_t param = bound(id);
  return zeldb_get_memory_with_filter(memory, filter, &param);
}

int zeldb_get_mpfa_health_by_slot(int32_t slot, uint32_t* major, uint32_t* minor, uint32_t* repair) {
  static constexpr const char* kColumns[] = {"MajorHealth", "MinorHealth", "RepairStatus"};
  if (major == nullptr || minor == nullptr) return ZELDB_INVALID_ARGUMENT;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  const Filter<32> filter("%s=%d", "SlotNo", static_cast<int>(slot));
  return read_one(handle, {.table = kModules, .columns = kColumns, .where = filter}, [&](const Row& row) {
    *major = row.number(0);
    *minor = row.number(1);
    if (repair != nullptr) *repair = row.number(2);
  });
}
