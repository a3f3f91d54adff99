// SPDX-License-Identifier: Apache-2.0
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/syslog_info.h"
#include "db/values.h"
#include "platform/vrel_log.h"
#include "zeldb/db.h"
#include "zeldb/firmware.h"

using namespace zeldb;
using vrel_log::logErr;

namespace {

using R = _ZELDB_PldmFirmware;

constexpr const char* kComponents = "PldmDeviceFirmware";
constexpr int kPendingActivation = 2;

constexpr FieldTable kOutcome{
    ZELDB_FIELD(R, VersionString), ZELDB_FIELD(R, PendingVersionString), ZELDB_FIELD(R, PkgVersionString),
    ZELDB_FIELD(R, ReleaseDate),   ZELDB_FIELD(R, PendingReleaseDate),   ZELDB_FIELD(R, UpdateErrString),
    ZELDB_FIELD(R, UpdateSupport), ZELDB_FIELD(R, UpdateMethod),         ZELDB_FIELD(R, UpdateAuxInfo),
    ZELDB_FIELD(R, Updated),       ZELDB_FIELD(R, UpdateErrCode),        ZELDB_FIELD(R, Status)};

// What is known of a component when it is discovered, around the ids of its device.
constexpr FieldTable kIdentity{ZELDB_FIELD(R, DeviceName), ZELDB_FIELD(R, DeviceType), ZELDB_FIELD(R, PCIKey),
                               ZELDB_FIELD(R, PCIFuncKey)};
constexpr FieldTable kState{ZELDB_FIELD(R, Location),      ZELDB_FIELD(R, SlotNo),
                            ZELDB_FIELD(R, Manufacture),   ZELDB_FIELD(R, SoftwareID),
                            ZELDB_FIELD(R, VersionString), ZELDB_FIELD(R, ReleaseDate),
                            ZELDB_FIELD(R, UpdateSupport)};

using SoftwareId = Filter<sizeof(R::SoftwareID)>;

SoftwareId software_id(const R& component) {
  return SoftwareId("%.*s", SoftwareId::capacity() - 1, component.SoftwareID);
}

// The function key is printed signed, as the rest of the controller does.
Filter<128> component_filter(const R& component, int location, int slot, bool of_function) {
  const SoftwareId id = software_id(component);
  const char* const id_text = id;
  if (!of_function) {
    return Filter<128>("%s=%d AND %s=%d AND %s=\"%s\"", "Location", location, "SlotNo", slot, "SoftwareID",
                       id_text);
  }
  return Filter<128>("%s=%d AND %s=%d AND %s=\"%s\" AND %s=%d", "Location", location, "SlotNo", slot,
                     "SoftwareID", id_text, "PCIFuncKey", static_cast<int>(component.PCIFuncKey));
}

void log_failed_update(const R& component, const char* filter, int status) {
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

// The key with which a stored row of the same software is left alone. For a component that has a key of its
// own it is 0, which hardly a row has: such a component is written again.
uint32_t complete_key(R& component) {
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
  const Filter<128> filter = component_filter(*record, location, slot, matchFunction != 0);
  const int status = values.update(kComponents, filter);
  if (status != ZELDB_OK) log_failed_update(*record, filter, status);
  return status;
}

int zeldb_clear_all_pldm_firmware_pending_status(void) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  ContentValues values(handle, "zeldb_clear_all_pldm_firmware_pending_status");
  if (!values) return values.no_memory();
  values.put_int("Status", 0);
  const Filter<64> filter("%s=%d", "Status", kPendingActivation);
  const int status = values.update(kComponents, filter);
  if (status != ZELDB_OK) {
    logErr("clear all pending pldm firmware failed, filter: %s, ret: %d\n", static_cast<const char*>(filter),
           status);
  }
  return status;
}

int zeldb_clear_pldm_firmware_by_type(int deviceType) {
  return delete_db_record(inventory(), kComponents, Filter<32>("%s=%d", "DeviceType", deviceType), nullptr,
                          0);
}

int zeldb_insert_or_update_pldm_firmware(uint32_t vendorId, uint32_t deviceId, uint32_t subVendorId,
                                         uint32_t subDeviceId, _ZELDB_PldmFirmware* record) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (record == nullptr) return ZELDB_INVALID_ARGUMENT;
  ContentValues values(handle, "zeldb_insert_or_update_pldm_firmware");
  if (!values) return values.no_memory();
  const uint32_t compared_key = complete_key(*record);
  R component = *record;
  terminate_texts(kIdentity.fields, &component);
  terminate_texts(kState.fields, &component);
  values.clear();
  values.put(kIdentity.fields, &component, EmptyText::LeftOut);
  put_device(values, vendorId, deviceId, subVendorId, subDeviceId);
  values.put(kState.fields, &component, EmptyText::LeftOut);
  if (!values.is_complete()) return values.no_memory();

  const Filter<64> selector("%s=%u AND %s=%d AND %s=%d", "DeviceType", component.DeviceType, "SlotNo",
                            component.SlotNo, "Location", component.Location);
  // Without quotes the database takes the id for a number or a column: deliberate.
  const Filter<64> changed("%s!=%u OR %s!=%s", "PCIKey", compared_key, "SoftwareID", component.SoftwareID);
  if (insert_or_update_db_record(handle, kComponents, selector, values.get(), changed) <= 0) {
    syslog_info("%s: Failed to insert/update PLDM FW info, where:%s, filter:%s\n\n", __func__,
                static_cast<const char*>(selector), static_cast<const char*>(changed));
  }
  return ZELDB_OK;
}
