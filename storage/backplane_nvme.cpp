// SPDX-License-Identifier: Apache-2.0
//
// The NVMe drives in backplane bays and PCIe slots.
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "db/syslog_info.h"
#include "storage/disk_list.h"
#include "storage/drive_bays.h"
#include "storage/known_drives.h"
#include "zeldb/storage.h"

using namespace zeldb;

namespace {

constexpr const char* kReader = "zeldb_get_u2_aic_nvme_disk_list";

std::vector<uint8_t> nvme_bays() {
  std::vector<uint8_t> bays;
  const int status = read_drive_bays(BayMode::AnyNvme, bays);
  if (status != ZELDB_OK) {
    syslog_info("%s: get_u2_nvme_drive_bays() failed, ret = %d\n\n", kReader, status);
    bays.clear();
  }
  return bays;
}

// If no bay is known to be an NVMe bay, all may be.
std::string disks_condition(const std::vector<uint8_t>& bays, const ProductData& known) {
  std::string in_bay = "LocationId=2";
  if (!bays.empty()) {
    in_bay = "(LocationId=2 AND BayNo IN (";
    for (const uint8_t bay : bays) in_bay.append(std::to_string(bay)).append(",");
    in_bay.back() = ')';
    in_bay += ')';
  }
  return "Presence=1 AND DriveTypeId=3 AND (LocationId=1 OR " + in_bay + ") AND " +
         not_known("SerialNo", known).text();
}

int read_both(aim_disk_list_t* list) {
  const ProductData known = product_data();
  const std::string disks = disks_condition(nvme_bays(), known);
  const std::string drives =
      std::string("(Location=1 OR Location=2) AND ") + not_known("SupplierSN", known).text();
  DiskList first;
  int status = zeldb_get_disk_list_with_filter(first.out(), disks.c_str());
  if (status != ZELDB_OK) {
    syslog_info("%s: Failed to query AimDisk, rc = %d. %s\n\n", kReader, status, disks.c_str());
  }
  DiskList second;
  status = zeldb_get_nvme_disk_list_from_mi_filter(second.out(), drives.c_str());
  if (status != ZELDB_OK) {
    syslog_info("%s: Failed to query NVMeDrives, rc = %d. %s\n\n", kReader, status, drives.c_str());
  }
  std::set<std::pair<uint8_t, uint16_t>> taken;
  for (const aim_disk_info_t& disk : first.items()) taken.emplace(disk.LocationId, disk.BayNo);
  second.drop([&](const aim_disk_info_t& drive) { return taken.contains({drive.LocationId, drive.BayNo}); });
  return join({first.items(), second.items()}, list);
}

}  // namespace

int zeldb_get_u2_aic_nvme_disk_list(aim_disk_list_t* list) {
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  *list = {};
  try {
    return read_both(list);
  } catch (const std::bad_alloc&) {
    return ZEL_DB_STATUS_NO_MEMORY;
  }
}
