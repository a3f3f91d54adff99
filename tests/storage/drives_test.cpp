// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdlib>

#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/storage.h"

namespace zeldb_test {
namespace {

class Drives : public DatabaseTest {
 protected:
  void TearDown() override { std::free(list.Items); }

  // So many of each: NVMe drives in a backplane bay and M.2 SATA drives.
  void insert(int count) const {
    std::string rows = "(0,9,2,'3'),(0,1,3,'4')";
    for (int i = 1; i < count; ++i) rows += ",(0,9,2,'3'),(0,1,3,'4')";
    database.run("INSERT INTO AimDisks (PCIFuncKey, BayNo, LocationId, DriveTypeId) VALUES " + rows);
  }

  aim_disk_list_t list = {};
};

TEST_P(Drives, AreReadWithFewStatements) {
  insert(50);
  EXPECT_EQ(zeldb_get_disk_list_with_filter(&list, nullptr), 0);
  EXPECT_EQ(list.Count, 100U);
  // A function key for each, the wiring of each M.2 bay; sensors, controllers, EDSFF bays and, once per
  // process, the first bays of 9 backplanes.
  const std::pair<const char*, int> expected[] = {
      {"AimDisks", 1}, {"SensorSlotMap", 1}, {"PCIs", 100 + 1}, {"propertiesDCTbl", 50 + 1 + 9}};
  const auto calls = shim().calls("query");
  for (const auto& [table, count] : expected) {
    EXPECT_EQ(std::ranges::count(calls, table, &Call::table), count) << table;
  }
  EXPECT_EQ(calls.size(), 163U);
}

TEST_P(Drives, OfOneKeyMayBeMany) {
  database.run("INSERT INTO PCIs (Location, SlotNo, ClsCode, SegNo) VALUES (1,1,67586,7)");
  insert(70);
  EXPECT_EQ(zeldb_get_disk_list_funkey(0x07000000, &list), 0);
  EXPECT_EQ(list.Count, 70U);
}

TEST_P(Drives, NeedMemory) {
  insert(1);
  if (!LibcShim::fail_allocation(sizeof(aim_disk_info_t))) GTEST_SKIP() << "a sanitizer owns the allocations";
  EXPECT_EQ(zeldb_get_disk_list_with_filter(&list, nullptr), 4);
  EXPECT_EQ(list.Count, 0U);
}

// A refused argument is 3 with a database; without one it shows which is looked at first.
TEST_P(Drives, OrderOfChecks) {
  uint32_t none = 0;
  uint8_t byte = 0;
  const aim_disk_info_t nowhere = {};
  const auto statuses = [&] {
    return std::vector<int>{zeldb_get_disk_list_with_filter(nullptr, ""),
                            zeldb_get_nvme_disk_list_from_mi_filter(nullptr, ""),
                            zeldb_get_mv_disk_list(1, nullptr),
                            zeldb_get_7mm_disk_list(nullptr, 1),
                            zeldb_vroc_enabled(1, nullptr),
                            zeldb_get_vmd_count(nullptr, nullptr),
                            zeldb_get_ctrl_slot(1, 1, nullptr),
                            zeldb_get_nvme_drv_funkey(1, 1, nullptr),
                            zeldb_get_marvell_ctrl_slots(nullptr, &none, &none),
                            zeldb_get_marvell_ctrl_slots(&byte, &none, &none),
                            zeldb_update_nvme_disk_firmware_version(1, 1, nullptr),
                            zeldb_update_aim_disk_vpd_info(1, 1, "", "", "", "", "", nullptr),
                            zeldb_update_aim_disk_smart_info(nullptr),
                            zeldb_update_aim_disk_smart_info(&nowhere),
                            zeldb_update_aim_disk_ctrl_type(5, 1, 1),
                            zeldb_add_update_nvme_aim_disk(nullptr),
                            zeldb_get_m2_disk_list(nullptr, 1),
                            zeldb_get_u2_aic_nvme_disk_list(nullptr),
                            zeldb_get_disk_list_funkey(1, nullptr),
                            zeldb_get_nvme_aim_disk(1, 1, nullptr),
                            zeldb_get_mvl_ctrl_type(nullptr, 1),
                            zeldb_get_bp_drive_count(&byte, nullptr),
                            zeldb_get_bp_drive_count(nullptr, &byte)};
  };
  constexpr size_t kHandleFirst = 16;
  std::vector<int> expected(statuses().size(), 3);
  EXPECT_EQ(statuses(), expected);
  for (const char* op : {"get_dmdb_handle", "open"}) shim().fail({.op = op, .nth = 0, .status = 1});
  std::fill_n(expected.begin(), kHandleFirst, 6);
  EXPECT_EQ(statuses(), expected);
  EXPECT_EQ(zeldb_get_mvl_ctrl_type(&byte, 1), 6);
  EXPECT_EQ(zeldb_get_bp_drive_count(&byte, &byte), 6);
  zeldb_get_merged_disk_list(nullptr);
}

ZELDB_ON_EVERY_ENGINE(Drives);

}  // namespace
}  // namespace zeldb_test
