// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <filesystem>

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

// A user who starts a program with more rights does not choose what it reads, nor what it writes.
TEST(ChangedPrivileges, TakeTheEnvironmentsMeaning) {
  namespace fs = std::filesystem;
  if (geteuid() != 0) GTEST_SKIP() << "only root can give a program away";
  const Database database(Engine::Sqlite);
  const fs::path folder = fs::path(testing::TempDir()) / ("privileges." + std::to_string(getpid()));
  fs::create_directory(folder);
  struct statvfs found {};
  statvfs(folder.c_str(), &found);
  const bool emulated = sizeof(void*) == 4;
  const std::string program = folder / "program";
  fs::copy_file(ZELDB_LOAD_BY_NAME, program);
  for (const mode_t mode : {0755, 02755}) {
    if (mode != 0755 && (emulated || (found.f_flag & ST_NOSUID) != 0)) break;
    ASSERT_EQ(chown(program.c_str(), 0, 65534) + chmod(program.c_str(), mode), 0);
    for (const std::string& url : {database.url(), database.url() + "/none"}) {
      run_program({.argv = {program, ZELDB_LIBRARY, "1"},
                   .env = {"ZEL_DB_URL=" + url, "ZEL_DB_TRACE=" + (folder / "trace").string(),
                           "VREL_LOG=" + (folder / "log").string()}});
    }
    for (const char* file : {"trace", "log"}) EXPECT_EQ(fs::remove(folder / file), mode == 0755) << file;
  }
  fs::remove_all(folder);
}

}  // namespace
}  // namespace zeldb_test
