// SPDX-License-Identifier: Apache-2.0
//
// Drives of all kinds, and the short readers.
#include "db/filter.h"
#include "db/syslog_info.h"
#include "storage/disk_list.h"
#include "storage/known_drives.h"
#include "storage/place.h"
#include "zeldb/storage.h"

using namespace zeldb;

namespace {

constexpr int kPresent = 1;

int excluding_m2(aim_disk_list_t* list) {
  return zeldb_get_m2_disk_list(list, 1);
}
int excluding_7mm(aim_disk_list_t* list) {
  return zeldb_get_7mm_disk_list(list, 1);
}

void read_part(DiskList& part, int (*reader)(aim_disk_list_t*), const char* name) {
  const int status = reader(part.out());
  if (status != ZELDB_OK) {
    syslog_info("%s: %s failed, rc = %d\n\n", "zeldb_get_merged_disk_list", name, status);
  }
}

}  // namespace

int zeldb_get_disk_list(aim_disk_list_t* list) {
  const Filter<24> filter("Presence=%d", kPresent);
  return zeldb_get_disk_list_with_filter(list, filter);
}

int zeldb_get_onboard_sata_disk_list(aim_disk_list_t* list) {
  const Filter<48> filter("Presence=%d AND DriveTypeId=%d", kPresent, kSata);
  return zeldb_get_disk_list_with_filter(list, filter);
}

int zeldb_get_nvme_aim_disk(int location, uint32_t number, aim_disk_info_t* disk) {
  const auto kind = static_cast<uint32_t>(location);
  const int type = kind != kIn7mmBay ? nvme_type_in(kind) : 0;
  if (disk == nullptr || type == 0) return ZELDB_INVALID_ARGUMENT;
  const uint32_t shown = kind == kInM2Bay ? m2_number(number) : number;
  const Filter<16> place("%s%d", place_name(kind), static_cast<int>(shown));
  const Filter<72> filter("Location=\"%s\" AND DriveTypeId=%d", static_cast<const char*>(place), type);
  DiskList found;
  zeldb_get_disk_list_with_filter(found.out(), filter);
  if (found.count() > 1) {
    syslog_info("zeldb_get_nvme_aim_disk, Find %d NVMe drives at location %d Slot %d\n\n",
                static_cast<int>(found.count()), location, static_cast<int>(number));
    return ZELDB_NO_HANDLE;
  }
  if (found.count() == 0) return ZELDB_INVALID_ARGUMENT;
  *disk = found.items().front();
  return ZELDB_OK;
}

void zeldb_get_merged_disk_list(aim_disk_list_t* list) {
  if (list == nullptr) return;
  DiskList m2, seven_mm, nvme, sata;
  {
    const RememberedProductData one_probe;
    read_part(m2, excluding_m2, "zeldb_get_m2_disk_list");
    read_part(seven_mm, excluding_7mm, "zeldb_get_7mm_disk_list");
    read_part(nvme, zeldb_get_u2_aic_nvme_disk_list, "zeldb_get_u2_aic_nvme_disk_list");
    read_part(sata, zeldb_get_onboard_sata_disk_list, "zeldb_get_onboard_sata_disk_list");
  }
  *list = {};
  join({m2.items(), seven_mm.items(), nvme.items(), sata.items()}, list);
}

int zeldb_get_disk_list_funkey(uint32_t funKey, aim_disk_list_t* list) {
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  *list = {};
  DiskList merged;
  zeldb_get_merged_disk_list(merged.out());
  merged.drop([funKey](const aim_disk_info_t& disk) { return disk.PCIFuncKey != funKey; });
  return merged.count() != 0 ? join({merged.items()}, list) : ZELDB_NO_MATCH;
}
