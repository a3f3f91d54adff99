// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/network.h"
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = NetworkFunction;

constexpr About kAbout = {"NetworkDeviceFunction", "v1_11_1",
                          "Chassis/1/NetworkAdapters/{PCIKey}/NetworkDeviceFunctions/{FunKey}-{PhyIdx}-{Idx}",
                          "A logical port: `_ZELDB_LogicalPort` of `zeldb_get_network_logical_port_list`. "
                          "One whose permanent address has fewer "
                          "than 12 characters is not in the library's lists."};

bool is(const Row& row, Technology technology) {
  return row.record.LinkTechnology == technology;
}

Json capabilities_of(const _ZELDB_LogicalPort& port) {
  Json known = Json::array();
  if (port.Ethernet == 1) known.push_back("Ethernet");
  if (port.FCoEFC == 1)
    known.push_back(port.LinkTechnology == kFibreChannel ? "FibreChannel" : "FibreChannelOverEthernet");
  if (port.iSCSI == 1) known.push_back("iSCSI");
  if (port.LinkTechnology == kInfiniBand) known.push_back("InfiniBand");
  return known;
}

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("Name", "PhyIdx, Idx", "`Port` and the number of the physical port, `function` and its own",
               "Port " + std::to_string(row.record.PhyIdx) + " function " + std::to_string(row.record.Idx)),
    REDFISH_BY("NetDevFuncType", "LinkTechnology", kTechnologyNote, technology_of(row.record.LinkTechnology)),
    REDFISH_BY("NetDevFuncCapabilities", "Ethernet, FCoEFC, iSCSI",
               "1: `Ethernet`; `FibreChannel`, or over Ethernet `FibreChannelOverEthernet`; `iSCSI`",
               capabilities_of(row.record)),
    REDFISH_BY(
        "Ethernet.PermanentMACAddress", "PermanentAddress", "Ethernet only; no address of six bytes: null",
        is(row, kEthernet) ? address(machine, row.record.PermanentAddress, kMacAddress) : Json::left_out()),
    REDFISH_BY("Ethernet.MTUSize", "MaxDataSize", "Ethernet only; 0: null",
               is(row, kEthernet) ? Count::of(machine, "", row.record.MaxDataSize) : Json::left_out()),
    REDFISH_BY("FibreChannel.PermanentWWPN", "PermanentAddress",
               "Fibre Channel only; no name of eight bytes: null",
               is(row, kFibreChannel) ? address(machine, row.record.PermanentAddress, kWorldWideName)
                                      : Json::left_out()),
    REDFISH_BY("AssignablePhysicalNetworkPorts[]", "PhyIdx", "its port",
               row.port.empty() ? Json::array() : links({row.port})),
    REDFISH_BY("Links.PhysicalNetworkPortAssignment", "PhyIdx", "its port; left out if it is not known",
               only_if(!row.port.empty(), link(row.port))),
    REDFISH_BY("Links.PCIeFunction", "PCIFuncKey", "its function", link(row.function)),
    REDFISH_BY("Status.State", "", "`Enabled`", "Enabled"),
};

void add(const Machine& machine, Tree& tree) {
  for (const Device& device : machine.devices) {
    if (device.adapter.empty()) continue;
    for (const Row& row : device.network_functions) tree.add(resource_of(kAbout, kProperties, row, machine));
    tree.add_collection(device.adapter + "/NetworkDeviceFunctions", "NetworkDeviceFunction", "Logical ports",
                        uris_of(device.network_functions));
  }
}

}  // namespace

Chapter network_device_function() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
