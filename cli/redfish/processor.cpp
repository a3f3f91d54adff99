// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Processor;

constexpr uint8_t kPopulated = 0x40;

constexpr About kAbout = {"Processor", "v1_22_0", "Systems/1/Processors/{Id}",
                          "One socket: `_ZELDB_Processor` of `zeldb_get_processor`."};

Json type_of(uint8_t type) {
  constexpr Code kTypes[] = {{3, "CPU"}, {5, "DSP"}, {6, "GPU"}};
  return coded(kTypes, type);
}

Json state_of(uint8_t status) {
  constexpr Code kStates[] = {{1, "Enabled"}, {2, "Disabled"}, {3, "Disabled"}, {4, "StandbyOffline"}};
  constexpr uint8_t kState = 7;
  return (status & kPopulated) == 0 ? Json("Absent") : coded(kStates, status & kState);
}

// KiB, or 64 KiB where bit 15 is set.
void add_cache(Json& caches, const char* type, uint32_t size) {
  constexpr uint32_t kLarge = 0x8000;
  const uint32_t kibibytes = (size & kLarge) != 0 ? (size & ~kLarge) * 64 : size;
  if (kibibytes != 0)
    caches.push_back(
        Json::object({{"MemoryType", type}, {"IntegratedMemory", true}, {"CapacityMiB", kibibytes >> 10U}}));
}

Json caches_of(const _ZELDB_Processor& processor) {
  Json caches = Json::array();
  add_cache(caches, "L1Cache", processor.L1CacheInstalled);
  add_cache(caches, "L2Cache", processor.L2CacheInstalled);
  add_cache(caches, "L3Cache", processor.L3CacheInstalled);
  return caches;
}

constexpr Property<Row> kProperties[] = {
    REDFISH_FROM("Name", record.Socket, Text),
    REDFISH_FROM("Socket", record.Socket, Text),
    REDFISH_BY("ProcessorType", "ProcType", "3 `CPU`, 5 `DSP`, 6 `GPU`; others null",
               type_of(row.record.ProcType)),
    REDFISH_FROM("Manufacturer", record.Manufacturer, Text),
    REDFISH_FROM("Model", record.Version, Text),
    REDFISH_FROM("SerialNumber", record.SerialNo, Text),
    REDFISH_FROM("PartNumber", record.PartNo, Text),
    REDFISH_FROM("TotalCores", record.CoreCount, Count),
    REDFISH_FROM("TotalEnabledCores", record.CoreEnabled, Count),
    REDFISH_FROM("TotalThreads", record.ThreadCount, Count),
    REDFISH_FROM("MaxSpeedMHz", record.MaxSpeed, Count),
    REDFISH_FROM("OperatingSpeedMHz", record.CurSpeed, Count),
    REDFISH_BY("ProcessorId.IdentificationRegisters", "ProcId", "`0x` and 16 digits; 0: null",
               row.record.ProcId != 0 ? Json("0x" + hexadecimal(row.record.ProcId, 16)) : Json()),
    REDFISH_BY(
        "ProcessorMemory", "L1CacheInstalled, L2CacheInstalled, L3CacheInstalled",
        "`L1Cache` to `L3Cache`, integrated; KiB, or with bit 15 set the low bits times 64 KiB, in MiB "
        "rounded down; a cache of 0 is left out",
        caches_of(row.record)),
    REDFISH_BY("Status.State", "Status",
               "bit 6 clear: `Absent`; bits 0 to 2: 1 `Enabled`, 2 and 3 `Disabled`, 4 `StandbyOffline`, "
               "others null",
               state_of(row.record.Status)),
    REDFISH_BY("Links.Chassis", "", "the chassis", link(kChassis)),
};

void add(const Machine& machine, Tree& tree) {
  for (const Row& row : machine.processors) tree.add(resource_of(kAbout, kProperties, row, machine));
  std::vector<std::string> members = uris_of(machine.processors);
  for (const std::string& uri : uris_of(machine.gpus)) members.push_back(uri);
  tree.add_collection(kSystem + "/Processors", "Processor", "Processors", members);
}

}  // namespace

Chapter processor() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
