// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/pcie.h"
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Controller;

constexpr About kAbout = {"StorageController", "v1_11_0", "Systems/1/Storage/{PCIKey}/Controllers/{FunKey}",
                          "A function of base class 1. Identity and status are those of its PCIeDevice."};

constexpr Property<Row> kProperties[] = {
    REDFISH_FROM("Name", device->slot.CardName, Text),
    REDFISH_FROM("Manufacturer", device->product.Manufacture, Text),
    REDFISH_FROM("Model", device->product.Model, Text),
    REDFISH_FROM("SerialNumber", device->slot.SerialNo, Text),
    REDFISH_FROM("PartNumber", device->product.PartNo, Text),
    REDFISH_BY("FirmwareVersion", "VersionString", "as of the PCIeDevice",
               Text::of(machine, "FirmwareVersion", row.device->slot.FirmwareVersion)),
    REDFISH_BY("PCIeInterface", "PCIeType, MaxPCIeType, LanesInUse, MaxLanes", "as of the PCIeDevice",
               interface_of(machine, row.function->record)),
    REDFISH_FROM("Status.Health", device->slot.HealthStatus, Health),
    REDFISH_BY("Status.State", "", "`Enabled`", "Enabled"),
    REDFISH_BY("Links.PCIeFunctions[]", "FunKey", "its function", links({row.function->uri})),
};

void add(const Machine& machine, Tree& tree) {
  for (const Storage& storage : machine.storages) {
    for (const Row& row : storage.controllers) tree.add(resource_of(kAbout, kProperties, row, machine));
    tree.add_collection(storage.uri + "/Controllers", "StorageController", "Storage controllers",
                        uris_of(storage.controllers));
  }
}

}  // namespace

Chapter storage_controller() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
