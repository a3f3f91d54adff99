// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Storage;

constexpr About kAbout = {
    "Storage", "v1_21_0", "Systems/1/Storage/{PCIKey}",
    "A PCIeDevice with a function of base class 1 or with drives, and `Others` for drives whose "
    "function is not known."};

Json drives_of(const Row& row) {
  Json all = Json::array();
  for (const Drive* drive : row.drives) all.push_back(link(drive->uri));
  return all;
}

Json health_of(const Row& row, const Machine& machine) {
  std::vector<Json> healths;
  for (const Drive* drive : row.drives)
    healths.push_back(Health::of(machine, "", drive->record.HealthStatus));
  for (const Controller& controller : row.controllers)
    healths.push_back(Health::of(machine, "", controller.device->slot.HealthStatus));
  return worst(healths);
}

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("Name", "CardName", "of the device", Text::of(machine, "CardName", row.name)),
    REDFISH_BY("Drives[]", "PCIFuncKey", "the drives with one of its functions", drives_of(row)),
    REDFISH_BY("Controllers", "", "its controllers", link(row.uri + "/Controllers")),
    REDFISH_BY("Status.HealthRollup", "HealthStatus",
               "the worst of its drives and its adapter; none known: null", health_of(row, machine)),
    REDFISH_BY("Status.State", "", "`Enabled`", "Enabled"),
    REDFISH_BY("Links.Enclosures[]", "", "the chassis", links({kChassis})),
};

void add(const Machine& machine, Tree& tree) {
  for (const Row& row : machine.storages) tree.add(resource_of(kAbout, kProperties, row, machine));
  tree.add_collection(kSystem + "/Storage", "Storage", "Storage", uris_of(machine.storages));
}

}  // namespace

Chapter storage() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
