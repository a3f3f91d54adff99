// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Device;

constexpr About kAbout = {"NetworkInterface", "v1_2_3", "Systems/1/NetworkInterfaces/{PCIKey}",
                          "A NetworkAdapter as the system sees it."};

constexpr Property<Row> kProperties[] = {
    REDFISH_FROM("Name", slot.CardName, Text),
    REDFISH_FROM("Status.Health", slot.HealthStatus, Health),
    REDFISH_BY("Status.State", "", "`Enabled`", "Enabled"),
    REDFISH_BY("Ports", "", "link to those of the adapter", link(row.adapter + "/Ports")),
    REDFISH_BY("NetworkDeviceFunctions", "", "link to those of the adapter",
               link(row.adapter + "/NetworkDeviceFunctions")),
    REDFISH_BY("Links.NetworkAdapter", "", "the adapter", link(row.adapter)),
};

void add(const Machine& machine, Tree& tree) {
  const std::string collection = kSystem + "/NetworkInterfaces";
  std::vector<std::string> members;
  for (const Row& row : machine.devices) {
    if (row.adapter.empty()) continue;
    members.push_back(collection + "/" + row.id);
    Json resource = bare_resource(kAbout, {row.id, members.back()});
    fill(resource, kProperties, row, machine);
    complete_name(resource);
    tree.add(resource);
  }
  tree.add_collection(collection, "NetworkInterface", "Network interfaces", members);
}

}  // namespace

Chapter network_interface() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
