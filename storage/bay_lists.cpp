// SPDX-License-Identifier: Apache-2.0
//
// The drives of one kind of bay, from whichever table knows them.
#include "db/filter.h"
#include "db/syslog_info.h"
#include "storage/disk_list.h"
#include "storage/known_drives.h"
#include "storage/place.h"
#include "zeldb/storage.h"

using namespace zeldb;

namespace {

constexpr int kPresent = 1;

constexpr uint32_t k7mmController = 1;
constexpr uint8_t kSataOnly = 2;

bool read_some(int status, const aim_disk_list_t* list) {
  return status == ZELDB_OK && list->Count != 0;
}

}  // namespace

int zeldb_get_mv_disk_list(int slot, aim_disk_list_t* list) {
  const Filter<64> managed("%s=%d", "CtrlSlot", slot);
  if (read_some(zeldb_get_nvme_disk_list_from_mi_filter(list, managed), list)) return ZELDB_OK;
  const Filter<64> others("%s=%d and (%s=%d or %s=%d)", "SlotNo", slot, "LocationId", kInM2Bay, "LocationId",
                          kIn7mmBay);
  return zeldb_get_disk_list_with_filter(list, others);
}

int zeldb_get_7mm_disk_list(aim_disk_list_t* list, uint32_t exclude) {
  using Condition = Filter<256>;
  uint8_t type = 0;
  int status = zeldb_get_mvl_ctrl_type(&type, k7mmController);
  if (status != ZELDB_OK) return status;
  if (type == kSataOnly) {
    const Condition sata("%s=%d AND %s=%d", "DriveTypeId", k7mmSata, "Presence", kPresent);
    return zeldb_get_disk_list_with_filter(list, sata);
  }
  Condition managed("%s=%d", "Location", kIn7mmBay);
  Condition others("%s=%d AND %s=%d", "LocationId", kIn7mmBay, "Presence", kPresent);
  if (exclude != 0) {
    const ProductData known = product_data();
    managed = Condition("%s=%d AND %s", "Location", kIn7mmBay, not_known("SupplierSN", known).text());
    others = Condition("%s=%d AND %s=%d AND %s", "LocationId", kIn7mmBay, "Presence", kPresent,
                       not_known("SerialNo", known).text());
  }
  status = zeldb_get_nvme_disk_list_from_mi_filter(list, managed);
  if (status != ZELDB_OK) {
    syslog_info("%s: Failed to query NVMeDrives table, ret = %d. %s\n\n", __func__, status, managed.text());
  }
  if (read_some(status, list)) return ZELDB_OK;
  return zeldb_get_disk_list_with_filter(list, others);
}

int zeldb_get_m2_disk_list(aim_disk_list_t* list, uint32_t exclude) {
  using Condition = Filter<256>;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  *list = {};
  const ProductData known = product_data();
  Condition managed("%s=%d", "Location", kInM2Bay);
  Condition others("(%s=%d OR %s=%d) AND (%s NOT IN (SELECT %s FROM %s WHERE %s=%d))", "DriveTypeId", kM2Nvme,
                   "DriveTypeId", kM2Sata, "BayNo", "SlotNo", "NVMeDrives", "Location", kInM2Bay);
  if (exclude != 0) {
    managed = Condition("%s=%d  AND %s", "Location", kInM2Bay, not_known("SupplierSN", known).text());
    others = Condition("(%s=%d OR %s=%d) AND %s AND (%s NOT IN (SELECT %s FROM %s WHERE %s=%d))",
                       "DriveTypeId", kM2Nvme, "DriveTypeId", kM2Sata, not_known("SerialNo", known).text(),
                       "BayNo", "SlotNo", "NVMeDrives", "Location", kInM2Bay);
  }
  DiskList first;
  if (read_some(zeldb_get_nvme_disk_list_from_mi_filter(first.out(), managed), first.out())) {
    syslog_info("%s, get m2 from NVMeDrives table success,m2MiList.count:%d\n\n", __func__,
                static_cast<int>(first.count()));
  }
  DiskList second;
  if (read_some(zeldb_get_disk_list_with_filter(second.out(), others), second.out())) {
    syslog_info("%s, get m2 from AimDisks table success,m2AimList.count:%d\n\n", __func__,
                static_cast<int>(second.count()));
  }
  const int status = join({first.disks(), second.disks()}, list);
  if (status != ZELDB_OK) return status;
  for (aim_disk_info_t& disk : std::span(list->Items, list->Count)) {
    disk.BayNo = static_cast<uint16_t>(m2_number(disk.BayNo));
  }
  return ZELDB_OK;
}
