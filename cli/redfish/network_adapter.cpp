// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/pcie.h"
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Device;

constexpr About kAbout = {
    "NetworkAdapter", "v1_14_0", "Chassis/1/NetworkAdapters/{PCIKey}",
    "A PCIeDevice with a function for which `zeldb_get_network_info` tells ports, or that has a "
    "port. Each has one of `Controllers`."};

Json controller_of(const Row& row, const Machine& machine) {
  const std::vector<std::string> ports = uris_of(row.ports);
  const std::vector<std::string> functions = uris_of(row.network_functions);
  Json controller = Json::object();
  controller["FirmwarePackageVersion"] = Text::of(machine, "PkgVersionString", row.package);
  controller["PCIeInterface"] = interface_of(machine, row.functions.front().record);
  put(controller, "ControllerCapabilities.NetworkPortCount", row.port_count);
  put(controller, "ControllerCapabilities.NetworkDeviceFunctionCount", row.logical_count);
  put(controller, "Links.PCIeDevices[]", links({row.uri}));
  put(controller, "Links.Ports[]", links(ports));
  put(controller, "Links.NetworkDeviceFunctions[]", links(functions));
  if (!row.component.empty()) put(controller, "Links.ActiveSoftwareImage", link(row.component));
  return controller;
}

constexpr Property<Row> kProperties[] = {
    REDFISH_FROM("Name", slot.CardName, Text),
    REDFISH_FROM("Manufacturer", product.Manufacture, Text),
    REDFISH_FROM("Model", product.Model, Text),
    REDFISH_FROM("SerialNumber", slot.SerialNo, Text),
    REDFISH_FROM("PartNumber", product.PartNo, Text),
    REDFISH_BY("Controllers",
               "PkgVersionString, PCIeType, MaxPCIeType, LanesInUse, MaxLanes, NumberofPhysicalPorts, "
               "MaxNumberofLogicalPorts",
               "one: `FirmwarePackageVersion` of the slot's component, `PCIeInterface` as of the PCIeDevice, "
               "`NetworkPortCount` and `NetworkDeviceFunctionCount` as sums over the functions, links to the "
               "device, its ports, its functions and its firmware",
               Json::array({controller_of(row, machine)})),
    REDFISH_BY("Ports", "", "its ports", link(row.adapter + "/Ports")),
    REDFISH_BY("NetworkDeviceFunctions", "", "its logical ports",
               link(row.adapter + "/NetworkDeviceFunctions")),
    REDFISH_FROM("Status.Health", slot.HealthStatus, Health),
    REDFISH_BY("Status.State", "", "`Enabled`", "Enabled"),
};

void add(const Machine& machine, Tree& tree) {
  std::vector<std::string> members;
  for (const Row& row : machine.devices) {
    if (row.adapter.empty()) continue;
    Json resource = bare_resource(kAbout, {row.id, row.adapter});
    fill(resource, kProperties, row, machine);
    complete_name(resource);
    tree.add(resource);
    members.push_back(row.adapter);
  }
  tree.add_collection(kChassis + "/NetworkAdapters", "NetworkAdapter", "Network adapters", members);
}

}  // namespace

Json interface_of(const Machine& machine, const _ZELDB_PCI_Generic_Info& function) {
  return Json::object({{"PCIeType", Generation::of(machine, "", function.PCIeType)},
                       {"MaxPCIeType", Generation::of(machine, "", function.MaxPCIeType)},
                       {"LanesInUse", Lanes::of(machine, "", function.LanesInUse)},
                       {"MaxLanes", Lanes::of(machine, "", function.MaxLanes)}});
}

Chapter network_adapter() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
