// SPDX-License-Identifier: Apache-2.0
//
// The writes of the services that watch drives.
#include <cstring>

#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "db/values.h"
#include "storage/place.h"
#include "zeldb/db.h"
#include "zeldb/storage.h"

using namespace zeldb;

namespace {

using Disk = aim_disk_info_t;

constexpr uint16_t kPresent = 1;
constexpr int kToleratedDegrees = 2;

constexpr auto kPlace =
    field_table(ZELDB_FIELD(Disk, PCIFuncKey), ZELDB_FIELD(Disk, SlotNo), ZELDB_FIELD(Disk, CtrlType),
                ZELDB_FIELD(Disk, BayNo), ZELDB_FIELD(Disk, LocationId));
constexpr auto kTexts =
    field_table(ZELDB_FIELD(Disk, Location), ZELDB_FIELD(Disk, FruNo), ZELDB_FIELD(Disk, PartNo),
                ZELDB_FIELD(Disk, SerialNo), ZELDB_FIELD(Disk, Model), ZELDB_FIELD(Disk, UUID),
                ZELDB_FIELD(Disk, Manufacture), ZELDB_FIELD(Disk, FwVersion), ZELDB_FIELD(Disk, Capacity));

Filter<128> in_place(const char* kind_column, uint32_t kind, const char* number_column, uint32_t number) {
  return Filter<128>("%s=%d AND %s=%d", kind_column, static_cast<int>(kind), number_column,
                     static_cast<int>(number));
}

using PlaceText = Filter<24>;

void put_smart(ContentValues& values, const Disk& disk) {
  values.put_uint8("SFlags", disk.SFlags);
  values.put_uint8("Warning", disk.Warning);
  values.put_uint8("Temperature", disk.Temperature);
  values.put_uint8("RemainLife", disk.RemainLife);
  values.put_uint16("InfoMask", disk.InfoMask);
}

// Columns of text: their readers convert them.
void put_number_text(ContentValues& values, const char* column, int number) {
  values.put_text(column, Filter<16>("%d", number));
}

}  // namespace

int zeldb_update_nvme_disk_firmware_version(uint32_t location, uint32_t slot, const char* version) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (version == nullptr) return ZELDB_INVALID_ARGUMENT;
  ContentValues values(handle, "zeldb_update_nvme_disk_firmware_version");
  if (!values) return values.no_memory();
  values.put_text("FwVer", version);
  return values.update(tables::kNvmeDrives, in_place("Location", location, "SlotNo", slot));
}

int zeldb_update_aim_disk_presence(uint32_t locationId, uint32_t bayNo, uint16_t presence) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  ContentValues values(handle, "zeldb_update_aim_disk_presence");
  if (!values) return values.no_memory();
  values.clear();
  values.put_uint16("Presence", presence);
  const Filter<128> filter("LocationId=%d AND BayNo=%d AND Presence!=%d", static_cast<int>(locationId),
                           static_cast<int>(bayNo), presence);
  return values.update(tables::kDisks, filter);
}

int zeldb_update_aim_disk_vpd_info(uint32_t locationId, uint32_t bayNo, const char* model,
                                   const char* serialNo, const char* partNo, const char* fruNo,
                                   const char* manufacture, const char* fwVersion) {
  const struct {
    const char* column;
    const char* text;
  } identity[] = {{"Model", model}, {"SerialNo", serialNo},       {"PartNo", partNo},
                  {"FruNo", fruNo}, {"Manufacture", manufacture}, {"FwVersion", fwVersion}};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  for (const auto& item : identity) {
    if (item.text == nullptr) return ZELDB_INVALID_ARGUMENT;
  }
  ContentValues values(handle, "zeldb_update_aim_disk_vpd_info");
  if (!values) return values.no_memory();
  for (const auto& item : identity) values.put_text(item.column, item.text);
  return values.update(tables::kDisks, in_place("LocationId", locationId, "BayNo", bayNo));
}

int zeldb_update_aim_disk_smart_info(const aim_disk_info_t* disk) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (disk == nullptr) return ZELDB_INVALID_ARGUMENT;
  PlaceText place("%.16s", disk->Location);
  if (*place.text() == '\0') {
    const char* const name = place_name(disk->LocationId);
    if (name == nullptr) return ZELDB_INVALID_ARGUMENT;
    place = PlaceText("%s%d", name, disk->BayNo);
  }
  ContentValues values(handle, "zeldb_update_aim_disk_smart_info");
  if (!values) return values.no_memory();
  put_smart(values, *disk);
  const Filter<256> filter(
      "Location=\"%s\" AND (SFlags!=%d OR Warning!=%d OR RemainLife!=%d OR InfoMask!=%d OR "
      "((Temperature+%d)<%d) OR ((Temperature-%d)>%d))",
      place.text(), disk->SFlags, disk->Warning, disk->RemainLife, disk->InfoMask, kToleratedDegrees,
      disk->Temperature, kToleratedDegrees, disk->Temperature);
  return values.update(tables::kDisks, filter);
}

int zeldb_update_aim_disk_ctrl_type(uint32_t locationId, uint32_t number, uint8_t ctrlType) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  const char* const name = place_name(locationId);
  if (name == nullptr) return ZELDB_INVALID_ARGUMENT;
  ContentValues values(handle, "zeldb_update_aim_disk_ctrl_type");
  if (!values) return values.no_memory();
  values.put_uint8("CtrlType", ctrlType);
  PlaceText place("%s%d", name, static_cast<int>(number));
  const Filter<72> filter("Location=\"%s\" AND CtrlType!=%d", place.text(), ctrlType);
  return values.update(tables::kDisks, filter);
}

int zeldb_add_update_nvme_aim_disk(const aim_disk_info_t* disk) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (disk == nullptr) return ZELDB_INVALID_ARGUMENT;
  ContentValues values(handle, "zeldb_add_update_nvme_aim_disk");
  if (!values) return values.no_memory();
  Disk written = *disk;
  terminate_texts(kTexts.fields, &written);
  written.MediaType[sizeof(written.MediaType) - 1] = '\0';
  const bool solid = written.MediaType[0] == '\0' || std::strcmp(written.MediaType, "SSD") == 0;
  values.put(kPlace.fields, &written, EmptyText::AsNull);
  put_number_text(values, "DriveTypeId", written.DriveTypeId);
  put_number_text(values, "MediaTypeId", solid ? 1 : written.RotationRate);
  values.put_uint16("Presence", kPresent);
  put_smart(values, written);
  values.put(kTexts.fields, &written, EmptyText::AsNull);
  if (!values.is_complete()) return values.no_memory();
  const Filter<128> own_row = in_place("LocationId", written.LocationId, "BayNo", written.BayNo);
  const int64_t id = insert_or_update_db_record(handle, tables::kDisks, own_row, values.get(), nullptr);
  return id >= 1 ? ZELDB_OK : ZELDB_FAILED;
}
