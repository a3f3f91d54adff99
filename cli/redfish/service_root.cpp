// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

struct Row : Entry {};

constexpr About kAbout = {"ServiceRoot", "v1_20_0", "", "The entry point for clients."};

// A tree of files has no sessions, but the schema requires the collection, so there is an empty one.
Json no_sessions() {
  return Json::object({{"@odata.type", "#SessionCollection.SessionCollection"},
                       {"@odata.id", kRoot + "#/Links/Sessions"},
                       {"Name", "Sessions"},
                       {"Members@odata.count", 0},
                       {"Members", Json::array()}});
}

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("Name", "", "", "Hardware inventory"),
    REDFISH_BY("RedfishVersion", "", "", "1.23.0"),
    REDFISH_BY("Product", "", "", "zeldb"),
    REDFISH_BY("Systems", "", "", link(kRoot + "/Systems")),
    REDFISH_BY("Chassis", "", "", link(kRoot + "/Chassis")),
    REDFISH_BY("Managers", "", "", link(kRoot + "/Managers")),
    REDFISH_BY("UpdateService", "", "", link(kRoot + "/UpdateService")),
    REDFISH_BY("Links.Sessions", "",
               "an empty collection in the place of a link: a tree of files has no sessions", no_sessions()),
};

void add(const Machine& machine, Tree& tree) {
  Row row;
  row.id = "RootService";
  row.uri = kRoot;
  tree.add(resource_of(kAbout, kProperties, row, machine));
}

}  // namespace

Chapter service_root() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
