// SPDX-License-Identifier: Apache-2.0
#include "cpumem/read_by_name.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "zeldb/cpumem.h"

using namespace zeldb;

namespace {

using Module = _ZELDB_Memory;

constexpr auto kFields = field_table(
    ZELDB_FIELD(Module, _id), ZELDB_FIELD(Module, ArrayId), ZELDB_FIELD(Module, SlotNo),
    ZELDB_FIELD(Module, TotalWidth), ZELDB_FIELD(Module, DataWidth), ZELDB_FIELD(Module, MemSize),
    ZELDB_FIELD(Module, FormFactor), ZELDB_FIELD(Module, MemType), ZELDB_FIELD(Module, TypeDetail),
    ZELDB_FIELD(Module, MaxSpeed), ZELDB_FIELD(Module, ClockSpeed), ZELDB_FIELD(Module, DevLocator),
    ZELDB_FIELD(Module, BankLocator), ZELDB_FIELD(Module, Manufacturer), ZELDB_FIELD(Module, SerialNo),
    ZELDB_FIELD(Module, AssetTag), ZELDB_FIELD(Module, PartNo), ZELDB_FIELD(Module, Attributes),
    ZELDB_FIELD(Module, NodeIndex), ZELDB_FIELD(Module, Capacity), ZELDB_FIELD(Module, MemCapacity),
    ZELDB_FIELD(Module, AppDirCap), ZELDB_FIELD(Module, UnconfigCap), ZELDB_FIELD(Module, InaccCap),
    ZELDB_FIELD(Module, ReservedCap), ZELDB_FIELD(Module, Classification), ZELDB_FIELD(Module, RemainingLife),
    ZELDB_FIELD(Module, SecurityState), ZELDB_FIELD(Module, HealthStatus), ZELDB_FIELD(Module, AlarmTrips),
    ZELDB_FIELD(Module, LDShutdownCount), ZELDB_FIELD(Module, AITDRAMStatus),
    ZELDB_FIELD(Module, HealthStatusReason), ZELDB_FIELD(Module, LLShutdownStatus),
    ZELDB_FIELD(Module, FIPSMode), ZELDB_FIELD(Module, InfoMask), ZELDB_FIELD(Module, CPUIndex),
    ZELDB_FIELD(Module, iMCNum), ZELDB_FIELD(Module, ChannelNum), ZELDB_FIELD(Module, DimmNum),
    ZELDB_FIELD(Module, FirmwareVersion), ZELDB_FIELD(Module, SoftwareID), ZELDB_FIELD(Module, MajorHealth),
    ZELDB_FIELD(Module, MinorHealth), ZELDB_FIELD(Module, RepairStatus));

}  // namespace

int zeldb_get_memory_with_filter(_ZELDB_Memory* memory, const char* filter, const _zel_db_param_t* param) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (memory == nullptr || filter == nullptr || param == nullptr) return ZELDB_INVALID_ARGUMENT;
  return read_by_name(handle, tables::kModules, filter, *param, kFields.fields, memory);
}

int zeldb_get_memory_by_slot(_ZELDB_Memory* memory, int32_t slot) {
  const Filter<64> filter("SlotNo=?");
  const _zel_db_param_t param = bound(slot);
  return zeldb_get_memory_with_filter(memory, filter, &param);
}

int zeldb_get_memory_by_id(_ZELDB_Memory* memory, uint32_t id) {
  const Filter<64> filter("_id=?");
  const _zel_db_param_t param = bound(id);
  return zeldb_get_memory_with_filter(memory, filter, &param);
}

int zeldb_get_mpfa_health_by_slot(int32_t slot, uint32_t* major, uint32_t* minor, uint32_t* repair) {
  static constexpr const char* kColumns[] = {"MajorHealth", "MinorHealth", "RepairStatus"};
  if (major == nullptr || minor == nullptr) return ZELDB_INVALID_ARGUMENT;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  const Filter<32> filter("SlotNo=%d", static_cast<int>(slot));
  return read_one(handle, {.table = tables::kModules, .columns = kColumns, .where = filter},
                  [&](const Row& row) {
                    *major = row.number(0);
                    *minor = row.number(1);
                    if (repair != nullptr) *repair = row.number(2);
                  });
}
