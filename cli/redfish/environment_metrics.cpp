// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Drive;

constexpr About kAbout = {"EnvironmentMetrics", "v1_5_0", "Chassis/1/Drives/{Id}/EnvironmentMetrics",
                          "Measurements of a drive, from the same record."};

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("Name", "Location", "name of the drive", Text::of(machine, "Location", row.record.Location)),
    REDFISH_BY("TemperatureCelsius.Reading", "Temperature", "degrees Celsius; null if `InfoMask` is 0",
               row.record.InfoMask != 0 ? Json(row.record.Temperature) : Json()),
};

void add(const Machine& machine, Tree& tree) {
  for (const Row& drive : machine.drives) {
    Row row = drive;
    row.id = "EnvironmentMetrics";
    row.uri += "/EnvironmentMetrics";
    tree.add(resource_of(kAbout, kProperties, row, machine));
  }
}

}  // namespace

Chapter environment_metrics() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
