// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

struct Row : Entry {};

constexpr About kAbout = {"ComputerSystem", "v1_27_0", "Systems/1", "The server, in sums over its parts."};

constexpr uint8_t kPopulated = 0x40;  // a processor's status
constexpr double kMebibytes = 1024;   // in a GiB

template <typename Number>
uint64_t total(const Machine& machine, Number number) {
  uint64_t sum = 0;
  for (const Processor& processor : machine.processors) sum += number(processor.record);
  return sum;
}

uint64_t populated(const _ZELDB_Processor& processor) {
  return (processor.Status & kPopulated) != 0 ? 1 : 0;
}

Json model_of(const Machine& machine) {
  const auto first = std::ranges::find_if(
      machine.processors, [](const Processor& other) { return populated(other.record) != 0; });
  return first != machine.processors.end() ? Text::of(machine, "Version", first->record.Version) : Json();
}

double memory_of(const Machine& machine, bool persistent) {
  uint64_t mebibytes = 0;
  for (const Module& module : machine.memory) {
    if (!module.is_persistent) mebibytes += persistent ? 0 : module.record.MemSize;
    if (module.is_persistent)
      mebibytes += (persistent ? module.record.AppDirCap : module.record.MemCapacity) >> 20U;
  }
  return static_cast<double>(mebibytes) / kMebibytes;
}

Json functions_of(const Machine& machine) {
  Json all = Json::array();
  for (const Device& device : machine.devices) {
    for (const Function& function : device.functions) all.push_back(link(function.uri));
  }
  return all;
}

Json health_of(const Machine& machine) {
  std::vector<Json> healths;
  for (const Device& device : machine.devices)
    healths.push_back(Health::of(machine, "", device.slot.HealthStatus));
  for (const Drive& drive : machine.drives)
    healths.push_back(Health::of(machine, "", drive.record.HealthStatus));
  return worst(healths);
}

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("Name", "", "", "System"),
    REDFISH_BY("SystemType", "", "`Physical`", "Physical"),
    REDFISH_BY("ProcessorSummary.Count", "Processor.Status", "how many are populated (bit 6)",
               total(machine, populated)),
    REDFISH_BY("ProcessorSummary.CoreCount", "CoreCount", "sum; 0: null",
               Count::of(machine, "", total(machine, [](const auto& one) { return one.CoreCount; }))),
    REDFISH_BY("ProcessorSummary.LogicalProcessorCount", "ThreadCount", "sum; 0: null",
               Count::of(machine, "", total(machine, [](const auto& one) { return one.ThreadCount; }))),
    REDFISH_BY("ProcessorSummary.Model", "Version", "of the first that is populated", model_of(machine)),
    REDFISH_BY("MemorySummary.TotalSystemMemoryGiB", "MemSize, MemCapacity",
               "sum in GiB; of persistent modules the part in memory mode", memory_of(machine, false)),
    REDFISH_BY("MemorySummary.TotalSystemPersistentMemoryGiB", "AppDirCap", "sum in GiB",
               memory_of(machine, true)),
    REDFISH_BY("Status.HealthRollup", "HealthStatus", "the worst of adapters and drives; none known: null",
               health_of(machine)),
    REDFISH_BY("Processors", "", "", link(kSystem + "/Processors")),
    REDFISH_BY("Memory", "", "", link(kSystem + "/Memory")),
    REDFISH_BY("Storage", "", "", link(kSystem + "/Storage")),
    REDFISH_BY("NetworkInterfaces", "", "", link(kSystem + "/NetworkInterfaces")),
    REDFISH_BY("Bios", "", "", link(kSystem + "/Bios")),
    REDFISH_BY("PCIeDevices[]", "", "all of the chassis", links(uris_of(machine.devices))),
    REDFISH_BY("PCIeFunctions[]", "", "all of these", functions_of(machine)),
    REDFISH_BY("Links.Chassis[]", "", "the chassis", links({kChassis})),
    REDFISH_BY("Links.ManagedBy[]", "", "the manager", links({kManager})),
};

void add(const Machine& machine, Tree& tree) {
  Row row;
  row.id = "1";
  row.uri = kSystem;
  tree.add(resource_of(kAbout, kProperties, row, machine));
  tree.add_collection(kRoot + "/Systems", "ComputerSystem", "Systems", {kSystem});
}

}  // namespace

Chapter computer_system() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
