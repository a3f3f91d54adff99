// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <cstring>
#include <functional>

#include "platform/zel_db.h"
#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/cpumem.h"

namespace zeldb_test {
namespace {

using Texts = std::vector<std::string>;

class Memory : public DatabaseTest {
 protected:
  // A row whose columns hold their places, from 1 on.
  void insert_places(const std::string& table, int columns) const {
    std::string values = "1";
    for (int i = 2; i <= columns; ++i) values += "," + std::to_string(i);
    database.run("INSERT INTO " + table + " VALUES (" + values + ")");
  }
  _zel_db_handle_t* handle = get_dmdb_handle(0, nullptr, 0);
  _ZELDB_Memory memory{};
};

std::string bytes_of(const auto& record) {
  return {reinterpret_cast<const char*>(&record), sizeof(record)};
}

TEST_P(Memory, ChecksAndFailures) {
  const _zel_db_param_t one{.Type = 3, .Reserved = 0, .Count = 1, .Value = 1};
  uint32_t w = 7;
  _ZELDB_Memory& m = memory;
  _ZELDB_Id_List list{};
  _ZELDB_Processor processor{};
  // Given null, with and without a handle; else no handle, query fails, no result, step fails, no row.
  const std::pair<std::string, std::function<int(bool)>> cases[] = {
      {"3 6 6 5 0 5 0", [&](bool n) { return zeldb_get_processor_list(n ? nullptr : &list); }},
      {"3 6 6 5 0 0 0", [&](bool n) { return zeldb_get_HBM_memory_list(n ? nullptr : &list); }},
      {"3 6 6 5 1 1 1", [&](bool n) { return zeldb_get_processor(n ? nullptr : &processor); }},
      {"3 6 6 5 1 1 1", [&](bool n) { return zeldb_get_memory_by_slot(n ? nullptr : &m, 1); }},
      {"3 6 6 5 1 1 1", [&](bool n) { return zeldb_get_memory_with_filter(&m, n ? nullptr : "0=?", &one); }},
      {"3 6 6 5 1 1 1", [&](bool n) { return zeldb_get_memory_with_filter(&m, "0=?", n ? nullptr : &one); }},
      {"3 3 6 5 10 5 10", [&](bool n) { return zeldb_get_mpfa_health_by_slot(1, n ? nullptr : &w, &w, &w); }},
      {"3 3 6 5 10 5 10", [&](bool n) { return zeldb_get_mpfa_health_by_slot(1, &w, n ? nullptr : &w, &w); }},
      {"3 3 6 0 0 0 0", [&](bool n) { return zeldb_update_dcpmm_smart_info(n ? nullptr : &m, 1); }}};
  constexpr const char* kFaults[] = {"", "get_dmdb_handle", "get_dmdb_handle", "query", "query", "step", ""};
  constexpr int kStatuses[] = {0, 0, 0, 5, 0, 5, 0};
  std::memset(&memory, 0xEE, sizeof(memory));
  const _ZELDB_Memory untouched = memory;
  for (const auto& [statuses, call] : cases) {
    std::string seen;
    for (int i = 0; i < 7; ++i) {
      shim().reset();
      shim().fail({.op = kFaults[i], .status = kStatuses[i]});
      seen += (i == 0 ? "" : " ") + std::to_string(call(i < 2));
    }
    EXPECT_EQ(seen, statuses) << call.target_type().name();
  }
  EXPECT_TRUE(bytes_of(memory) == bytes_of(untouched) && w == 7);
}

TEST_P(Memory, Records) {
  // clang-format off
  static const _ZELDB_Processor kProcessor = {1, 2, 3, 4, "5", "6", "7", 8, 9, 10, 11, 12, 13, "14", "15", "16", 17, 18,
      19, 20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33};
  static const _ZELDB_Memory kMemory = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, "12", "13", "14", "15", "16", "17", 18, 19,
      20, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, "41", "42", 43, 44, 45};
  // clang-format on
  static _ZELDB_Processor processor;
  processor._id = 1;
  insert_places("Processor", 33);
  insert_places("Memory", 45);
  ASSERT_EQ(zeldb_get_processor(&processor) + zeldb_get_memory_by_id(&memory, 1), 0);
  EXPECT_EQ(bytes_of(processor), bytes_of(kProcessor));
  EXPECT_EQ(bytes_of(memory), bytes_of(kMemory));
  const std::string long_text(65, 'x');
  const std::string values = "(4294967295, -1, 257, -2147483648, 9223372036854775807, '" + long_text + "')";
  database.run("INSERT INTO Memory (_id, SlotNo, FormFactor, MemSize, Capacity, PartNo) VALUES " + values);
  ASSERT_EQ(zeldb_get_memory_by_slot(&memory, -1), 0);
  EXPECT_TRUE(memory._id == 4294967295 && memory.SlotNo == 65535 && memory.FormFactor == 1);
  EXPECT_TRUE(memory.MemSize == 0x80000000 && memory.Capacity == INT64_MAX && memory.MemCapacity == 0);
  EXPECT_TRUE(memory.PartNo == long_text.substr(1) && memory.SerialNo[0] == '\0' && memory.RepairStatus == 0);
  uint32_t health[] = {7, 7, 7};
  database.run("INSERT INTO Memory (SlotNo, MajorHealth, RepairStatus) VALUES (-5, 300, 4294967295)");
  EXPECT_EQ(zeldb_get_mpfa_health_by_slot(-5, &health[0], &health[1], nullptr), 0);
  EXPECT_EQ(zeldb_get_mpfa_health_by_slot(-5, &health[0], &health[1], &health[2]), 0);
  EXPECT_TRUE(health[0] == 300 && health[1] == 0 && health[2] == 4294967295) << health[0] << " " << health[1];
  const Texts calls = shim().texts("query");
  EXPECT_EQ(calls[0] + calls[1], "query|Processor||_id=?|3:1|(null)|0query|Memory||_id=?|3:1|(null)|0");
  EXPECT_EQ(calls[2], "query|Memory||SlotNo=?|2:-1|(null)|0");
  EXPECT_EQ(calls[3], "query|Memory|MajorHealth,MinorHealth,RepairStatus|SlotNo=-5||(null)|0");
}

TEST_P(Memory, Insert) {
  std::memset(&memory, 0xFF, sizeof(memory));
  std::memset(memory.BankLocator, 0, sizeof(memory.BankLocator));
  EXPECT_EQ(zeldb_insert_memory_info(nullptr, nullptr), 3);
  EXPECT_EQ(zeldb_insert_memory_info(nullptr, &memory), 6);
  shim().fail({.op = "get_content_values"});
  EXPECT_EQ(zeldb_insert_memory_info(handle, &memory), 6);
  shim().fail({.op = "insert", .status = 13});
  for (int i = 0; i < 3; ++i) EXPECT_EQ(zeldb_insert_memory_info(handle, &memory), 0);
  const std::string all(65, '\xff');
  EXPECT_EQ(shim().calls("insert")[1].puts,
            (Texts{"uint64 ArrayId=4294967295", "int SlotNo=65535", "int TotalWidth=65535",
                   "int DataWidth=65535", "int MemSize=-1", "int FormFactor=255", "int MemType=255",
                   "int TypeDetail=65535", "int MaxSpeed=65535", "int ClockSpeed=65535", "int Attributes=255",
                   "text DevLocator=" + all, "text BankLocator=", "text Manufacturer=" + all,
                   "text SerialNo=" + all, "text AssetTag=" + all, "text PartNo=" + all}));
  EXPECT_EQ(database.text("SELECT _id, BankLocator, NodeIndex FROM Memory"), "1,,NULL;2,,NULL");
}

TEST_P(Memory, CleanupOfHighBandwidthMemory) {
  database.run("INSERT INTO Memory (DevLocator) VALUES ('CPU1 HbmIo0'), ('HbmX'), ('hbmio'), (NULL)");
  EXPECT_EQ(zeldb_hbm_memory_cleanup(nullptr), 6);
  EXPECT_EQ(zeldb_hbm_memory_cleanup(handle) + zeldb_hbm_memory_cleanup(handle), 0);
  EXPECT_EQ(database.text("SELECT DevLocator FROM Memory"), "HbmX;hbmio;NULL");
  EXPECT_EQ(shim().texts("raw_query")[0],
            "raw_query|delete from Memory where DevLocator like \"%HbmIo%\";|0");
  EXPECT_EQ(shim().calls("raw_query")[0].capacity, 128);
  shim().fail({.op = "raw_query", .status = 5});
  EXPECT_EQ(zeldb_hbm_memory_cleanup(handle), 5);
}

TEST_P(Memory, UpdateStoresTheColumnsOfTheKind) {
  const std::pair<int, std::string> cases[] = {
      {1, "0 4294967295,NULL,255,255,4294967295,255,65535,255,NULL,255"},
      {2, "0 NULL,4294967295,NULL,NULL,NULL,NULL,NULL,NULL,NULL,255"},
      {3, "3 NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL"},
      {4, "0 NULL,NULL,NULL,NULL,NULL,NULL,NULL,NULL,255,255"}};
  const std::string select =
      "SELECT RemainingLife, SecurityState, HealthStatus, AlarmTrips, LDShutdownCount, AITDRAMStatus,"
      "HealthStatusReason, LLShutdownStatus, FIPSMode, InfoMask FROM Memory";
  std::memset(&memory, 0xFF, sizeof(memory));
  for (const auto& [kind, expected] : cases) {
    database.run("DELETE FROM Memory");
    database.run("INSERT INTO Memory (_id) VALUES (4294967295)");
    const std::string status = std::to_string(zeldb_update_dcpmm_smart_info(&memory, kind));
    EXPECT_EQ(status + " " + database.text(select), expected) << kind;
  }
  EXPECT_EQ(shim().texts("update")[0], "update|Memory||_id=4294967295|||0");
  EXPECT_EQ(shim().calls("update").back().puts, (Texts{"uint FIPSMode=255", "uint InfoMask=255"}));
  shim().fail({.op = "get_content_values"});
  shim().fail({.op = "update", .status = 5});
  EXPECT_EQ(zeldb_update_dcpmm_smart_info(&memory, 1), 4);
  EXPECT_EQ(libc().logs, Texts{"error zeldb_update_dcpmm_smart_info, ZEL_DB_STATUS_NO_MEMORY"});
  EXPECT_EQ(zeldb_update_dcpmm_smart_info(&memory, 1), 5);
}

ZELDB_ON_EVERY_ENGINE(Memory);

// The status, and the ids or "?" where the list is untouched.
std::string read(int (*list)(_ZELDB_Id_List*)) {
  _ZELDB_Id_List ids{77, nullptr};
  std::string text = std::to_string(list(&ids)) + ":";
  if (ids.Count == 77) return text + "?";
  for (uint32_t i = 0; i < ids.Count; ++i) text += " " + std::to_string(ids.Items[i]);
  free(ids.Items);
  return text;
}

class IdLists : public DatabaseTest {
 protected:
  IdLists() {
    const std::string visible = std::string(59, '-') + "Hbm')";
    const std::string rows =
        "(9, 'Intel', 4096, 'CPU1 HbmIo0'), (6, 'intel', 4096, 'Hbm'), (7, 'Intel Corp', 4096, 'Hbm'),"
        "(8, 'Intel', NULL, NULL), (10, NULL, 4096, 'Hbm'), (11, 'Intel', 4096, 'hbm'),"
        "(5, 'Intel', 61439, '-" +
        visible + ", (4294967295, 'Intel', 12416, '" + visible;
    database.run("INSERT INTO Memory (_id, Manufacturer, TypeDetail, DevLocator) VALUES " + rows);
  }
};

TEST_P(IdLists, RowsTaken) {
  database.run("INSERT INTO Processor (_id) VALUES (3), (4)");
  EXPECT_EQ(read(zeldb_get_processor_list), "0: 3 4");
  EXPECT_EQ(read(zeldb_get_memory_list), "0: 5 6 7 8 9 10 11 4294967295");
  EXPECT_EQ(read(zeldb_get_HBM_memory_list), "0: 9 4294967295");
  EXPECT_EQ(read(zeldb_get_AEP_memory_list), "0: 9 11 4294967295");
  const auto calls = shim().calls("query");
  EXPECT_EQ(to_text(calls[2]), "query|Memory|_id,DevLocator|Manufacturer='Intel'||(null)|0");
  EXPECT_EQ(to_text(calls[3]), "query|Memory|_id,TypeDetail|Manufacturer='Intel'||(null)|0");
}

TEST_P(IdLists, Faults) {
  const std::tuple<Rule, std::string, std::string> cases[] = {
      {{.op = "query", .status = 2, .with_result = true}, "2:?", "2:?"},
      {{.op = "step", .status = 5, .after = 2}, "5: 5 6", "0:"},
      {{.op = "row_count", .fewer = 2}, "0: 5 6 7 8 9 10", "0: 9"},
      {{.op = "column", .status = 8, .column = 0}, "0:", "0: 0 0"}};
  for (const auto& [rule, all, hbm] : cases) {
    shim().fail(rule);
    EXPECT_EQ(read(zeldb_get_memory_list), all) << rule.op;
    shim().reset();
    shim().fail(rule);
    EXPECT_EQ(read(zeldb_get_HBM_memory_list), hbm) << rule.op;
    EXPECT_TRUE(rule.op != "step" || shim().calls("query")[0].steps == 5);  // whatever they say
    shim().reset();
  }
  for (auto* const list : {zeldb_get_memory_list, zeldb_get_AEP_memory_list}) {
    const bool possible = libc().fail_allocation(20);
    EXPECT_TRUE(read(list) == "4:" || !possible);
  }
}

ZELDB_ON_EVERY_ENGINE(IdLists);

std::string texts(auto format, std::initializer_list<uint32_t> codes, uint32_t size = 20) {
  std::string all;
  for (const uint32_t code : codes) {
    char buffer[20] = "~";
    format(code, buffer, size);
    format(code, nullptr, size);
    all.append(buffer).append("|");
  }
  return all;
}

TEST(MemoryTexts, OfCodes) {
  EXPECT_EQ(texts(bps_format_fips_str, {0, 1, 2, 3, 4, 0xABCDEF01}),
            "Non-FIPS|Non-FIPS(1)|Non-FIPS(2)|Enabled|others(0x4)|others(0xabcdef01)|");
  EXPECT_EQ(texts(bps_format_hstate_str, {0, 1, 2, 3, 4, 5}),
            "Normal|Noncritical|Critical|others(0x3)|Fatal|others(0x5)|");
  EXPECT_EQ(texts(bps_format_security_str, {0xFF, 0xDF, 0xD6, 0xD2, 0xD1}),
            "Not Supported|Frozen|Locked|Enabled|Disabled|");
  EXPECT_EQ(texts(bps_format_fips_str, {0, 9}, 5), "Non-|othe|");
  EXPECT_EQ(texts(bps_format_security_str, {0}, 1) + texts(bps_format_security_str, {0}, 0), "|~|");
}

}  // namespace
}  // namespace zeldb_test
