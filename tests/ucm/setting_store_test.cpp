// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/ucm.h"

namespace zeldb_test {
namespace {

using Texts = std::vector<std::string>;
using Bytes = const unsigned char*;

class Settings : public DatabaseTest {
 protected:
  void SetUp() override { shim().require_calls(); }
  PCISetting_info record = {};
};
ZELDB_ON_EVERY_ENGINE(Settings);

TEST(Conditions, TellADifferentText) {
  EXPECT_EQ(get_sql_str("C", reinterpret_cast<Bytes>("a\"b")), "(C IS NULL OR C!=\"a\"b\")");
  EXPECT_EQ(get_sql_str("C", reinterpret_cast<Bytes>("")), "C IS NOT NULL");
}

TEST_P(Settings, ArePutInTheOrderOfTheTable) {
  std::memcpy(record.SettingID, "A.b", 4);
  std::memcpy(record.Choices, "x;y", 4);
  std::memset(record.Pattern, 'p', sizeof(record.Pattern));  // not terminated
  record.PfaKey = 4294967295U;
  record.Numchoices = -1;
  record.Mininstances = -2;
  record.Maxinstances = 3;
  record.Maxs = 7;
  ASSERT_EQ(extract_PCISetting_info(&record), 0U);
  const Call insert = shim().calls("insert").at(0);
  EXPECT_EQ(insert.puts, (Texts{"text SettingID=A.b",
                                "null SettingName",
                                "null PendingValue",
                                "null CurrentValue",
                                "uint PfaKey=4294967295",
                                "null SuppressIf",
                                "null GrayIf",
                                "null GroupID",
                                "null GroupName",
                                "null GroupSuppressIf",
                                "null GroupGrayIf",
                                "null Mriname",
                                "null ShortDesc",
                                "null FullDesc",
                                "null Defvalue",
                                "null Mfg_default",
                                "null Defaultaction",
                                "null RecordId",
                                "uint Type=0",
                                "uint Flags=0",
                                "uint Minim=0",
                                "uint Maxim=0",
                                "uint Step=0",
                                "uint Mins=0",
                                "uint Maxs=7",
                                "text Pattern=" + std::string(128, 'p'),
                                "int Numchoices=-1",
                                "text Choices=x;y",
                                "int Mininstances=-2",
                                "int Maxinstances=3"}));
  ASSERT_EQ(extract_PCISetting_info(&record), 0U);
  EXPECT_EQ(shim().calls("query")[0].where, "SettingID=\"A.b\"");
  EXPECT_EQ(shim().calls("update").at(0).where,
            "_id=1 AND (PendingValue IS NOT NULL OR SettingName IS NOT NULL OR CurrentValue IS NOT NULL OR "
            "PfaKey!=4294967295 OR SuppressIf IS NOT NULL OR GrayIf IS NOT NULL OR GroupID IS NOT NULL OR "
            "GroupName IS "
            "NOT NULL OR GroupSuppressIf IS NOT NULL OR GroupGrayIf IS NOT NULL OR Mriname IS NOT NULL OR "
            "ShortDesc IS "
            "NOT NULL OR FullDesc IS NOT NULL OR Defvalue IS NOT NULL OR Mfg_default IS NOT NULL OR "
            "Defaultaction IS "
            "NOT NULL OR RecordId IS NOT NULL OR Type!=0 OR Flags!=0 OR Minim!=0 OR Maxim!=0 OR Step!=0 OR "
            "Mins!=0 OR "
            "Maxs!=7 OR (Pattern IS NULL OR Pattern!=\"" +
                std::string(128, 'p') +
                "\") OR Numchoices!=4294967295 OR (Choices IS NULL OR Choices!=\"x;y\") OR "
                "Mininstances!=4294967294 OR "
                "Maxinstances!=3)");
}

TEST_P(Settings, WithoutAnIdAreInsertedEachTime) {
  EXPECT_EQ(extract_PCISetting_info(&record), 0U);
  EXPECT_EQ(extract_PCISetting_info(&record), 0U);
  EXPECT_EQ(database.text("SELECT SettingID, PfaKey FROM PCISetting"), "NULL,0;NULL,0");
  shim().fail({.op = "get_content_values", .nth = 0});
  EXPECT_EQ(extract_PCISetting_info(&record), 4U);
  EXPECT_EQ(libc().logs, Texts{"error extract_PCISetting_info, ZEL_DB_STATUS_NO_MEMORY"});
}

class Merge : public DatabaseTest {
 protected:
  void SetUp() override {
    database.run_all({"INSERT INTO PCISetting (SettingID, PfaKey) VALUES ('A.a', 8)",
                      "INSERT INTO PCISetting (SettingID, PfaKey) VALUES ('A.b', 9)"});
    for (const char* key : {"8", "9"}) {
      database.run_all(
          {std::string("INSERT INTO PCIs (FunKey, DevKey, NodeIndex, SlotNo, SegNo, BusNo, DeviceNo, "
                       "FunctionNo, Location) VALUES (") +
               key + ", 65539, 2, 3, 4, 59, 0, 1, 1)",
           "INSERT INTO PCIAdapter (PCIFuncKey, PCIKey, CardName, ConnectorType) VALUES (5, 65539, "
           "'Adapter 5', '123456789')"});
    }
    shim().require_calls();
  }
};
ZELDB_ON_EVERY_ENGINE(Merge);

TEST_P(Merge, SaysWhatItAsksForAndWrites) {
  database.run("INSERT INTO PCIAdapter (PCIFuncKey, PCIKey) VALUES (8, 65539)");
  ASSERT_EQ(zeldb_merge_aim_ucm_pfa(), 0);
  const std::string position =
      "query|PCIs|NodeIndex,SlotNo,SegNo,BusNo,DeviceNo,FunctionNo,Location,DevKey,FunKey|FunKey=";
  const std::string card = "query|PCIAdapter|CardName,ConnectorType|PCIKey=65539||(null)|0";
  const std::string support = "query|PCIAdapter|AIMSupported,OOBSrc|PCIFuncKey=?|3:";
  EXPECT_EQ(shim().texts("query"),
            (Texts{"query|PCISetting|PfaKey|1 GROUP BY PfaKey||(null)|0", support + "8|(null)|0",
                   position + "8||(null)|0", card, support + "9|(null)|0", position + "9||(null)|0", card}));
  const std::vector<Call> updates = shim().calls("update");
  EXPECT_EQ(updates[0].where,
            "AIMSupported=3 AND PCIFuncKey NOT IN ( SELECT PfaKey FROM PCISetting) AND PCIFuncKey IN (SELECT "
            "FunKey "
            "FROM PCIs)");
  EXPECT_EQ(updates[0].puts, Texts{"uchar AIMSupported=0"});
  EXPECT_EQ(shim().calls("delete")[0].where,
            "AIMSupported=3 AND PCIFuncKey NOT IN ( SELECT PfaKey FROM PCISetting)");
  EXPECT_EQ(updates[1].where, "PCIFuncKey=8");
  EXPECT_EQ(shim().calls("insert")[0].puts,
            (Texts{"uint SegNo=4", "uint BusNo=59", "uint DeviceNo=0", "uint FunctionNo=1", "uint NodeNo=2",
                   "uint SlotNo=3", "text CardName=Adapter 3B:00:01", "text ConnectorType=1234567",
                   "uint AIMSupported=3", "uint PCIKey=65539", "uint PCIFuncKey=9", "uint Location=1"}));
}

TEST_P(Merge, EndsWithWhatStoppedIt) {
  const struct {
    const char* name;
    std::vector<Rule> rules;
    int status;
    size_t merged;
  } cases[] = {
      {"all", {}, 0, 2},
      {"fewer counted", {{.op = "row_count", .fewer = 1}}, 0, 1},
      {"failed step", {{.op = "step", .status = 5, .after = 1}}, 5, 1},
      {"failed step after the last", {{.op = "step", .status = 5, .after = 2}}, 5, 2},
      {"a lookup of the support fails", {{.op = "query", .table = "PCIAdapter", .status = 2}}, 0, 2},
      {"no keys", {{.op = "query", .table = "PCISetting", .status = 0}}, 0, 0},
      {"no functions", {{.op = "query", .table = "PCIs", .status = 2}}, 2, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    database.run("DELETE FROM PCIAdapter WHERE AIMSupported=3");
    shim().reset();
    for (const Rule& rule : c.rules) shim().fail(rule);
    EXPECT_EQ(zeldb_merge_aim_ucm_pfa(), c.status);
    EXPECT_EQ(database
                  .rows("SELECT _id FROM PCIAdapter WHERE AIMSupported=3 AND CardName='Adapter 3B:00:01' AND "
                        "ConnectorType='1234567' AND NodeNo=2")
                  .size(),
              c.merged);
  }
}

}  // namespace
}  // namespace zeldb_test
