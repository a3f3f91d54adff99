// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/support/database.h"
#include "tests/support/run_program.h"

namespace zeldb_test {
namespace {

class LoadByName : public DatabaseTest {};

// Keys above INT32_MAX and a record whose last field counts: what a wrong width or layout would spoil.
TEST_P(LoadByName, ServesAClientInC) {
  database.run_all(
      {"INSERT INTO PCIs (FunKey, DevKey, FunType, VendorId, DeviceId, SubVendorId, SubDeviceId) "
       "VALUES (16777218, 65543, 3, 0, 0, 0, 0)",
       "INSERT INTO PCIs (FunKey, DevKey, FunType, VendorId, DeviceId, SubVendorId, SubDeviceId) "
       "VALUES (16777217, 4294901767, 2, 4660, 65535, 1, 43981)",
       "INSERT INTO PCIAdapter (PCIFuncKey, CardName) VALUES (16777217, 'Dual port adapter')"});
  const Outcome client = run_program(
      {.argv = {ZELDB_LOAD_BY_NAME, ZELDB_LIBRARY, "0x01000001"}, .env = {"ZEL_DB_URL=" + database.url()}});
  EXPECT_EQ(client.exit_status, 0) << client.err;
  EXPECT_EQ(client.out,
            "keys 0: 65543 4294901767\n"
            "type 0: 2\n"
            "name 0: Dual po\n"
            "ids 0: 1234 ffff 0001 abcd\n"
            "stored 0\n");
  EXPECT_EQ(database.text("SELECT SettingID, PfaKey, Numchoices, Choices FROM PCISetting"),
            "Collection.Attribute,16777217,-1,last field");
}

ZELDB_ON_EVERY_ENGINE(LoadByName);

}  // namespace
}  // namespace zeldb_test
