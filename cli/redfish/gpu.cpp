// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Gpu;

constexpr About kAbout = {"Processor", "v1_22_0", "Systems/1/Processors/GPU-{Function}-{Index}",
                          "One chip of a graphics card or accelerator: `_ZELDB_GPU_Chip` of "
                          "`zeldb_get_gpu_chip_list`."};

constexpr Property<Row> kProperties[] = {
    REDFISH_FROM("Name", record.GPUChipName, Text),
    REDFISH_BY("ProcessorType", "", "`GPU`", "GPU"),
    REDFISH_FROM("Manufacturer", record.GPUChipManufacturer, Text),
    REDFISH_FROM("Model", record.GPUChipModel, Text),
    REDFISH_FROM("Family", record.GPUChipFamily, Text),
    REDFISH_FROM("SerialNumber", record.GPUChipSerialNumber, Text),
    REDFISH_FROM("PartNumber", record.GPUChipPartNumber, Text),
    REDFISH_FROM("TotalEnabledCores", record.GPUChipNumberOfEnabledCores, Count),
    REDFISH_FROM("MaxSpeedMHz", record.GPUChipMaxClockSpeed, Count),
    REDFISH_BY("Links.Chassis", "", "the chassis", link(kChassis)),
    REDFISH_BY("Links.PCIeDevice", "PCIs.Location, PCIs.SlotNo", "the card", link(row.device)),
    REDFISH_BY("Links.PCIeFunctions[]", "PCIFuncKey", "its function", links({row.function})),
};

void add(const Machine& machine, Tree& tree) {
  for (const Row& row : machine.gpus) tree.add(resource_of(kAbout, kProperties, row, machine));
}

}  // namespace

Chapter gpu() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
