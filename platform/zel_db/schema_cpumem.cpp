// SPDX-License-Identifier: Apache-2.0
#include "zel_db/schema_families.h"

namespace zel_db {
namespace {

constexpr const char* kCacheMost =
    "largest size of the cache, in KiB; with bit 15 set, the other bits in units of 64 KiB";
constexpr const char* kCacheSize = "its size, in the same way";
constexpr const char* kCacheType = "SMBIOS system cache type";
constexpr const char* kCacheConfig = "SMBIOS cache configuration, bits";
constexpr const char* kNode = "node that it belongs to";
constexpr const char* kSerial = "serial number";
constexpr const char* kAsset = "asset tag";
constexpr const char* kPart = "part number";

constexpr Column kProcessor[] = {
    unsigned64("ProcId", "signature and feature flags"),
    number("ProcType", "SMBIOS processor type; 3: central processor"),
    number("Family", "SMBIOS processor family"),
    text("Socket", "name of the socket"),
    text("Manufacturer", "manufacturer"),
    text("Version", "model and version, as the processor reports it"),
    number("Voltage", "SMBIOS voltage: with bit 7 set, the other bits are tenths of a volt"),
    number("ExtClock", "external clock, in MHz"),
    number("MaxSpeed", "highest clock rate that the socket supports, in MHz"),
    number("CurSpeed", "clock rate at the start of the host, in MHz"),
    number("Status", "SMBIOS status: bit 6 populated, bits 0 to 2: 1 enabled, 2 to 4 disabled or idle"),
    number("Upgrade", "SMBIOS processor upgrade: the kind of socket"),
    text("SerialNo", kSerial),
    text("AssetTag", kAsset),
    text("PartNo", kPart),
    number("CoreCount", "cores; readers take the low byte"),
    number("CoreEnabled", "cores that are enabled; readers take the low byte"),
    number("ThreadCount", "threads of all cores; readers take the low byte"),
    number("Characteristics", "SMBIOS processor characteristics, bits"),
    number("L1CacheMaxSize", kCacheMost),
    number("L1CacheInstalled", kCacheSize),
    number("L1CacheType", kCacheType),
    number("L1CacheConfig", kCacheConfig),
    number("L2CacheMaxSize", kCacheMost),
    number("L2CacheInstalled", kCacheSize),
    number("L2CacheType", kCacheType),
    number("L2CacheConfig", kCacheConfig),
    number("L3CacheMaxSize", kCacheMost),
    number("L3CacheInstalled", kCacheSize),
    number("L3CacheType", kCacheType),
    number("L3CacheConfig", kCacheConfig),
    number("NodeIndex", kNode),
};

// Sizes from 2^31 on are written as negative numbers. There is no index: there are few rows, and they are
// listed in the order of their ids.
constexpr Column kMemory[] = {
    unsigned64("ArrayId", "memory array that the slot belongs to"),
    number("SlotNo", "number of the slot"),
    number("TotalWidth", "width with error correction, in bits"),
    number("DataWidth", "width of the data, in bits"),
    number("MemSize", "size, in MiB; sizes from 2^31 on are stored as negative numbers"),
    number("FormFactor", "SMBIOS form factor: 9 DIMM, ..."),
    number("MemType", "SMBIOS memory type: 26 DDR4, 34 DDR5, ..."),
    number("TypeDetail", "SMBIOS type detail, bits; 4096: non-volatile"),
    number("MaxSpeed", "highest speed, in MT/s"),
    number("ClockSpeed", "configured speed, in MT/s"),
    text("DevLocator", "name of the slot; `Hbm` in it marks high-bandwidth memory"),
    text("BankLocator", "name of the bank"),
    text("Manufacturer", "manufacturer; `Intel` exactly for the lists of special modules"),
    text("SerialNo", kSerial),
    text("AssetTag", kAsset),
    text("PartNo", kPart),
    number("Attributes", "SMBIOS attributes: ranks"),
    number("NodeIndex", kNode),
    unsigned64("Capacity", "raw capacity, in bytes"),
    unsigned64("MemCapacity", "part in memory mode, in bytes"),
    unsigned64("AppDirCap", "part in app-direct mode, in bytes"),
    unsigned64("UnconfigCap", "part that is not configured, in bytes"),
    unsigned64("InaccCap", "part that is not accessible, in bytes"),
    unsigned64("ReservedCap", "part that is reserved, in bytes"),
    number("Classification", "classification that the module reports"),
    number("RemainingLife", "remaining life, in percent"),
    number("SecurityState", "bits: 2 enabled, 4 locked, 8 frozen, 32 not supported"),
    number("HealthStatus", "0 normal, 1 noncritical, 2 critical, 4 fatal"),
    number("AlarmTrips", "alarms that have tripped, bits"),
    number("LDShutdownCount", "dirty shutdowns"),
    number("AITDRAMStatus", "status of the DRAM that holds the address table"),
    number("HealthStatusReason", "reasons for the health status, bits"),
    number("LLShutdownStatus", "status of the last shutdown, bits"),
    number("FIPSMode", "0 to 2 not in FIPS mode, 3 in FIPS mode"),
    number("InfoMask", "values that are known, bits"),
    number("CPUIndex", "processor"),
    number("iMCNum", "memory controller of the processor"),
    number("ChannelNum", "channel of the controller"),
    number("DimmNum", "position on the channel"),
    text("FirmwareVersion", "version of its firmware"),
    text("SoftwareID", "id of the firmware for updates"),
    number("MajorHealth", "major health code of the slot"),
    number("MinorHealth", "minor health code of the slot"),
    number("RepairStatus", "status of a repair"),
};

constexpr Table kTables[] = {
    {"Processor",
     kProcessor,
     {"Processor sockets, and the processors in them by SMBIOS.",
      "the controller's reader of SMBIOS data, which is not part of zeldb",
      "`zeldb_get_processor_list`, `zeldb_get_processor`"}},
    {"Memory",
     kMemory,
     {"Memory modules and on-package memory. The columns from `Capacity` to `SoftwareID` are for "
      "persistent modules, NULL for others.",
      "`zeldb_insert_memory_info` (`ArrayId` to `Attributes`), `zeldb_update_dcpmm_smart_info`, "
      "`zeldb_hbm_memory_cleanup` (deletes), the controller's services",
      "`zeldb_get_memory_list`, `zeldb_get_HBM_memory_list`, `zeldb_get_AEP_memory_list`, "
      "`zeldb_get_memory_by_id`, `zeldb_get_memory_by_slot`, `zeldb_get_memory_with_filter`, "
      "`zeldb_get_mpfa_health_by_slot`"}},
};

}  // namespace

std::span<const Table> cpumem_tables() {
  return kTables;
}

}  // namespace zel_db
