// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
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

  void parse(bool is_full = true) const {
    if (!is_full) fs::remove(folder_ / "markers" / "slowucm");
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
  // With a line of input.
  Outcome pending_with(const std::string& input, const std::string& arguments) const {
    Program program{
        .argv = {"sh", "-c", "printf '%s' '" + input + "' | " ZELDB_COMMAND_LINE " pending " + arguments},
        .env = {"VREL_LOG=" + log(), "ZEL_DB_TRACE=" + log(), "ZEL_PLATFORM_TRACE=" + log(),
                "CMR_CALL_LOG=" + log(), "ZEL_PLATFORM_DIR=" + folder_.string()}};
    return run_program(program);
  }
  std::string log() const { return folder_ / "log"; }
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

const std::string kSecret = "Ethernet-Slot2.Port2ChapSecret";

// A setting of type 5, one that a word tells, and one that is a choice after all.
TEST_P(Pending, KeepsSecrets) {
  const std::string named = "Onboard-Lan.Named";
  database.run_all({
      "INSERT INTO PCISetting (SettingID, PfaKey, Flags, Type, FullDesc, CurrentValue, PendingValue, "
      "Defvalue) "
      "VALUES ('" +
          named + "', 262144, 1, 4, 'The Password of the port', 'hushOld', 'hushNew', 'hushDefault')",
      "INSERT INTO PCISetting (SettingID, PfaKey, Flags, Type, ShortDesc, CurrentValue, PendingValue) "
      "VALUES ('Onboard-Lan.Choice', 262144, 1, 1, 'Password needed', 'Off', 'On')",
  });
  const Outcome set = pending_with("hushWord1234\n", "--set " + kSecret + "=-");
  EXPECT_EQ(set.exit_status, 0) << set.err;
  EXPECT_EQ(in_bios(kSecret), "hushWord1234");
  expect_failure(pending_with("", "--set " + kSecret + "=-"), 1, kSecret + ": standard input has no value");
  expect_failure(pending({"--set", "=hush"}), 2, "ID=VALUE without an ID");
  const fs::path exported = folder_ / "export.db";
  ASSERT_EQ(run_zeldb({"export", exported}, {"ZEL_PLATFORM_DIR=" + folder_.string()}).exit_status, 0);
  const Outcome listed =
      pending({"--raw", "--no-headings", "--output", "SettingID,CurrentValue,PendingValue,Defvalue"});
  const Outcome read =
      pending_with("", "--from " + exported.string() +
                           " --raw --no-headings --output SettingID,CurrentValue,PendingValue,Defvalue");
  EXPECT_EQ(read.out, listed.out);
  for (const std::string& line :
       {kSecret + "\t\t(other secret)\t\n", named + "\t(secret)\t(other secret)\t(secret)\n",
        std::string("Onboard-Lan.Choice\tOff\tOn\t\n")})
    EXPECT_NE(listed.out.find(line), std::string::npos) << line << listed.out;
  const std::string settings = run_zeldb({"settings", "00040000", "--json"}).out;
  EXPECT_NE(settings.find(named), std::string::npos);
  for (const std::string& shown : {listed.out, settings, content_of(exported), content_of(log())})
    EXPECT_EQ(shown.find("hush"), std::string::npos) << shown.substr(0, 4000);
  expect_change({"--cancel", kSecret});
  EXPECT_EQ(in_bios(kSecret), "");
  EXPECT_FALSE(is_listed(kSecret));
}

// Its values are empty in the inventory, but the service has them.
TEST_P(Pending, KnowsTheValuesAfterALiteRun) {
  const std::vector<std::string> raw{"--raw", "--output", "SettingID,CurrentValue,PendingValue"};
  database.run("DELETE FROM PCISetting");
  parse();
  const std::string full = pending(raw).out;
  EXPECT_EQ(std::ranges::count(full, '\n'), 10) << full;
  database.run("DELETE FROM PCISetting");
  parse(false);
  const Outcome lite = pending(raw);
  EXPECT_EQ(lite.err, "");
  std::istringstream lines(full);
  for (std::string line; std::getline(lines, line);) {
    // A lite run takes the collections with a "-" in their names.
    const bool is_taken = line.substr(0, line.find('.')).find('-') != std::string::npos;
    EXPECT_EQ(lite.out.find(line + "\n") != std::string::npos, is_taken || line.starts_with("SettingID"))
        << line << "\n"
        << lite.out;
  }
  expect_change({"--set", kSpeed + "=1G full"});
  EXPECT_TRUE(is_listed(kSpeed));
  parse(false);
  EXPECT_TRUE(is_listed(kSpeed));
  expect_change({"--cancel", kSpeed});
  EXPECT_FALSE(is_listed(kSpeed));
  fs::remove(folder_ / "bios.json");
  EXPECT_NE(pending({}).err.find("warning: values of settings are not known"), std::string::npos);
}

TEST_P(Pending, TellsWhoRefuses) {
  const std::vector<std::string> set{"--set", kSpeed + "=1G full"};
  std::ofstream(folder_ / "platform.json")
      << R"({"fail":[{"function":"cmr_set_bios_attribute_value","call":1,"rc":5}]})";
  expect_failure(pending(set), 1, kSpeed + ": refused by the BIOS configuration service");
  setenv("ZEL_DB_URL", url_of_nothing(database).c_str(), 1);
  expect_failure(pending(set), 1, "functions: cannot open ");
}

}  // namespace
}  // namespace zeldb_test
