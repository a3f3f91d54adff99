// SPDX-License-Identifier: Apache-2.0
//
// What the services that watch drives write about them.
#include <cstring>

#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/values.h"
#include "storage/place.h"
#include "zeldb/db.h"
#include "zeldb/storage.h"

using namespace zeldb;

namespace {

using R = aim_disk_info_t;

constexpr const char* kDisks = "AimDisks";
constexpr uint16_t kPresent = 1;
constexpr int kToleratedDegrees = 2;

constexpr FieldTable kPlace{ZELDB_FIELD(R, PCIFuncKey), ZELDB_FIELD(R, SlotNo), ZELDB_FIELD(R, CtrlType),
                            ZELDB_FIELD(R, BayNo), ZELDB_FIELD(R, LocationId)};
constexpr FieldTable kTexts{ZELDB_FIELD(R, Location),    ZELDB_FIELD(R, FruNo),     ZELDB_FIELD(R, PartNo),
                            ZELDB_FIELD(R, SerialNo),    ZELDB_FIELD(R, Model),     ZELDB_FIELD(R, UUID),
                            ZELDB_FIELD(R, Manufacture), ZELDB_FIELD(R, FwVersion), ZELDB_FIELD(R, Capacity)};

Filter<128> in_place(const char* kind_column, uint32_t kind, const char* number_column, uint32_t number) {
  return Filter<128>("%s=%d AND %s=%d", kind_column, static_cast<int>(kind), number_column,
                     static_cast<int>(number));
}

using PlaceText = Filter<24>;

void put_smart(ContentValues& values, const R& disk) {
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
  return values.update("NVMeDrives", in_place("Location", location, "SlotNo", slot));
}

int zeldb_update_aim_disk_presence(uint32_t locationId, uint32_t bayNo, uint16_t presence) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  ContentValues values(handle, "zeldb_update_aim_disk_presence");
  if (!values) return values.no_memory();
  values.clear();
  values.put_uint16("Presence", presence);
  const Filter<128> filter("%s=%d AND %s=%d AND %s!=%d", "LocationId", static_cast<int>(locationId), "BayNo",
                           static_cast<int>(bayNo), "Presence", presence);
  return values.update(kDisks, filter);
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
  return values.update(kDisks, in_place("LocationId", locationId, "BayNo", bayNo));
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
      "%s=\"%s\" AND (%s!=%d OR %s!=%d OR %s!=%d OR %s!=%d OR ((%s+%d)<%d) OR ((%s-%d)>%d))", "Location",
      place.text(), "SFlags", disk->SFlags, "Warning", disk->Warning, "RemainLife", disk->RemainLife,
      "InfoMask", disk->InfoMask, "Temperature", kToleratedDegrees, disk->Temperature, "Temperature",
      kToleratedDegrees, disk->Temperature);
  return values.update(kDisks, filter);
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
  const Filter<72> filter("%s=\"%s\" AND %s!=%d", "Location", place.text(), "CtrlType", ctrlType);
  return values.update(kDisks, filter);
}

int zeldb_add_update_nvme_aim_disk(const aim_disk_info_t* disk) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (disk == nullptr) return ZELDB_INVALID_ARGUMENT;
  ContentValues values(handle, "zeldb_add_update_nvme_aim_disk");
  if (!values) return values.no_memory();
  R written = *disk;
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
  const int64_t id = insert_or_update_db_record(handle, kDisks, own_row, values.get(), nullptr);
  return id >= 1 ? ZELDB_OK : ZELDB_FAILED;
}
