// SPDX-License-Identifier: Apache-2.0
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/syslog_info.h"
#include "db/tables.h"
#include "db/values.h"
#include "platform/vrel_log.h"
#include "zeldb/db.h"
#include "zeldb/firmware.h"

using namespace zeldb;
using vrel_log::logErr;

namespace {

using Component = _ZELDB_PldmFirmware;

constexpr const char* kDiscovery = "zeldb_insert_or_update_pldm_firmware";
constexpr int kPendingActivation = 2;

constexpr auto kOutcome =
    field_table(ZELDB_FIELD(Component, VersionString), ZELDB_FIELD(Component, PendingVersionString),
                ZELDB_FIELD(Component, PkgVersionString), ZELDB_FIELD(Component, ReleaseDate),
                ZELDB_FIELD(Component, PendingReleaseDate), ZELDB_FIELD(Component, UpdateErrString),
                ZELDB_FIELD(Component, UpdateSupport), ZELDB_FIELD(Component, UpdateMethod),
                ZELDB_FIELD(Component, UpdateAuxInfo), ZELDB_FIELD(Component, Updated),
                ZELDB_FIELD(Component, UpdateErrCode), ZELDB_FIELD(Component, Status));

// The columns that are written when a component is discovered, before and after the ids of its device.
constexpr auto kIdentity = field_table(ZELDB_FIELD(Component, DeviceName), ZELDB_FIELD(Component, DeviceType),
                                       ZELDB_FIELD(Component, PCIKey), ZELDB_FIELD(Component, PCIFuncKey));
constexpr auto kState = field_table(
    ZELDB_FIELD(Component, Location), ZELDB_FIELD(Component, SlotNo), ZELDB_FIELD(Component, Manufacture),
    ZELDB_FIELD(Component, SoftwareID), ZELDB_FIELD(Component, VersionString),
    ZELDB_FIELD(Component, ReleaseDate), ZELDB_FIELD(Component, UpdateSupport));

using SoftwareId = Filter<sizeof(Component::SoftwareID)>;

SoftwareId software_id(const Component& component) {
  return SoftwareId("%.*s", SoftwareId::capacity() - 1, component.SoftwareID);
}

// The function key is printed as a signed number, so keys from 0x80000000 on match no row.
enum class Match { Slot, Function };

Filter<128> component_filter(const Component& component, int location, int slot, Match match) {
  const SoftwareId id = software_id(component);
  const char* const id_text = id;
  if (match == Match::Slot) {
    return Filter<128>("Location=%d AND SlotNo=%d AND SoftwareID=\"%s\"", location, slot, id_text);
  }
  return Filter<128>("Location=%d AND SlotNo=%d AND SoftwareID=\"%s\" AND PCIFuncKey=%d", location, slot,
                     id_text, static_cast<int>(component.PCIFuncKey));
}

void log_failed_update(const Component& component, const char* filter, int status) {
  logErr(
      "zeldb_update_pldm_firmware failed, filter: %s, value: %s(0x%s) %s(0x%s) %s(0x%s) %s(0x%s) %s(0x%s) "
      "%s(0x%s) %s(0x%x) %s(0x%x) %s(0x%x) %s(0x%x) %s(0x%x) %s(0x%x), ret: %d\n",
      filter, "VersionString", component.VersionString, "PendingVersionString",
      component.PendingVersionString, "PkgVersionString", component.PkgVersionString, "ReleaseDate",
      component.ReleaseDate, "PendingReleaseDate", component.PendingReleaseDate, "UpdateErrString",
      component.UpdateErrString, "UpdateSupport", component.UpdateSupport, "UpdateMethod",
      component.UpdateMethod, "UpdateAuxInfo", component.UpdateAuxInfo, "Updated", component.Updated,
      "UpdateErrCode", component.UpdateErrCode, "Status", component.Status, status);
}

void put_device(ContentValues& values, uint32_t vendor, uint32_t device, uint32_t sub_vendor,
                uint32_t sub_device) {
  values.put_uint("VendorId", vendor);
  values.put_uint("SubVendorId", sub_vendor);
  values.put_uint("DeviceId", device);
  values.put_uint("SubDeviceId", sub_device);
}

// Returns the PCI key with which a stored row of the same software is left alone. For a component with a key
// of its own that is 0, which few rows have, so such a component is nearly always written again.
uint32_t complete_key(Component& component) {
  if (component.PCIKey != 0) return 0;
  component.PCIKey = (uint32_t{component.Location} << 16) | component.SlotNo;
  return component.PCIKey;
}

}  // namespace

int zeldb_update_pldm_firmware(int location, int slot, _ZELDB_PldmFirmware* record, int matchFunction) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (record == nullptr || record->Location != location || record->SlotNo != slot)
    return ZELDB_INVALID_ARGUMENT;
  ContentValues values(handle, "zeldb_update_pldm_firmware");
  if (!values) return values.no_memory();
  terminate_texts(kOutcome.fields, record);
  values.clear();
  values.put(kOutcome.fields, record, EmptyText::AsText);
  const Filter<128> filter =
      component_filter(*record, location, slot, matchFunction != 0 ? Match::Function : Match::Slot);
  const int status = values.update(tables::kComponents, filter);
  if (status != ZELDB_OK) log_failed_update(*record, filter, status);
  return status;
}

int zeldb_clear_all_pldm_firmware_pending_status(void) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  ContentValues values(handle, "zeldb_clear_all_pldm_firmware_pending_status");
  if (!values) return values.no_memory();
  values.put_int("Status", 0);
  const Filter<64> filter("Status=%d", kPendingActivation);
  const int status = values.update(tables::kComponents, filter);
  if (status != ZELDB_OK) {
    logErr("clear all pending pldm firmware failed, filter: %s, ret: %d\n", static_cast<const char*>(filter),
           status);
  }
  return status;
}

int zeldb_clear_pldm_firmware_by_type(int deviceType) {
  return delete_db_record(inventory(), tables::kComponents, Filter<32>("DeviceType=%d", deviceType), nullptr,
                          0);
}

int zeldb_insert_or_update_pldm_firmware(uint32_t vendorId, uint32_t deviceId, uint32_t subVendorId,
                                         uint32_t subDeviceId, _ZELDB_PldmFirmware* record) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (record == nullptr) return ZELDB_INVALID_ARGUMENT;
  ContentValues values(handle, kDiscovery);
  if (!values) return values.no_memory();
  const uint32_t compared_key = complete_key(*record);
  Component component = *record;
  terminate_texts(kIdentity.fields, &component);
  terminate_texts(kState.fields, &component);
  values.clear();
  values.put(kIdentity.fields, &component, EmptyText::LeftOut);
  put_device(values, vendorId, deviceId, subVendorId, subDeviceId);
  values.put(kState.fields, &component, EmptyText::LeftOut);
  if (!values.is_complete()) return values.no_memory();

  const Filter<64> selector("DeviceType=%u AND SlotNo=%d AND Location=%d", component.DeviceType,
                            component.SlotNo, component.Location);
  // The id has no quotes, deliberately: the database takes it for a number or a column.
  const Filter<64> changed("PCIKey!=%u OR SoftwareID!=%s", compared_key, component.SoftwareID);
  if (insert_or_update_db_record(handle, tables::kComponents, selector, values.get(), changed) <= 0) {
    syslog_info("%s: Failed to insert/update PLDM FW info, where:%s, filter:%s\n\n", kDiscovery,
                static_cast<const char*>(selector), static_cast<const char*>(changed));
  }
  return ZELDB_OK;
}
