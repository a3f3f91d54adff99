// SPDX-License-Identifier: Apache-2.0
//
// The functions that the transcripts call.
#include "tests/support/transcript.h"
#include "zeldb/cpumem.h"

namespace zeldb_test {

ZELDB_RECORD(_ZELDB_Processor, _id, ProcId, ProcType, Family, Socket, Manufacturer, Version, Voltage,
             ExtClock, MaxSpeed, CurSpeed, Status, Upgrade, SerialNo, AssetTag, PartNo, CoreCount,
             CoreEnabled, ThreadCount, Characteristics, L1CacheMaxSize, L1CacheInstalled, L1CacheType,
             L1CacheConfig, L2CacheMaxSize, L2CacheInstalled, L2CacheType, L2CacheConfig, L3CacheMaxSize,
             L3CacheInstalled, L3CacheType, L3CacheConfig, NodeIndex);
ZELDB_RECORD(_ZELDB_Memory, _id, ArrayId, SlotNo, TotalWidth, DataWidth, MemSize, FormFactor, MemType,
             TypeDetail, MaxSpeed, ClockSpeed, DevLocator, BankLocator, Manufacturer, SerialNo, AssetTag,
             PartNo, Attributes, NodeIndex, Capacity, MemCapacity, AppDirCap, UnconfigCap, InaccCap,
             ReservedCap, Classification, RemainingLife, SecurityState, HealthStatus, AlarmTrips,
             LDShutdownCount, AITDRAMStatus, HealthStatusReason, LLShutdownStatus, FIPSMode, InfoMask,
             CPUIndex, iMCNum, ChannelNum, DimmNum, FirmwareVersion, SoftwareID, MajorHealth, MinorHealth,
             RepairStatus);

namespace {

int memory_with_filter(_ZELDB_Memory* memory, const char* filter, uint32_t* value) {
  const _zel_db_param_t param = zeldb::bound(value != nullptr ? *value : 0);
  return zeldb_get_memory_with_filter(memory, filter, value != nullptr ? &param : nullptr);
}

}  // namespace

#define F(function) ZELDB_CALL(function)
#define INTO_BUFFER(function) call(#function, into_buffer<function, uint32_t, uint32_t>)
const Family kFamily = {
    ZELDB_TRANSCRIPTS,
    calls(F(zeldb_get_processor_list), F(zeldb_get_memory_list), F(zeldb_get_HBM_memory_list),
          F(zeldb_get_AEP_memory_list), F(zeldb_get_processor), F(memory_with_filter),
          F(zeldb_get_memory_by_slot), F(zeldb_get_memory_by_id), F(zeldb_get_mpfa_health_by_slot),
          F(zeldb_insert_memory_info), F(zeldb_hbm_memory_cleanup), F(zeldb_update_dcpmm_smart_info),
          INTO_BUFFER(bps_format_fips_str), INTO_BUFFER(bps_format_hstate_str),
          INTO_BUFFER(bps_format_security_str))};

}  // namespace zeldb_test
