// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

struct Row : Entry {};

constexpr About kAbout = {"Chassis", "v1_28_0", "Chassis/1",
                          "The only chassis. The inventory has neither its kind nor its name."};

Json processors_of(const Machine& machine) {
  std::vector<std::string> all = uris_of(machine.processors);
  for (const std::string& uri : uris_of(machine.gpus)) all.push_back(uri);
  return links(all);
}

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("Name", "", "", "Chassis"),
    REDFISH_BY("ChassisType", "", "`Other`", "Other"),
    REDFISH_BY("Status.State", "", "`Enabled`", "Enabled"),
    REDFISH_BY("PCIeDevices", "", "", link(kChassis + "/PCIeDevices")),
    REDFISH_BY("PCIeSlots", "", "", link(kChassis + "/PCIeSlots")),
    REDFISH_BY("NetworkAdapters", "", "", link(kChassis + "/NetworkAdapters")),
    REDFISH_BY("Drives", "", "", link(kChassis + "/Drives")),
    REDFISH_BY("Links.ComputerSystems[]", "", "the system", links({kSystem})),
    REDFISH_BY("Links.ManagedBy[]", "", "the manager", links({kManager})),
    REDFISH_BY("Links.ManagersInChassis[]", "", "the manager", links({kManager})),
    REDFISH_BY("Links.Drives[]", "", "all drives", links(uris_of(machine.drives))),
    REDFISH_BY("Links.Storage[]", "", "all of the system's Storage", links(uris_of(machine.storages))),
    REDFISH_BY("Links.Processors[]", "", "all processors and GPU chips", processors_of(machine)),
};

void add(const Machine& machine, Tree& tree) {
  Row row;
  row.id = "1";
  row.uri = kChassis;
  tree.add(resource_of(kAbout, kProperties, row, machine));
  tree.add_collection(kRoot + "/Chassis", "Chassis", "Chassis", {kChassis});
}

}  // namespace

Chapter chassis() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
