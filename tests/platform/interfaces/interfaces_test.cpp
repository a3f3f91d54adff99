// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/aim_config.h"
#include "platform/peci.h"
#include "platform/predicates.h"
#include "platform/propdb.h"
#include "platform/ptables.h"
#include "platform/zel_db.h"
#include "platform/zel_db_admin.h"

namespace {
namespace fs = std::filesystem;

void write(const char* file, const std::string& text) {
  std::ofstream(file) << text;
}

std::string read(const char* file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class Interfaces : public testing::Test {
 protected:
  void SetUp() override {
    fs::current_path(mkdtemp(folder_));
    setenv("ZEL_PLATFORM_DIR", ".", 1);
    setenv("ZEL_PLATFORM_TRACE", "trace", 1);
    setenv("VREL_LOG", "log", 1);
    setenv("ZEL_DB_URL", ("sqlite://" + std::string(folder_)).c_str(), 1);
  }
  void TearDown() override { fs::remove_all(folder_); }
  char folder_[32] = "/tmp/interfaces.XXXXXX";
};

TEST_F(Interfaces, PropertyValuesAreReadInsideTheirBytes) {
  const std::pair<std::string, std::string> cases[] = {{"", "- - -"},
                                                       {"07", " - -"},
                                                       {"07FF0000", "\xff 255 -"},
                                                       {"07FF000080", "\xff 255 2147483903"},
                                                       {"00414243444500", "ABC 65 1145258561"}};
  uint32_t dword = 0;
  uint8_t byte = 0;
  char text[4];
  EXPECT_NE(propdb_get_dword("a", &dword), 0);  // no database yet
  ASSERT_EQ(zel_db_create(nullptr, nullptr, 0), 0);
  _zel_db_handle_t* const handle = zel_db_open("localhost", "root", "", "propertiesdb", 0);
  for (const auto& [bytes, expected] : cases) {
    std::string sql = "insert into propertiesDCTbl (propName,propValue) values ('a\"b''";
    sql.append(bytes).append("',x'").append(bytes).append("')");
    ASSERT_EQ(zel_db_raw_query(handle, sql.c_str(), static_cast<int>(sql.size()), nullptr), 0);
    const std::string path = "a\"b'" + bytes;
    std::string answer = propdb_get_string(path.c_str(), text, sizeof(text)) == 0 ? text : "-";
    answer += " " + (propdb_get_byte(path.c_str(), &byte) == 0 ? std::to_string(byte) : "-");
    answer += " " + (propdb_get_dword(path.c_str(), &dword) == 0 ? std::to_string(dword) : "-");
    EXPECT_EQ(answer, expected) << bytes;
  }
  EXPECT_TRUE(propdb_get_string("a\"b'07", text, 0) != 0 && propdb_get_byte("a", &byte) != 0);
  zel_db_close(handle);
}

TEST_F(Interfaces, PlatformTablesAndPredicates) {
  const std::tuple<const char*, std::string, int> cases[] = {
      {R"({"platform_flags":32768,"palomir":true})", "32768", 1},
      {R"({"platform_flags":-1})", "4294967295", 0},
      {"{}", "0", 0},
      {R"({"platform_flags":"x","palomir":1})", "-", 0},
      {R"({"fail":[{"function":"ptables_from_ram","call":5,"rc":4}]})", "-", 0},
      {R"({"fail":[{"function":"ptables_lookup_platform_direct","call":4,"rc":4}]})", "-", 0}};
  for (const auto& [text, flags, palomir] : cases) {
    write("platform.json", text);
    ptables_platform platform{};
    void* ram = nullptr;
    const bool ok = ptables_from_ram(&ram) == 0 && ptables_lookup_platform_direct(ram, &platform) == 0;
    ptables_free(ram);
    EXPECT_EQ(ok ? std::to_string(platform.Flags) : "-", flags) << text;
    EXPECT_EQ(is_palomir_platform(), palomir) << text;
  }
  EXPECT_NE(read("log").find("error: ./platform.json: palomir: not true or false\n"), std::string::npos);
}

TEST_F(Interfaces, AdapterConfigurationIsCreatedAndKept) {
  int value = 7;
  EXPECT_TRUE(aim_config_get_int("bits", &value) == 0 && value == 7);
  ASSERT_EQ(aim_config_set_int("bits", -3, 0) + aim_config_set_int("other", 0, 0), 0);
  EXPECT_TRUE(aim_config_get_int("bits", &value) != 0 && value == -3);
  write("aim_config.json", "[");
  EXPECT_TRUE(aim_config_get_int("bits", &value) == 0 && aim_config_set_int("bits", 1, 0) != 0);
  EXPECT_EQ(read("trace"),
            "aim_config_get_int|bits|0\naim_config_set_int|bits,-3,0|0\naim_config_set_int|other,0,0|0\n"
            "aim_config_get_int|bits|1\naim_config_get_int|bits|0\naim_config_set_int|bits,1,0|-1\n");
  EXPECT_EQ(aim_config_get_int(nullptr, &value) + aim_config_get_int("bits", nullptr), 0);
  EXPECT_NE(aim_config_set_int(nullptr, 1, 0), 0);
}

TEST_F(Interfaces, PeciAnswersByItsScript) {
  const std::pair<const char*, std::string> cases[] = {
      {R"({"peci":[{"ret":0,"cc":64,"data":[12,1,2,3,4]},{"ret":-5,"cc":9,"data":[9]}]})",
       "0,64,12,1,2,3,238"},
      {nullptr, "-5,9,9,0,0,0,238"},
      {nullptr, "-5,9,9,0,0,0,238"},
      {R"({"peci":[{"data":[256]}]})", "-1,238,238,238,238,238,238"},
      {"{}", "-1,0,0,0,0,0,238"}};
  for (const auto& [script, expected] : cases) {
    if (script != nullptr) write("platform.json", script);
    uint8_t bytes[6] = {238, 238, 238, 238, 238, 238};  // the code, the data, and one behind
    const int ret = peci_RdEndPointConfigPciLocal(0x30, 0, 1, 2, 3, 0x54C, 4, bytes + 1, bytes);
    std::string answer = std::to_string(ret);
    for (const int byte : bytes) answer += "," + std::to_string(byte);
    EXPECT_EQ(answer, expected);
  }
  EXPECT_EQ(read("log"), "error: ./platform.json: peci[0]: data[0]: not a byte\n");
  EXPECT_EQ(read("trace").find("peci_RdEndPointConfigPciLocal|48,0,1,2,3,1356,4|0\npeci_"), 0U);
}

}  // namespace
