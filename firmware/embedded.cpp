// SPDX-License-Identifier: Apache-2.0
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "db/values.h"
#include "firmware/doubled.h"
#include "zeldb/db.h"
#include "zeldb/firmware.h"

using namespace zeldb;

namespace {

using Device = _ZELDB_EmbeddedFirmware;

constexpr auto kFields = field_table(
    ZELDB_FIELD(Device, DeviceName), ZELDB_FIELD(Device, DeviceIndex), ZELDB_FIELD(Device, StructRev),
    ZELDB_FIELD(Device, Version), ZELDB_FIELD(Device, SoftwareID), ZELDB_FIELD(Device, Class),
    ZELDB_FIELD(Device, Category), ZELDB_FIELD(Device, SubCategory), ZELDB_FIELD(Device, Checksum));

constexpr char kQuote = '\'';

Filter<256> device_filter(const Device& device) {
  return Filter<256>("SoftwareID='%s' AND DeviceIndex=%d", doubled(device.SoftwareID, kQuote).text(),
                     device.DeviceIndex);
}

Filter<512> change_filter(const Device& device, int64_t row) {
  return Filter<512>(
      "_id=%d AND ((DeviceName!='%s') OR (SoftwareID!='%s') OR (DeviceIndex!=%d) OR (StructRev!=%d) OR "
      "(Version!=%d) OR (Class!=%d) OR (Category!=%d) OR (SubCategory!=%d) OR (Checksum!=%d))",
      static_cast<int>(row), doubled(device.DeviceName, kQuote).text(),
      doubled(device.SoftwareID, kQuote).text(), device.DeviceIndex, device.StructRev, device.Version,
      device.Class, device.Category, device.SubCategory, device.Checksum);
}

}  // namespace

int zeldb_get_embedded_firmware_list(_ZELDB_EmbeddedFirmware_List* list) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  return read_list(handle, list, {.table = tables::kEmbeddedDevices, .columns = kFields.columns}, kFields);
}

int zeldb_insert_or_update_embedded_firmware_info(const _ZELDB_EmbeddedFirmware* record) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (record == nullptr) return ZELDB_INVALID_ARGUMENT;
  ContentValues values(handle, "zeldb_insert_or_update_embedded_firmware_info");
  if (!values) return values.no_memory();
  Device device = *record;
  terminate_texts(kFields.fields, &device);
  values.put(kFields.fields, &device, EmptyText::AsNull);
  const int64_t row = find_db_record(handle, tables::kEmbeddedDevices, device_filter(device));
  if (row < 1) {  // also after a failed lookup: a second row is better than none
    int64_t inserted = 0;
    return values.insert(tables::kEmbeddedDevices, &inserted);
  }
  return values.update(tables::kEmbeddedDevices, change_filter(device, row));
}

int zeldb_clear_all_embedded_firmware_info(void) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  return zel_db_delete(handle, tables::kEmbeddedDevices, nullptr, nullptr, 0, nullptr);
}
