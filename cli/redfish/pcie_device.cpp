// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/pcie.h"
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Device;

constexpr About kAbout = {
    "PCIeDevice", "v1_21_0", "Chassis/1/PCIeDevices/{PCIKey}",
    "The device in one slot, on the board or in a backplane bay: the PCI functions with "
    "this location and slot number, "
    "with the vital product data (`zeldb_get_pci_vpd_info`), the generic information "
    "(`zeldb_get_pci_generic_info`) and "
    "the firmware of the first one, and the health of the adapter "
    "(`zeldb_get_adapter_health_status`). What the product "
    "data of an NVMe drive lack comes from the list of drives. The id is stable while "
    "the card stays in its slot."};

const _ZELDB_PCI_Generic_Info& first(const Row& row) {
  return row.functions.front().record;
}

bool is_in_slot(const Row& row) {
  return row.slot.Location == kInSlot;
}

Json gpus_of(const Row& row) {
  Json all = Json::array();
  for (const Function& function : row.functions) {
    for (const std::string& uri : function.gpus) all.push_back(link(uri));
  }
  return all;
}

constexpr Property<Row> kProperties[] = {
    REDFISH_FROM("Name", slot.CardName, Text),
    REDFISH_FROM("Manufacturer", product.Manufacture, Text),
    REDFISH_FROM("Model", product.Model, Text),
    REDFISH_FROM("SerialNumber", slot.SerialNo, Text),
    REDFISH_FROM("PartNumber", product.PartNo, Text),
    REDFISH_FROM("SparePartNumber", product.FRUNo, Text),
    REDFISH_FROM("UUID", product.UUID, Uuid),
    REDFISH_BY("DeviceType", "", "one function: `SingleFunction`, more: `MultiFunction`",
               row.functions.size() == 1 ? "SingleFunction" : "MultiFunction"),
    REDFISH_BY("FirmwareVersion", "VersionString",
               "of the slot's component (`zeldb_get_pldm_firmware`), or else of the image "
               "(`zeldb_get_firmware_version`) or the drive",
               Text::of(machine, "FirmwareVersion", row.slot.FirmwareVersion)),
    REDFISH_BY("PCIeInterface.PCIeType", "PCIeType", Generation::kNote,
               Generation::of(machine, "", first(row).PCIeType)),
    REDFISH_BY("PCIeInterface.MaxPCIeType", "MaxPCIeType", Generation::kNote,
               Generation::of(machine, "", first(row).MaxPCIeType)),
    REDFISH_BY("PCIeInterface.LanesInUse", "LanesInUse", Lanes::kNote,
               Lanes::of(machine, "", first(row).LanesInUse)),
    REDFISH_BY("PCIeInterface.MaxLanes", "MaxLanes", Lanes::kNote,
               Lanes::of(machine, "", first(row).MaxLanes)),
    REDFISH_BY("Slot", "SlotNo, SlotDesignation, SlotType, SlotDataBusWidth, Hotplug",
               "as in PCIeSlots; left out if `Location` is not 1",
               is_in_slot(row) ? slot_of(machine, first(row)) : Json::left_out()),
    REDFISH_FROM("Status.Health", slot.HealthStatus, Health),
    REDFISH_BY("Status.State", "", "`Enabled`: what has no function is not there", "Enabled"),
    REDFISH_BY("PCIeFunctions", "", "its functions", link(row.uri + "/PCIeFunctions")),
    REDFISH_BY("Links.Chassis[]", "", "the chassis", links({kChassis})),
    REDFISH_BY("Links.Processors[]", "", "its GPU chips", gpus_of(row)),
};

void add(const Machine& machine, Tree& tree) {
  for (const Row& row : machine.devices) tree.add(resource_of(kAbout, kProperties, row, machine));
  tree.add_collection(kChassis + "/PCIeDevices", "PCIeDevice", "PCIe devices", uris_of(machine.devices));
}

}  // namespace

Chapter pcie_device() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
