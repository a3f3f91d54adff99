// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

struct Row : Entry {};

constexpr About kAbout = {"UpdateService", "v1_17_0", "UpdateService", "It shows firmware and updates none."};

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("Name", "", "", "Firmware"),
    REDFISH_BY("ServiceEnabled", "", "false", false),
    REDFISH_BY("FirmwareInventory", "", "components and embedded devices", link(kFirmware)),
};

void add(const Machine& machine, Tree& tree) {
  Row row;
  row.id = "UpdateService";
  row.uri = kRoot + "/UpdateService";
  tree.add(resource_of(kAbout, kProperties, row, machine));
}

}  // namespace

Chapter update_service() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
