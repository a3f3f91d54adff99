// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/network.h"
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Port;

constexpr About kAbout = {
    "Port", "v1_18_0", "Chassis/1/NetworkAdapters/{PCIKey}/Ports/{FunKey}-{Idx}",
    "`_ZELDB_PhysicalPort` of `zeldb_get_network_physical_port_list`. An `Idx` counts within its "
    "function. `TxUtil` and `RxUtil`, in percent, have no property."};

constexpr uint32_t kUp = 1;

Json addresses(const Machine& machine, const std::string& text, size_t bytes) {
  const Json known = address(machine, text, bytes);
  return known.is_null() ? Json::array() : Json::array({known});
}

Json sfp_of(uint16_t layout) {
  constexpr Code kTypes[] = {{32773, "SFPPlus"}, {32774, "QSFPPlus"}, {32775, "SFP28"},
                             {32776, "QSFP28"},  {32777, "QSFP56"},   {32779, "OSFP"}};
  const Json type = coded(kTypes, layout);
  return type.is_null() ? Json::left_out() : type;
}

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("Name", "Idx", "`Port` and the number", "Port " + std::to_string(row.record.Idx)),
    REDFISH_BY("PortId", "Idx", "a text", std::to_string(row.record.Idx)),
    REDFISH_BY("LinkStatus", "LinkStatus", "1 `LinkUp`, otherwise `LinkDown`",
               row.record.LinkStatus == kUp ? "LinkUp" : "LinkDown"),
    REDFISH_BY("CurrentSpeedGbps", "LinkSpeed", "Mbit/s divided by 1000; null while the link is down",
               row.record.LinkStatus == kUp ? Json(row.record.LinkSpeed / 1000.0) : Json()),
    REDFISH_BY("MaxSpeedGbps", "PCILogicalPort.MaxSpeed",
               "the largest of the logical ports with this `PhyIdx`; bit/s divided by 10^9; 0: null",
               row.speed != 0 ? Json(static_cast<double>(row.speed) / 1e9) : Json()),
    REDFISH_BY("LinkNetworkTechnology", "PCILogicalPort.LinkTechnology", kTechnologyNote,
               technology_of(row.technology)),
    REDFISH_BY("Ethernet.AssociatedMACAddresses", "PermanentAddress",
               "if the technology is Ethernet; an empty list if the text is no address of six bytes",
               row.technology == kEthernet ? addresses(machine, row.record.PermanentAddress, kMacAddress)
                                           : Json::left_out()),
    REDFISH_BY("FibreChannel.AssociatedWorldWideNames", "PermanentAddress",
               "if it is Fibre Channel; an empty list if the text is no name of eight bytes",
               row.technology == kFibreChannel
                   ? addresses(machine, row.record.PermanentAddress, kWorldWideName)
                   : Json::left_out()),
    REDFISH_BY("SFP.Type", "ConnectorLayout",
               "32773 `SFPPlus`, 32774 `QSFPPlus`, 32775 `SFP28`, 32776 `QSFP28`, 32777 `QSFP56`, 32779 "
               "`OSFP`; left out "
               "for others, as RJ45",
               sfp_of(row.record.ConnectorLayout)),
    REDFISH_BY("Status.State", "", "`Enabled`", "Enabled"),
};

void add(const Machine& machine, Tree& tree) {
  for (const Device& device : machine.devices) {
    if (device.adapter.empty()) continue;
    for (const Row& row : device.ports) tree.add(resource_of(kAbout, kProperties, row, machine));
    tree.add_collection(device.adapter + "/Ports", "Port", "Ports", uris_of(device.ports));
  }
}

}  // namespace

Json technology_of(uint16_t technology) {
  constexpr Code kTechnologies[] = {
      {kEthernet, "Ethernet"}, {kInfiniBand, "InfiniBand"}, {kFibreChannel, "FibreChannel"}};
  return coded(kTechnologies, technology);
}

Chapter port() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
