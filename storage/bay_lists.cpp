// SPDX-License-Identifier: Apache-2.0
//
// The drives of one kind of bay, from the table that has them.
#include <cstdlib>
#include <utility>

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

// Whether there are drives. If not, nothing is left in the list.
bool read_some(int status, aim_disk_list_t* list) {
  if (status != ZELDB_OK || list->Count != 0) return status == ZELDB_OK;
  std::free(std::exchange(list->Items, nullptr));
  return false;
}

}  // namespace

int zeldb_get_mv_disk_list(int slot, aim_disk_list_t* list) {
  const Filter<64> managed("CtrlSlot=%d", slot);
  if (read_some(zeldb_get_nvme_disk_list_from_mi_filter(list, managed), list)) return ZELDB_OK;
  const Filter<64> others("SlotNo=%d and (LocationId=%d or LocationId=%d)", slot, kInM2Bay, kIn7mmBay);
  return zeldb_get_disk_list_with_filter(list, others);
}

int zeldb_get_7mm_disk_list(aim_disk_list_t* list, uint32_t exclude) {
  using Condition = Filter<256>;
  uint8_t type = 0;
  int status = zeldb_get_mvl_ctrl_type(&type, k7mmController);
  if (status != ZELDB_OK) return status;
  if (type == kSataOnly) {
    const Condition sata("DriveTypeId=%d AND Presence=%d", k7mmSata, kPresent);
    return zeldb_get_disk_list_with_filter(list, sata);
  }
  Condition managed("Location=%d", kIn7mmBay);
  Condition others("LocationId=%d AND Presence=%d", kIn7mmBay, kPresent);
  if (exclude != 0) {
    const ProductData known = product_data();
    managed = Condition("Location=%d AND %s", kIn7mmBay, not_known("SupplierSN", known).text());
    others = Condition("LocationId=%d AND Presence=%d AND %s", kIn7mmBay, kPresent,
                       not_known("SerialNo", known).text());
  }
  status = zeldb_get_nvme_disk_list_from_mi_filter(list, managed);
  if (status != ZELDB_OK) {
    syslog_info("zeldb_get_7mm_disk_list: Failed to query NVMeDrives table, ret = %d. %s\n\n", status,
                managed.text());
  }
  if (read_some(status, list)) return ZELDB_OK;
  return zeldb_get_disk_list_with_filter(list, others);
}

int zeldb_get_m2_disk_list(aim_disk_list_t* list, uint32_t exclude) {
  using Condition = Filter<256>;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  *list = {};
  const ProductData known = product_data();
  Condition managed("Location=%d", kInM2Bay);
  Condition others(
      "(DriveTypeId=%d OR DriveTypeId=%d) AND (BayNo NOT IN (SELECT SlotNo FROM NVMeDrives WHERE "
      "Location=%d))",
      kM2Nvme, kM2Sata, kInM2Bay);
  if (exclude != 0) {
    managed = Condition("Location=%d  AND %s", kInM2Bay, not_known("SupplierSN", known).text());
    others = Condition(
        "(DriveTypeId=%d OR DriveTypeId=%d) AND %s AND (BayNo NOT IN (SELECT SlotNo FROM NVMeDrives WHERE "
        "Location=%d))",
        kM2Nvme, kM2Sata, not_known("SerialNo", known).text(), kInM2Bay);
  }
  DiskList first;
  if (read_some(zeldb_get_nvme_disk_list_from_mi_filter(first.out(), managed), first.out())) {
    syslog_info("zeldb_get_m2_disk_list, get m2 from NVMeDrives table success,m2MiList.count:%d\n\n",
                static_cast<int>(first.count()));
  }
  DiskList second;
  if (read_some(zeldb_get_disk_list_with_filter(second.out(), others), second.out())) {
    syslog_info("zeldb_get_m2_disk_list, get m2 from AimDisks table success,m2AimList.count:%d\n\n",
                static_cast<int>(second.count()));
  }
  const int status = join({first.items(), second.items()}, list);
  if (status != ZELDB_OK) return status;
  for (aim_disk_info_t& disk : std::span(list->Items, list->Count)) {
    disk.BayNo = static_cast<uint16_t>(m2_number(disk.BayNo));
  }
  return ZELDB_OK;
}
