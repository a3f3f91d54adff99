// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstring>
#include <map>
#include <new>
#include <span>
#include <string>

#include "db/codes.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "zeldb/db.h"
#include "zeldb/firmware.h"

using namespace zeldb;

namespace {

using Component = _ZELDB_PldmFirmware;
using List = _ZELDB_PldmFirmware_List;

constexpr auto kFields = field_table(
    ZELDB_FIELD(Component, DeviceName), ZELDB_FIELD(Component, DeviceType), ZELDB_FIELD(Component, PCIKey),
    ZELDB_FIELD(Component, PCIFuncKey), ZELDB_FIELD(Component, Location), ZELDB_FIELD(Component, SlotNo),
    ZELDB_FIELD(Component, Manufacture), ZELDB_FIELD(Component, SoftwareID),
    ZELDB_FIELD(Component, VersionString), ZELDB_FIELD(Component, PendingVersionString),
    ZELDB_FIELD(Component, PkgVersionString), ZELDB_FIELD(Component, ReleaseDate),
    ZELDB_FIELD(Component, PendingReleaseDate), ZELDB_FIELD(Component, UpdateSupport),
    ZELDB_FIELD(Component, Updated), ZELDB_FIELD(Component, UpdateMethod),
    ZELDB_FIELD(Component, UpdateAuxInfo), ZELDB_FIELD(Component, UpdateErrCode),
    ZELDB_FIELD(Component, UpdateErrString), ZELDB_FIELD(Component, Status));

constexpr int kPendingActivation = 2;

// The data of a slot's GPU in the property store.
constexpr struct {
  Field field;
  const char* item;
} kCompleted[] = {{ZELDB_FIELD(Component, DeviceName), "model"},
                  {ZELDB_FIELD(Component, Manufacture), "mfgr"},
                  {ZELDB_FIELD(Component, VersionString), "fw_version"}};

// Any component is completed: its device type does not tell whether it belongs to a GPU.
void complete_from_store(Component& component) {
  std::map<std::string, std::string> changes;
  for (const auto& [field, item] : kCompleted) {
    char* const text = reinterpret_cast<char*>(bytes_of(field, &component));
    if (!is_missing(text)) continue;
    char stored[ZELDB_GPU_PROPERTY_SIZE];
    if (get_gpu_pci_vpd_info(kGpuSlots, item, component.SlotNo, stored) != ZELDB_OK) continue;
    std::snprintf(text, field.size, "%s", stored);
    changes[field.column] = text;
  }
  if (!changes.empty()) update_pci_table(tables::kComponents, changes, component.SlotNo);
}

int read_components(List* list, const char* filter) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  return read_list(handle, list, {.table = tables::kComponents, .columns = kFields.columns, .where = filter},
                   [](const Row& row, Component& component) {
                     row.fill(kFields.fields, &component);
                     try {
                       complete_from_store(component);
                     } catch (const std::bad_alloc&) {
                       // The record stays as it was read.
                     }
                     return Next::Keep;
                   });
}

Filter<512> place_filter(int location, int slot, int bus, int device) {
  if (bus < 0 || device < 0) return Filter<512>("Location=%d AND SlotNo=%d", location, slot);
  return Filter<512>(
      "Location=%d AND SlotNo=%d AND PCIFuncKey IN (select FunKey from PCIs where BusNo=%d and DeviceNo=%d)",
      location, slot, bus, device);
}

const Component* only_or_updatable(std::span<const Component> components) {
  if (components.size() == 1) return &components[0];
  if (components.size() != 2) return nullptr;
  for (const Component& component : components) {
    if (component.UpdateSupport != 0) return &component;
  }
  return &components[0];
}

}  // namespace

int zeldb_get_pldm_firmware_list(_ZELDB_PldmFirmware_List* list) {
  return read_components(list, nullptr);
}

int zeldb_get_filtered_pldm_firmware_list(_ZELDB_PldmFirmware_List* list, const char* filter) {
  return read_components(list, filter);
}

int zeldb_get_pldm_firmware_pending_list(_ZELDB_PldmFirmware_List* list) {
  return read_components(list, Filter<64>("Status=%d", kPendingActivation));
}

int zeldb_get_pldm_firmware_updated_list(_ZELDB_PldmFirmware_List* list) {
  return read_components(list, Filter<64>("Updated!=%d", 0));
}

int zeldb_get_pldm_firmware_update_failure_list(_ZELDB_PldmFirmware_List* list) {
  return read_components(list, Filter<64>("Updated!=%d AND UpdateErrCode!=%d", 0, 0));
}

int zeldb_get_pldm_firmware_update_success_list(_ZELDB_PldmFirmware_List* list) {
  return read_components(list, Filter<64>("Updated!=%d AND UpdateErrCode=%d", 0, 0));
}

int zeldb_get_pldm_firmware_marvell_ctrl_list(_ZELDB_PldmFirmware_List* list) {
  return read_components(list, own_controllers());
}

int zeldb_get_pldm_firmware(int location, int slot, _ZELDB_PldmFirmware* record, int bus, int device) {
  if (record == nullptr) return ZELDB_INVALID_ARGUMENT;
  LocalList<List> components;
  const int status = read_components(components.out(), place_filter(location, slot, bus, device));
  if (status != ZELDB_OK) return status;
  const Component* const chosen = only_or_updatable(components.items());
  if (chosen == nullptr) return ZELDB_NO_MATCH;
  *record = *chosen;
  return ZELDB_OK;
}
