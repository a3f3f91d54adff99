// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Module;

constexpr About kAbout = {
    "Memory", "v1_23_0", "Systems/1/Memory/{Id}",
    "One module: `_ZELDB_Memory` of `zeldb_get_memory_by_id`. Persistent modules are those of "
    "`zeldb_get_AEP_memory_list`."};

Json device_type_of(uint8_t type) {
  constexpr Code kTypes[] = {{18, "DDR"},          {19, "DDR2"},         {24, "DDR3"},         {26, "DDR4"},
                             {29, "LPDDR3_SDRAM"}, {30, "LPDDR4_SDRAM"}, {31, "Logical"},      {32, "HBM"},
                             {33, "HBM2"},         {34, "DDR5"},         {35, "LPDDR5_SDRAM"}, {36, "HBM3"}};
  return coded(kTypes, type);
}

bool is_high_bandwidth(const _ZELDB_Memory& module) {
  return std::strstr(module.DevLocator, "Hbm") != nullptr;
}

Json correction_of(const _ZELDB_Memory& module) {
  const bool has_none = module.TotalWidth != 0 && module.TotalWidth == module.DataWidth;
  return has_none && !is_high_bandwidth(module) ? Json("NoECC") : Json();
}

Json width_of(uint16_t bits) {
  constexpr uint16_t kUnknown = 0xFFFF;
  return bits != 0 && bits != kUnknown ? Json(bits) : Json();
}

Json speeds_of(uint16_t speed) {
  return speed != 0 ? Json::array({speed}) : Json::array();
}

// The first entry that applies counts.
Json security_of(uint32_t bits) {
  constexpr struct {
    uint32_t bit;
    const char* text;
  } kStates[] = {{8, "Frozen"}, {4, "Locked"}, {2, "Enabled"}};
  constexpr uint32_t kUnsupported = 0x20;
  if ((bits & kUnsupported) != 0) return Json::left_out();
  for (const auto& state : kStates) {
    if ((bits & state.bit) != 0) return state.text;
  }
  return "Disabled";
}

Json health_of(uint8_t health) {
  constexpr Code kHealth[] = {{0, "OK"}, {1, "Warning"}, {2, "Critical"}, {4, "Critical"}};
  return coded(kHealth, health);
}

constexpr Property<Row> kProperties[] = {
    REDFISH_FROM("Name", record.DevLocator, Text),
    REDFISH_BY("CapacityMiB", "MemSize", "0: an empty slot", row.record.MemSize),
    REDFISH_BY(
        "MemoryDeviceType", "MemType",
        "18 `DDR`, 19 `DDR2`, 24 `DDR3`, 26 `DDR4`, 29 `LPDDR3_SDRAM`, 30 `LPDDR4_SDRAM`, 31 `Logical`, 32 "
        "`HBM`, 33 `HBM2`, 34 `DDR5`, 35 `LPDDR5_SDRAM`, 36 `HBM3`; others null",
        device_type_of(row.record.MemType)),
    REDFISH_BY("MemoryType", "TypeDetail", "`IntelOptane` for a persistent module, otherwise `DRAM`",
               row.is_persistent ? "IntelOptane" : "DRAM"),
    REDFISH_FROM("OperatingSpeedMhz", record.ClockSpeed, Count),
    REDFISH_BY("AllowedSpeedsMHz", "MaxSpeed", "a list of one; 0: an empty list",
               speeds_of(row.record.MaxSpeed)),
    REDFISH_BY("BusWidthBits", "TotalWidth", "0 and 65535: null", width_of(row.record.TotalWidth)),
    REDFISH_BY("DataWidthBits", "DataWidth", "0 and 65535: null", width_of(row.record.DataWidth)),
    REDFISH_BY("ErrorCorrection", "TotalWidth, DataWidth",
               "equal, and no high-bandwidth memory: `NoECC`; otherwise the kind is not known: null",
               correction_of(row.record)),
    REDFISH_BY("RankCount", "Attributes", "low 4 bits; 0: null",
               Count::of(machine, "", row.record.Attributes & 0xFU)),
    REDFISH_FROM("Manufacturer", record.Manufacturer, Text),
    REDFISH_FROM("PartNumber", record.PartNo, Text),
    REDFISH_FROM("SerialNumber", record.SerialNo, Text),
    REDFISH_BY("Location.PartLocation.LocationType", "", "`Slot`", "Slot"),
    REDFISH_FROM("Location.PartLocation.ServiceLabel", record.DevLocator, Text),
    REDFISH_BY("MemoryLocation.Socket", "CPUIndex", "persistent modules only: others do not know it",
               only_if(row.is_persistent, row.record.CPUIndex)),
    REDFISH_BY("MemoryLocation.MemoryController", "iMCNum", "the same",
               only_if(row.is_persistent, row.record.iMCNum)),
    REDFISH_BY("MemoryLocation.Channel", "ChannelNum", "the same",
               only_if(row.is_persistent, row.record.ChannelNum)),
    REDFISH_BY("MemoryLocation.Slot", "DimmNum", "the same", only_if(row.is_persistent, row.record.DimmNum)),
    REDFISH_BY("VolatileSizeMiB", "MemCapacity", "persistent modules only: bytes divided by 2^20",
               only_if(row.is_persistent, Mebibytes::of(machine, "", row.record.MemCapacity))),
    REDFISH_BY("NonVolatileSizeMiB", "AppDirCap", "the same",
               only_if(row.is_persistent, Mebibytes::of(machine, "", row.record.AppDirCap))),
    REDFISH_BY("FirmwareRevision", "FirmwareVersion", "persistent modules only",
               only_if(row.is_persistent, Text::of(machine, "FirmwareVersion", row.record.FirmwareVersion))),
    REDFISH_BY(
        "SecurityState", "SecurityState",
        "persistent modules only; bit 0x20: left out; 0x08 `Frozen`; 0x04 `Locked`; 0x02 `Enabled`; none "
        "`Disabled`: the first that applies",
        row.is_persistent ? security_of(row.record.SecurityState) : Json::left_out()),
    REDFISH_BY("Metrics", "", "persistent modules only",
               only_if(row.is_persistent, link(row.uri + "/MemoryMetrics"))),
    REDFISH_BY("Status.State", "MemSize", "0: `Absent`, otherwise `Enabled`",
               row.record.MemSize == 0 ? "Absent" : "Enabled"),
    REDFISH_BY("Status.Health", "HealthStatus",
               "persistent modules only: 0 `OK`, 1 `Warning`, 2 and 4 `Critical`, others null",
               row.is_persistent ? health_of(row.record.HealthStatus) : Json::left_out()),
    REDFISH_BY("Links.Chassis", "", "the chassis", link(kChassis)),
};

void add(const Machine& machine, Tree& tree) {
  for (const Row& row : machine.memory) tree.add(resource_of(kAbout, kProperties, row, machine));
  tree.add_collection(kSystem + "/Memory", "Memory", "Memory modules", uris_of(machine.memory));
}

}  // namespace

Chapter memory() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
