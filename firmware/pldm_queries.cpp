// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstring>
#include <map>
#include <new>
#include <span>
#include <string>

#include "db/field.h"
#include "db/filter.h"
#include "db/product.h"
#include "db/read.h"
#include "zeldb/db.h"
#include "zeldb/firmware.h"

using namespace zeldb;

namespace {

using R = _ZELDB_PldmFirmware;
using List = _ZELDB_PldmFirmware_List;

constexpr const char* kComponents = "PldmDeviceFirmware";
constexpr FieldTable kFields{ZELDB_FIELD(R, DeviceName),
                             ZELDB_FIELD(R, DeviceType),
                             ZELDB_FIELD(R, PCIKey),
                             ZELDB_FIELD(R, PCIFuncKey),
                             ZELDB_FIELD(R, Location),
                             ZELDB_FIELD(R, SlotNo),
                             ZELDB_FIELD(R, Manufacture),
                             ZELDB_FIELD(R, SoftwareID),
                             ZELDB_FIELD(R, VersionString),
                             ZELDB_FIELD(R, PendingVersionString),
                             ZELDB_FIELD(R, PkgVersionString),
                             ZELDB_FIELD(R, ReleaseDate),
                             ZELDB_FIELD(R, PendingReleaseDate),
                             ZELDB_FIELD(R, UpdateSupport),
                             ZELDB_FIELD(R, Updated),
                             ZELDB_FIELD(R, UpdateMethod),
                             ZELDB_FIELD(R, UpdateAuxInfo),
                             ZELDB_FIELD(R, UpdateErrCode),
                             ZELDB_FIELD(R, UpdateErrString),
                             ZELDB_FIELD(R, Status)};

constexpr int kPendingActivation = 2;
constexpr int kMarvell = 0x1B4B;
constexpr int kMarvellControllers[] = {0x9230, 0x2241};

// What the property store keeps of a slot's GPU.
constexpr const char* kGpuSlots = "/ac/ovrc/dm/planar/0/gpu_pci_slot";
constexpr struct {
  Field field;
  const char* item;
} kCompleted[] = {{ZELDB_FIELD(R, DeviceName), "model"},
                  {ZELDB_FIELD(R, Manufacture), "mfgr"},
                  {ZELDB_FIELD(R, VersionString), "fw_version"}};

bool is_missing(const char* text) {
  return text[0] == '\0' || std::strcmp(text, "N/A") == 0;
}

// Any component is completed: its device type does not tell whether it belongs to a GPU.
void complete_from_store(R& component) {
  std::map<std::string, std::string> changes;
  for (const auto& [field, item] : kCompleted) {
    char* const text = reinterpret_cast<char*>(bytes_of(field, &component));
    if (!is_missing(text)) continue;
    char stored[ZELDB_GPU_PROPERTY_SIZE];
    if (get_gpu_pci_vpd_info(kGpuSlots, item, component.SlotNo, stored) != ZELDB_OK) continue;
    std::snprintf(text, field.size, "%s", stored);
    changes[field.column] = text;
  }
  if (!changes.empty()) update_pci_table(kComponents, changes, component.SlotNo);
}

int read_components(List* list, const char* filter) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  return read_list(handle, list, {.table = kComponents, .columns = kFields.columns, .where = filter},
                   [](const Row& row, R& component) {
                     row.fill(kFields.fields, &component);
                     try {
                       complete_from_store(component);
                     } catch (const std::bad_alloc&) {
                       // As a lookup that fails.
                     }
                     return Next::Keep;
                   });
}

Filter<512> place_filter(int location, int slot, int bus, int device) {
  if (bus < 0 || device < 0) return Filter<512>("%s=%d AND %s=%d", "Location", location, "SlotNo", slot);
  return Filter<512>("%s=%d AND %s=%d AND %s IN (select %s from %s where %s=%d and %s=%d)", "Location",
                     location, "SlotNo", slot, "PCIFuncKey", "FunKey", "PCIs", "BusNo", bus, "DeviceNo",
                     device);
}

const R* only_or_updatable(std::span<const R> components) {
  if (components.size() == 1) return &components[0];
  if (components.size() != 2) return nullptr;
  for (const R& component : components) {
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
  return read_components(list, Filter<64>("%s=%d", "Status", kPendingActivation));
}

int zeldb_get_pldm_firmware_updated_list(_ZELDB_PldmFirmware_List* list) {
  return read_components(list, Filter<64>("%s!=%d", "Updated", 0));
}

int zeldb_get_pldm_firmware_update_failure_list(_ZELDB_PldmFirmware_List* list) {
  return read_components(list, Filter<64>("%s!=%d AND %s!=%d", "Updated", 0, "UpdateErrCode", 0));
}

int zeldb_get_pldm_firmware_update_success_list(_ZELDB_PldmFirmware_List* list) {
  return read_components(list, Filter<64>("%s!=%d AND %s=%d", "Updated", 0, "UpdateErrCode", 0));
}

int zeldb_get_pldm_firmware_marvell_ctrl_list(_ZELDB_PldmFirmware_List* list) {
  const Filter<128> filter("%s=%d AND %s=%d AND (%s=%d OR %s=%d)", "VendorId", kMarvell, "SubVendorId",
                           kMakerSubVendorId, "DeviceId", kMarvellControllers[0], "DeviceId",
                           kMarvellControllers[1]);
  return read_components(list, filter);
}

int zeldb_get_pldm_firmware(int location, int slot, _ZELDB_PldmFirmware* record, int bus, int device) {
  if (record == nullptr) return ZELDB_INVALID_ARGUMENT;
  LocalList<List> components;
  const int status = read_components(components.out(), place_filter(location, slot, bus, device));
  if (status != ZELDB_OK) return status;
  const R* const chosen = only_or_updatable(components.items());
  if (chosen == nullptr) return ZELDB_NO_MATCH;
  *record = *chosen;
  return ZELDB_OK;
}
