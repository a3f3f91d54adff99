// SPDX-License-Identifier: Apache-2.0
#include "cli/firmware_rows.h"

#include <algorithm>

#include "cli/components.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/slots.h"

namespace zeldb::cli {

namespace {

using Rows = std::vector<FirmwareRow>;

FirmwareRow& add(Rows& rows, const char* kind, const std::string& name, const std::string& version) {
  FirmwareRow& row = rows.emplace_back();
  copy_text(row.Kind, kind);
  copy_text(row.Component.DeviceName, name);
  copy_text(row.Component.VersionString, version);
  row.Component.Location = kNoLocation;
  row.Component.SlotNo = kNoSlot;
  return row;
}

bool is_at(const FirmwareRow& row, const SlotRow& slot) {
  const bool is_in_slot = row.Component.Location == slot.Location && row.Component.SlotNo == slot.SlotNo;
  return is_in_slot || (slot.Functions != 0 && row.Component.PCIFuncKey == slot.FunKey);
}

void add_drives(Rows& rows) {
  for (const aim_disk_info_t& drive : read_drives()) {
    if (*drive.FwVersion == '\0') continue;
    FirmwareRow& row = add(rows, "drive", drive.Model, drive.FwVersion);
    row.Component.Location = drive.LocationId;
    row.Component.SlotNo = drive.BayNo;
    row.Component.PCIFuncKey = drive.PCIFuncKey;
    copy_text(row.Component.Manufacture, drive.Manufacture);
  }
}

// Adds the images of adapters; a slot also tells the firmware of the components and drives in it.
void add_adapters(Rows& rows) {
  for (const SlotRow& slot : read_slots()) {
    const bool is_known = std::ranges::any_of(rows, [&](const auto& row) { return is_at(row, slot); });
    if (is_known || *slot.FirmwareVersion == '\0') continue;
    FirmwareRow& row = add(rows, "adapter", slot.CardName, slot.FirmwareVersion);
    row.Component.Location = slot.Location;
    row.Component.SlotNo = slot.SlotNo;
    row.Component.PCIKey = slot.PCIKey;
    row.Component.PCIFuncKey = slot.FunKey;
  }
}

void add_embedded(Rows& rows) {
  for (const _ZELDB_EmbeddedFirmware& device : list_of<_ZELDB_EmbeddedFirmware_List>(
           "embedded devices", [](auto* list) { return zeldb_get_embedded_firmware_list(list); })) {
    const std::string name = std::string(device.DeviceName) + ", index " + std::to_string(device.DeviceIndex);
    copy_text(add(rows, "embedded", name, std::to_string(device.Version)).SoftwareID, device.SoftwareID);
  }
}

void add_memory(Rows& rows) {
  for (const _ZELDB_Memory& module : read_memory()) {
    if (*module.FirmwareVersion == '\0') continue;
    FirmwareRow& row = add(rows, "memory", module.DevLocator, module.FirmwareVersion);
    copy_text(row.SoftwareID, module.SoftwareID);
    copy_text(row.Component.Manufacture, module.Manufacturer);
  }
}

}  // namespace

FirmwareRow firmware_of_component(const _ZELDB_PldmFirmware& component) {
  FirmwareRow row{.Kind = "component", .SoftwareID = {}, .Component = component};
  copy_text(row.SoftwareID, component.SoftwareID);
  return row;
}

std::vector<FirmwareRow> read_all_firmware() {
  Rows rows;
  require_inventory("firmware");
  prepare_products();
  for (const _ZELDB_PldmFirmware& component : read_components())
    rows.push_back(firmware_of_component(component));
  add_drives(rows);
  add_adapters(rows);
  add_embedded(rows);
  add_memory(rows);
  return rows;
}

}  // namespace zeldb::cli
