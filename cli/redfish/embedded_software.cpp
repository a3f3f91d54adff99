// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Embedded;

constexpr About kAbout = {"SoftwareInventory", "v1_13_0",
                          "UpdateService/FirmwareInventory/Embedded-{DeviceName}-{DeviceIndex}",
                          "One device of the controller: `_ZELDB_EmbeddedFirmware` of "
                          "`zeldb_get_embedded_firmware_list`."};

constexpr Property<Row> kProperties[] = {
    REDFISH_FROM("Name", record.DeviceName, Text),
    REDFISH_BY("Version", "Version", "a number, as a text", std::to_string(row.record.Version)),
    REDFISH_FROM("SoftwareId", record.SoftwareID, TextIfKnown),
    REDFISH_BY("Status.State", "", "`Enabled`", "Enabled"),
    REDFISH_BY("RelatedItem[]", "", "the manager", links({kManager})),
};

void add(const Machine& machine, Tree& tree) {
  for (const Row& row : machine.embedded) tree.add(resource_of(kAbout, kProperties, row, machine));
}

}  // namespace

Chapter embedded_software() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
