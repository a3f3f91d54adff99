// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstdlib>

#include "tests/support/database.h"
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

ZELDB_ON_EVERY_ENGINE(Drives);

}  // namespace
}  // namespace zeldb_test
