// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/cli/sample.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

const std::string kSpeed = "Onboard-Lan.Port1LinkSpeed";
const std::string kFunctions = "Ocp-Ethernet.Port2VirtualFunctions";

// A controller of the test's own, after a full run of the parser.
class Pending : public DatabaseTest {
 protected:
  void SetUp() override {
    fs::create_directories(folder_ / "markers");
    for (const char* file : {"bios.json", "platform.json"})
      fs::copy_file(fs::path(ZELDB_SAMPLES) / file, folder_ / file);
    std::ofstream(folder_ / "markers" / "slowucm") << "";
    load_sample();
    parse();
  }

  void parse() const {
    const Outcome outcome = run_program({.argv = {ZELDB_PARSER},
                                         .env = {"VREL_LOG=/dev/null", "ZEL_PLATFORM_DIR=" + folder_.string(),
                                                 "ZELDB_SHIM_TMP=" + (folder_ / "markers").string()},
                                         .preload = ZELDB_PRELOAD});
    ASSERT_EQ(outcome.exit_status, 0) << outcome.out << outcome.err;
  }
  Outcome pending(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "pending");
    return run_zeldb(arguments, {"ZEL_PLATFORM_DIR=" + folder_.string()});
  }
  void expect_change(const std::vector<std::string>& arguments) const {
    const Outcome outcome = pending(arguments);
    EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "");
  }
  // With the service.
  std::string in_bios(const std::string& id) const {
    const json bios = json::parse(std::ifstream(folder_ / "bios.json"));
    for (const json& collection : bios["collections"]) {
      for (const json& attribute : collection["attributes"]) {
        if (collection["name"].get<std::string>() + "." + attribute.value("AttributeName", "") == id)
          return attribute["pending"];
      }
    }
    return "no such setting";
  }
  std::string everywhere(const std::string& id) const {
    const std::string stored =
        database.text("SELECT PendingValue FROM PCISetting WHERE SettingID='" + id + "'");
    return stored == in_bios(id) ? stored : stored + " but " + in_bios(id);
  }
  bool is_listed(const std::string& id) const {
    return pending({"--raw"}).out.find(id + "\t") != std::string::npos;
  }

  const fs::path folder_ = database.folder();
};
ZELDB_ON_EVERY_ENGINE(Pending);

TEST_P(Pending, ListsWhatDiffersFromTheValueInForce) {
  const Outcome listed = pending({"--raw", "--output", "SettingID,CurrentValue,PendingValue"});
  EXPECT_EQ(listed.exit_status, 0);
  EXPECT_EQ(std::ranges::count(listed.out, '\n'), 11) << listed.out;
  EXPECT_NE(listed.out.find(kFunctions + "\t16\t64\n"), std::string::npos) << listed.out;
  EXPECT_FALSE(is_listed(kSpeed));
}

// The last one to be set counts, also when it is the value in force, and the parser finds it so.
TEST_P(Pending, KeepsTheLastValue) {
  for (const std::string value : {"1G full", "Auto", "10M full", "Auto", "100M full"}) {
    expect_change({"--set", kSpeed + "=" + value});
    EXPECT_EQ(everywhere(kSpeed), value);
    parse();
    EXPECT_EQ(everywhere(kSpeed), value);
    EXPECT_EQ(is_listed(kSpeed), value != "Auto");
  }
  expect_change({"--cancel", kSpeed, "--set", kFunctions + "=0"});
  parse();
  EXPECT_EQ(everywhere(kSpeed), "Auto");
  EXPECT_EQ(everywhere(kFunctions), "0");
}

TEST_P(Pending, SetsAllOrNothing) {
  const std::string good = kSpeed + "=1G full";
  const std::string secret = "Ethernet-Slot2.Port2ChapSecret";
  database.run("UPDATE PCISetting SET SettingID='" + std::string(66, 'x') +
               "' WHERE SettingID='NvmeDrives.Slot7WriteCache'");
  const struct {
    std::vector<std::string> arguments;
    int status;
    std::string why;
  } cases[] = {
      {{"--set", kFunctions + "=12"}, 1, kFunctions + ": 12 is no step of 8 from 0"},
      {{"--set", "No.Such=1"}, 1, "No.Such: no such setting"},
      {{"--cancel", "No.Such"}, 1, "No.Such: no such setting"},
      {{"--cancel", secret}, 1, secret + ": its current value is not known"},
      {{"--set", secret + "=it's"}, 1, secret + ": a single quote cannot be stored"},
      {{"--set", secret + "=" + std::string(69, 's')}, 1, secret + ": a value of more than 68 characters"},
      {{"--set", std::string(66, 'x') + "=Enabled"}, 1, std::string(66, 'x') + ": cannot be changed"},
      {{"--set", "Enabled"}, 2, "pending: --set: Enabled is no ID=VALUE"},
      {{"--cancel", kSpeed}, 2, "pending: " + kSpeed + " is given twice"},
      {{"--from", "export"}, 2, "pending: --from excludes --set"},
  };
  for (const auto& wrong : cases) {
    std::vector<std::string> arguments{"--set", good};
    arguments.insert(arguments.end(), wrong.arguments.begin(), wrong.arguments.end());
    expect_failure(pending(arguments), wrong.status, "zeldb: " + wrong.why);
  }
  EXPECT_EQ(everywhere(kSpeed), "Auto");

  const Outcome forced = pending({"--set", good, "--set", kFunctions + "=12", "--force"});
  EXPECT_EQ(forced.exit_status, 0);
  EXPECT_EQ(forced.err, "zeldb: warning: " + kFunctions + ": 12 is no step of 8 from 0\n" +
                            "zeldb: warning: " + kFunctions + ": is hidden if Port2SrIov == Disabled\n");
  EXPECT_EQ(everywhere(kSpeed) + everywhere(kFunctions), "1G full12");
}

TEST_P(Pending, TellsWhoRefuses) {
  const std::vector<std::string> set{"--set", kSpeed + "=1G full"};
  std::ofstream(folder_ / "platform.json")
      << R"({"fail":[{"function":"cmr_set_bios_attribute_value","call":1,"rc":5}]})";
  expect_failure(pending(set), 1, kSpeed + ": refused by the BIOS configuration service");
  setenv("ZEL_DB_URL", url_of_nothing(database).c_str(), 1);
  expect_failure(pending(set), 1, "functions: the database cannot be reached");
}

}  // namespace
}  // namespace zeldb_test
