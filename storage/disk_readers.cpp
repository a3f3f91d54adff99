// SPDX-License-Identifier: Apache-2.0
//
// The two general readers. Every other list of drives is made from their lists.
#include <cstddef>
#include <cstdio>
#include <new>
#include <span>

#include "db/code_text.h"
#include "db/field.h"
#include "db/read.h"
#include "db/tables.h"
#include "storage/capacity_text.h"
#include "storage/decimal.h"
#include "storage/drive_completion.h"
#include "storage/place.h"
#include "zeldb/storage.h"

using namespace zeldb;

namespace {

using Disk = aim_disk_info_t;

constexpr auto kDiskFields =
    field_table(ZELDB_FIELD(Disk, PCIFuncKey), ZELDB_FIELD(Disk, SlotNo), ZELDB_FIELD(Disk, CtrlType),
                ZELDB_FIELD_OR(Disk, BayNo, 0xFF), ZELDB_FIELD(Disk, LocationId), ZELDB_FIELD(Disk, Location),
                ZELDB_FIELD_AS(Disk, DriveType, "DriveTypeId"),
                ZELDB_FIELD_AS(Disk, MediaType, "MediaTypeId"), ZELDB_FIELD(Disk, FruNo),
                ZELDB_FIELD(Disk, PartNo), ZELDB_FIELD(Disk, SerialNo), ZELDB_FIELD(Disk, Model),
                ZELDB_FIELD(Disk, UUID), ZELDB_FIELD(Disk, Manufacture), ZELDB_FIELD(Disk, FwVersion),
                ZELDB_FIELD(Disk, Capacity), ZELDB_FIELD(Disk, SFlags), ZELDB_FIELD(Disk, Warning),
                ZELDB_FIELD(Disk, Temperature), ZELDB_FIELD(Disk, RemainLife), ZELDB_FIELD(Disk, InfoMask));
// Codes that their columns hold as text.
constexpr int kDriveTypeColumn = 6;
constexpr int kMediaTypeColumn = 7;

constexpr auto kNvmeFields = field_table(
    ZELDB_FIELD_AS(Disk, LocationId, "Location"), field_of<uint16_t>("SlotNo", offsetof(Disk, BayNo), 0xFF),
    ZELDB_FIELD_AS(Disk, SlotNo, "CtrlSlot"), ZELDB_FIELD(Disk, Capacity), ZELDB_FIELD(Disk, FruNo),
    ZELDB_FIELD(Disk, PartNo), ZELDB_FIELD_AS(Disk, SerialNo, "SupplierSN"), ZELDB_FIELD(Disk, Model),
    ZELDB_FIELD(Disk, UUID), ZELDB_FIELD(Disk, Manufacture), ZELDB_FIELD_AS(Disk, FwVersion, "FwVer"),
    ZELDB_FIELD(Disk, SFlags), ZELDB_FIELD(Disk, Warning), ZELDB_FIELD(Disk, Temperature),
    ZELDB_FIELD(Disk, RemainLife), ZELDB_FIELD(Disk, InfoMask));
constexpr int kCapacityColumn = 3;  // in bytes

constexpr int kSolidState = 1;
constexpr int kFastest = 65534;

void set_medium(Disk& disk, int medium) {
  copy_text(disk.MediaType, medium == kSolidState ? "SSD" : "HDD");
  const bool rotates = medium > kSolidState && medium <= kFastest;
  disk.RotationRate = static_cast<uint16_t>(rotates ? medium : 0);
}

// Fills all fields but some from skip on, which are made in another way.
template <size_t N>
void fill_but(const FieldTable<N>& table, int skip, int skipped, const Row& row, Disk& disk) {
  const std::span<const Field> fields(table.fields);
  const auto from = static_cast<size_t>(skip);
  row.fill(fields.first(from), &disk);
  row.fill(fields.subspan(from + static_cast<size_t>(skipped)), &disk, skip + skipped);
  disk.BayNo &= 0xFF;
}

int read_number_text(const Row& row, int column) {
  char text[16];
  row.text(column, text);
  return decimal(text);
}

// Either row reader fills the record and returns the drive's type.
int read_disk_row(const Row& row, Disk& disk) {
  fill_but(kDiskFields, kDriveTypeColumn, 2, row, disk);
  set_medium(disk, read_number_text(row, kMediaTypeColumn));
  return read_number_text(row, kDriveTypeColumn);
}

int read_nvme_row(const Row& row, Disk& disk) {
  fill_but(kNvmeFields, kCapacityColumn, 1, row, disk);
  uint64_t bytes = 0;
  if (row.read(kCapacityColumn, bytes) == ZELDB_OK && bytes != 0)
    format_capacity(disk.Capacity, bytes, Gigabytes::Rounded);
  if (const char* const place = place_name(disk.LocationId)) {
    const uint32_t number = disk.LocationId == kInM2Bay ? m2_number(disk.BayNo) : disk.BayNo;
    std::snprintf(disk.Location, sizeof(disk.Location), "%s%d", place, static_cast<int>(number));
  }
  set_medium(disk, kSolidState);
  return nvme_type_in(disk.LocationId);
}

template <typename ReadRow>
int read_drives(aim_disk_list_t* list, const Select& select, ReadRow read_row) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  *list = {};
  try {
    const Reads reads(handle);
    DriveCompletion completion(handle);
    Result result;
    const int status = query(handle, select, result);
    if (status != ZELDB_OK || !result || result.row_count() == 0) return status;
    return collect(result, list, [&](const Row& row, Disk& disk) {
      const int type = read_row(row, disk);
      completion.complete(disk, type);
      return Next::Keep;
    });
  } catch (const std::bad_alloc&) {
    return ZEL_DB_STATUS_NO_MEMORY;
  }
}

}  // namespace

int32_t zeldb_get_disk_list_with_filter(aim_disk_list_t* list, const char* filter) {
  return read_drives(list, {.table = tables::kDisks, .columns = kDiskFields.columns, .where = filter},
                     read_disk_row);
}

int zeldb_get_nvme_disk_list_from_mi_filter(aim_disk_list_t* list, const char* filter) {
  return read_drives(list, {.table = tables::kNvmeDrives, .columns = kNvmeFields.columns, .where = filter},
                     read_nvme_row);
}
