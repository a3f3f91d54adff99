// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

struct Row : Entry {};

constexpr About kAbout = {"Manager", "v1_24_0", "Managers/1", "The management controller."};

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("Name", "", "", "Management controller"),
    REDFISH_BY("ManagerType", "", "`BMC`", "BMC"),
    REDFISH_BY("Status.State", "", "`Enabled`", "Enabled"),
    REDFISH_BY("Links.ManagerForServers[]", "", "the system", links({kSystem})),
    REDFISH_BY("Links.ManagerForChassis[]", "", "the chassis", links({kChassis})),
    REDFISH_BY("Links.ManagerInChassis", "", "the chassis", link(kChassis)),
    REDFISH_BY("Links.SoftwareImages[]", "", "the firmware of its embedded devices",
               links(uris_of(machine.embedded))),
};

void add(const Machine& machine, Tree& tree) {
  Row row;
  row.id = "1";
  row.uri = kManager;
  tree.add(resource_of(kAbout, kProperties, row, machine));
  tree.add_collection(kRoot + "/Managers", "Manager", "Managers", {kManager});
}

}  // namespace

Chapter manager() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
