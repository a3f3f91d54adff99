// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Module;

constexpr About kAbout = {
    "MemoryMetrics", "v1_8_0", "Systems/1/Memory/{Id}/MemoryMetrics",
    "The report of a persistent module, from the same record. If `InfoMask` is 0, nothing is "
    "known."};

Json known(const Row& row, Json value) {
  return row.record.InfoMask != 0 ? std::move(value) : Json();
}

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("Name", "DevLocator", "name of the module",
               Text::of(machine, "DevLocator", row.record.DevLocator)),
    REDFISH_BY("HealthData.PredictedMediaLifeLeftPercent", "RemainingLife", "more than 100: null",
               known(row, Percent::of(machine, "", row.record.RemainingLife))),
    REDFISH_BY("DirtyShutdownCount", "LDShutdownCount", "", known(row, row.record.LDShutdownCount)),
};

void add(const Machine& machine, Tree& tree) {
  for (const Row& module : machine.memory) {
    if (!module.is_persistent) continue;
    Row row = module;
    row.id = "MemoryMetrics";
    row.uri += "/MemoryMetrics";
    tree.add(resource_of(kAbout, kProperties, row, machine));
  }
}

}  // namespace

Chapter memory_metrics() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
