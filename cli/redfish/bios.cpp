// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/attributes.h"
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Setting;

constexpr About kAbout = {
    "Bios", "v1_2_3", "Systems/1/Bios",
    "The settings of PCI functions that `ucm_parser` has stored. `Systems/1/Bios/Settings` is their "
    "settings resource: what is in force from the next start on. The registry says which values "
    "each takes. The row below is each of `Attributes`."};

const std::string kPlace = kSystem + "/Bios";

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("{AttributeName}", "CurrentValue; in the settings resource PendingValue",
               "a number of an `Integer`, otherwise a text; null if it is not known, and of a `Password`",
               attribute_value(machine, row.record, "CurrentValue", text_of(row.record.CurrentValue))),
};

Json resource_at(const Entry& entry, const char* name, const Json& attributes) {
  Json resource = bare_resource(kAbout, entry);
  resource["Name"] = name;
  resource["AttributeRegistry"] = kRegistry;
  resource["Attributes"] = attributes;
  return resource;
}

void add(const Machine& machine, Tree& tree) {
  Json current = Json::object();
  Json pending = Json::object();
  for (const Row& row : machine.settings) {
    current[row.name] = kProperties->value(row, machine);
    pending[row.name] =
        attribute_value(machine, row.record, "PendingValue", text_of(row.record.PendingValue));
  }
  Json bios = resource_at({"Bios", kPlace}, "BIOS settings", current);
  bios["@Redfish.Settings"] = Json::object({{"@odata.type", "#Settings.v1_4_0.Settings"},
                                            {"SettingsObject", link(kPlace + "/Settings")},
                                            {"SupportedApplyTimes", Json::array({"OnReset"})}});
  tree.add(bios);
  tree.add(resource_at({"Settings", kPlace + "/Settings"}, "BIOS settings after the next start", pending));
}

}  // namespace

Chapter bios() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
