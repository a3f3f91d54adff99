// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>

#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/ucm.h"

namespace zeldb_test {
namespace {

using Texts = std::vector<std::string>;
using Entry = _ZELDB_PCI_ConfigSet_Entry;

constexpr const char* kBios = R"({"collections": [{"name": "S-1", "attributes": [
  {"AttributeName": "Mode", "Type": 1, "current": "a", "pending": "a"},
  {"AttributeName": "Size", "Type": 3, "current": "1", "pending": "1"}]}]})";

class ConfigSets : public DatabaseTest {
 protected:
  void SetUp() override {
    setenv("ZEL_PLATFORM_DIR", database.folder().c_str(), 1);
    std::ofstream(database.folder() + "/bios.json") << kBios;
    database.run_all({
        "INSERT INTO PCIs (FunKey, VendorId) VALUES (1, 32902)",
        "INSERT INTO PCIs (FunKey, VendorId) VALUES (2, 4096)",
        "INSERT INTO PCISetting (SettingID, PfaKey, Flags, PendingValue, Maxinstances) VALUES ('S-1.Mode', "
        "1, 2, 'a', "
        "-1)",
        "INSERT INTO PCISetting (SettingID, PfaKey, Flags, PendingValue) VALUES ('S-1.Size', 1, 1, 'it''s')",
        "INSERT INTO PCISetting (SettingID, PfaKey) VALUES ('T.x', 1)",
        "INSERT INTO PCISetting (SettingID, PfaKey, Flags) VALUES (NULL, 1, 3)",
        "INSERT INTO PCISetting (SettingID, PfaKey, Flags) VALUES ('..S-1.y.z', 1, 2)",
        "INSERT INTO PCISetting (SettingID, PfaKey, Flags) VALUES ('...', 1, 0)",
        "INSERT INTO PCISetting (SettingID, PfaKey, Flags) VALUES ('S-2', 2, 0)",
    });
    shim().require_calls();
  }

  static Entry entry(const std::string& id, const std::string& value) {
    Entry made = {};
    std::strncpy(made.SettingID, id.c_str(), sizeof(made.SettingID) - 1);
    std::strncpy(made.PendingValue, value.c_str(), sizeof(made.PendingValue) - 1);
    return made;
  }
};
ZELDB_ON_EVERY_ENGINE(ConfigSets);

TEST_P(ConfigSets, AreNamedAndCounted) {
  char names[64] = "";
  EXPECT_EQ(zeldb_get_pci_configID(1, names), 0);
  EXPECT_STREQ(names, "S-1:T:S-1");
  EXPECT_EQ(zeldb_get_pci_configID(2, names), 0);
  EXPECT_STREQ(names, "S-1:T:S-1S-2");
  EXPECT_EQ(shim().texts("query")[0], "query|PCISetting|SettingID|PfaKey=1||PfaKey|0");
  const std::string longest(89, '_');
  const struct {
    int key;
    const char* prefix;
    std::string told;
  } cases[] = {{1, nullptr, "0 6"}, {1, "S-1", "0 2"},   {1, "", "0 5"},       {1, "_", "0 5"},
               {1, "s", "0 0"},     {2, nullptr, "0 0"}, {3, nullptr, "10 99"}};
  for (const auto& c : cases) {
    unsigned short count = 99;
    const int status = zeldb_get_pci_configSet_count(c.key, const_cast<char*>(c.prefix), &count);
    EXPECT_EQ(std::to_string(status) + " " + std::to_string(count), c.told);
  }
  EXPECT_EQ(shim().calls("query").back().table, "PCIs");
  unsigned short count = 99;
  database.run("INSERT INTO PCIs (FunKey) VALUES (16777216)");
  std::string prefix = longest;
  EXPECT_EQ(zeldb_get_pci_configSet_count(16777216, prefix.data(), &count), 0);
  EXPECT_EQ(shim().calls("query").back().where, "PfaKey=16777216 AND SettingID like '" + longest + "%'");
  prefix += '_';
  EXPECT_EQ(zeldb_get_pci_configSet_count(16777216, prefix.data(), &count), 2);
}

TEST_P(ConfigSets, AreListed) {
  const auto records = std::make_unique<PCISetting_info[]>(6);
  unsigned short stored = 99;
  EXPECT_EQ(zeldb_get_pci_configSet_list(1, nullptr, 5, records.get(), 0, &stored), 30);
  EXPECT_EQ(stored, 99);
  ASSERT_EQ(zeldb_get_pci_configSet_list(1, nullptr, 6, records.get(), 0, &stored), 0);
  ASSERT_EQ(stored, 5);  // one has no flags
  EXPECT_STREQ(reinterpret_cast<char*>(records[0].SettingID), "S-1.Mode");
  const int32_t most = records[0].Maxinstances;  // packed: not to be bound to a reference
  EXPECT_EQ(most, -1);
  EXPECT_STREQ(reinterpret_cast<char*>(records[1].PendingValue), "it's");
  EXPECT_STREQ(reinterpret_cast<char*>(records[2].SettingID), "");
  ASSERT_EQ(zeldb_get_pci_configSet_list(1, nullptr, 6, records.get(), 1, &stored), 0);
  EXPECT_EQ(stored, 3);
  EXPECT_STREQ(reinterpret_cast<char*>(records[2].SettingID), "..S-1.y.z");
  EXPECT_EQ(
      shim().calls("query")[0].columns,
      "Flags,GroupName,SettingID,PfaKey,CurrentValue,PendingValue,SuppressIf,GrayIf,GroupID,GroupSuppressIf,"
      "GroupGrayIf,Mriname,ShortDesc,FullDesc,Type,SettingName,Mininstances,Maxinstances,Defvalue,Mfg_"
      "default,"
      "Defaultaction,RecordId,Minim,Maxim,Step,Mins,Maxs,Pattern,Numchoices,Choices");
  shim().fail({.op = "step", .nth = 1, .status = 5, .after = 2});
  ASSERT_EQ(zeldb_get_pci_configSet_list(1, nullptr, 6, records.get(), 0, &stored), 0);
  EXPECT_EQ(stored, 2);
}

TEST_P(ConfigSets, PendingValuesReachTheService) {
  setenv("CMR_CALL_LOG", (database.folder() + "/calls").c_str(), 1);
  Entry entries[] = {entry("S-1.Mode", "b"), entry("S-1.Size", "1")};
  EXPECT_EQ(zeldb_save_pci_configSet_list(entries, 2), 0);
  EXPECT_EQ(database.text("SELECT PendingValue FROM PCISetting WHERE PfaKey=1 AND PendingValue IS NOT NULL"),
            "b;1");
  EXPECT_EQ(shim().calls("update")[0].where, " SettingID='S-1.Mode' AND  PendingValue!='b'");
  EXPECT_EQ(shim().calls("query")[0].where, " SettingID='S-1.Mode'");
  std::ifstream bios(database.folder() + "/bios.json");
  const std::string content((std::istreambuf_iterator<char>(bios)), {});
  EXPECT_NE(content.find("\"pending\": \"b\""), std::string::npos) << content;

  // A row without a pending value keeps none, and the service does not know it.
  std::ifstream calls(database.folder() + "/calls");
  const std::string called((std::istreambuf_iterator<char>(calls)), {});
  EXPECT_EQ(called,
            "cmr_api_initialize\t-\t-\t-\t-\t-\t-\t-\t0\n"
            "cmr_set_bios_attribute_value\t-\t2\t-\t0\t2\tS-1.Mode\tb\t0\n"
            "cmr_set_bios_attribute_value\t-\t2\t-\t0\t2\tS-1.Size\t1\t0\n"
            "cmr_api_uninitialize\t-\t-\t-\t-\t-\t-\t-\t0\n");
  Entry unset[] = {entry("T.x", "v")};
  EXPECT_EQ(zeldb_save_pci_configSet_list(unset, 1), 31);
  Entry unknown[] = {entry("S-1.Mode", "c"), entry("S-1.None", "c")};
  EXPECT_EQ(zeldb_save_pci_configSet_list(unknown, 2), 33);
  Entry quoted[] = {entry("S-1.Size", "2"), entry("S-1.Mode", "it's")};
  EXPECT_EQ(zeldb_save_pci_configSet_list(quoted, 2), 2);
  EXPECT_EQ(database.text("SELECT PendingValue FROM PCISetting WHERE PfaKey=1 AND PendingValue IS NOT NULL"),
            "b;2");
  Entry endless[] = {entry("S-1.Mode", "d")};
  std::memset(endless[0].PendingValue, 'x', sizeof(endless[0].PendingValue));
  EXPECT_EQ(zeldb_save_pci_configSet_list(endless, 1), 3);
  EXPECT_EQ(zeldb_save_pci_configSet_list(nullptr, 0), 0);
  shim().fail({.op = "get_content_values", .nth = 0});
  EXPECT_EQ(zeldb_save_pci_configSet_list(nullptr, 0), 4);
  ASSERT_EQ(libc().logs.size(), 4U);
  EXPECT_TRUE(libc().logs[0].starts_with("error cmr_set_bios_attribute_value failed, rc: "))
      << libc().logs[0];
  EXPECT_EQ(
      (Texts{libc().logs.begin() + 1, libc().logs.end()}),
      (Texts{"error zeldb_save_pci_configSet_list failed, ZELDB_PCI_SETTING_ID_NOEXIT",
             "error zeldb_update failed, filter:  SettingID='S-1.Mode' AND  PendingValue!='it's', value: "
             "PendingValue(0xit's), rc: 2",
             "error zeldb_save_pci_configSet_list, ZEL_DB_STATUS_NO_MEMORY"}));
}

}  // namespace
}  // namespace zeldb_test
