// SPDX-License-Identifier: Apache-2.0
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/values.h"
#include "firmware/doubled.h"
#include "zeldb/db.h"
#include "zeldb/firmware.h"

using namespace zeldb;

namespace {

using R = _ZELDB_EmbeddedFirmware;

constexpr const char* kDevices = "EmbeddedDeviceFirmware";
constexpr FieldTable kFields{
    ZELDB_FIELD(R, DeviceName), ZELDB_FIELD(R, DeviceIndex), ZELDB_FIELD(R, StructRev),
    ZELDB_FIELD(R, Version),    ZELDB_FIELD(R, SoftwareID),  ZELDB_FIELD(R, Class),
    ZELDB_FIELD(R, Category),   ZELDB_FIELD(R, SubCategory), ZELDB_FIELD(R, Checksum)};

constexpr char kQuote = '\'';

Filter<256> device_filter(const R& device) {
  return Filter<256>("%s='%s' AND %s=%d", "SoftwareID", doubled(device.SoftwareID, kQuote).text(),
                     "DeviceIndex", device.DeviceIndex);
}

Filter<512> change_filter(const R& device, int64_t row) {
  return Filter<512>(
      "_id=%d AND ((%s!='%s') OR (%s!='%s') OR (%s!=%d) OR (%s!=%d) OR (%s!=%d) OR (%s!=%d) OR (%s!=%d) OR "
      "(%s!=%d) OR (%s!=%d))",
      static_cast<int>(row), "DeviceName", doubled(device.DeviceName, kQuote).text(), "SoftwareID",
      doubled(device.SoftwareID, kQuote).text(), "DeviceIndex", device.DeviceIndex, "StructRev",
      device.StructRev, "Version", device.Version, "Class", device.Class, "Category", device.Category,
      "SubCategory", device.SubCategory, "Checksum", device.Checksum);
}

}  // namespace

int zeldb_get_embedded_firmware_list(_ZELDB_EmbeddedFirmware_List* list) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  return read_list(handle, list, {.table = kDevices, .columns = kFields.columns}, kFields);
}

int zeldb_insert_or_update_embedded_firmware_info(const _ZELDB_EmbeddedFirmware* record) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (record == nullptr) return ZELDB_INVALID_ARGUMENT;
  ContentValues values(handle, "zeldb_insert_or_update_embedded_firmware_info");
  if (!values) return values.no_memory();
  R device = *record;
  terminate_texts(kFields.fields, &device);
  values.put(kFields.fields, &device, EmptyText::AsNull);
  const int64_t row = find_db_record(handle, kDevices, device_filter(device));
  if (row < 1) {  // A lookup that failed, too: better a second row than none.
    int64_t inserted = 0;
    return values.insert(kDevices, &inserted);
  }
  return values.update(kDevices, change_filter(device, row));
}

int zeldb_clear_all_embedded_firmware_info(void) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  return zel_db_delete(handle, kDevices, nullptr, nullptr, 0, nullptr);
}
