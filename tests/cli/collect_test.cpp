// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <regex>
#include <string>
#include <vector>

#include "tests/cli/sample.h"
#include "tests/support/mariadb_server.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

class Collect : public DatabaseTest {
 protected:
  // web-3 has other firmware and a worn drive.
  void SetUp() override {
    fs::create_directory(fleet_);
    load_sample();
    add("web-1.zeldb");
    add("web-2.db");
    database.run("UPDATE AimDisks SET FwVersion='TN02' WHERE Location='Bay 0'");
    database.run("UPDATE AimDisks SET RemainLife=9 WHERE Location='7MM Bay0'");
    add("web-3");
  }
  void TearDown() override {
    setenv("ZEL_DB_URL", database.url().c_str(), 1);
    if (GetParam() == Engine::MariaDb && !IsSkipped())
      database.run("DROP DATABASE IF EXISTS " + database.text("SELECT REPLACE(DATABASE(), 'dmdb', 'fleet')"));
  }

  void add(const std::string& name) const {
    ASSERT_EQ(run_zeldb({"export", "--force", fleet_ / name}).exit_status, 0);
  }
  void change(const std::string& name, const std::vector<std::string>& statements) const {
    const Redirected redirected(fleet_ / name, database);
    database.run_all(statements);
  }
  Outcome collect(const std::string& what, const std::string& to) const {
    return run_zeldb({"collect", "--to", to, what}, {"ZEL_DB_URL=" + url_of_nothing(database)});
  }
  Outcome collect(const std::string& what = "") const { return collect(fleet_ / what, database.url()); }
  std::string ask(const std::string& select) const { return database.text(select, "fleet"); }

  const fs::path fleet_ = fs::path(database.folder()) / "fleet";
};
ZELDB_ON_EVERY_ENGINE(Collect);

TEST_P(Collect, AnswersTheQuestionsOfTheDocument) {
  EXPECT_EQ(collect().out, "3 machines: 3 stored, 0 unchanged\n");
  const std::string document = content_of(ZELDB_DOCS "/fleet.md");
  const std::regex question("```sql\n([^`]*);\n```\n\n```\n([^`]*)```");
  int questions = 0;
  for (std::sregex_iterator found(document.begin(), document.end(), question), end; found != end; ++found) {
    std::string answer;
    for (const auto& row : database.rows((*found)[1], "fleet")) {
      for (const Cell& cell : row) answer += (&cell == row.data() ? "" : "|") + cell.value_or("");
      answer += "\n";
    }
    EXPECT_EQ(answer, (*found)[2].str()) << (*found)[1];
    ++questions;
  }
  EXPECT_EQ(questions, 3);
}

TEST_P(Collect, WritesWhatHasChanged) {
  std::ofstream(fleet_ / "bad.zeldb") << content_of(fleet_ / "web-1.zeldb").substr(0, 9000);
  const std::string damaged =
      "zeldb: " + (fleet_ / "bad.zeldb").string() + ": database disk image is malformed\n";
  Outcome outcome = collect();
  EXPECT_EQ(outcome.out, "4 machines: 3 stored, 0 unchanged, 1 not read\n");
  EXPECT_EQ(outcome.err, damaged);
  EXPECT_EQ(outcome.exit_status, 1);
  database.run("UPDATE FleetDisks SET Model='as it was'", "fleet");
  outcome = collect();
  EXPECT_EQ(outcome.out, "4 machines: 0 stored, 3 unchanged, 1 not read\n");

  change("web-2.db", {"DELETE FROM AimDisks WHERE Location='Bay 0'",
                      "UPDATE ZeldbExport SET Written='9027-01-02 03:04:05'"});
  EXPECT_EQ(collect("web-2.db").out, "1 machines: 1 stored, 0 unchanged\n");
  const std::string drives = "SELECT COUNT(*) FROM FleetDisks WHERE Location='Bay 0' AND Machine='web-";
  EXPECT_EQ(ask(drives + "1'") + ask(drives + "2'"), "10");
  EXPECT_EQ(ask("SELECT Machine FROM FleetMachines WHERE Taken='9027-01-02 03:04:05'"), "web-2");
  EXPECT_EQ(ask("SELECT DISTINCT Machine FROM FleetDisks WHERE Since='9027-01-02 03:04:05'"), "web-2");
  EXPECT_EQ(ask("SELECT COUNT(*) FROM FleetMemory WHERE Since='9027-01-02 03:04:05'"), "0");
  EXPECT_EQ(ask("SELECT DISTINCT Machine FROM FleetDisks WHERE Model='as it was' ORDER BY 1"), "web-1;web-3");
}

// The values are those of the listing; nothing in them, and nothing in the file's name, is taken for SQL.
TEST_P(Collect, TakesHostileFiles) {
  const std::string name = "o'b\"r`; --\\ \xC3\xA9";
  fs::rename(fleet_ / "web-3", fleet_ / name);
  fs::copy(fleet_ / name, fleet_ / "wide");
  for (const std::string& file : {name, std::string("wide")}) {
    change(file, {"CREATE TABLE Loose AS SELECT * FROM AimDisks", "DROP TABLE AimDisks",
                  "ALTER TABLE Loose RENAME TO AimDisks", "ALTER TABLE AimDisks ADD COLUMN Since TEXT"});
  }
  change("wide", {"UPDATE AimDisks SET Model=printf('%.*c', 99999, 'w')"});
  change(name, {"UPDATE AimDisks SET Model='''); DROP TABLE FleetDisks; -- \"`\\', Temperature=-1, "
                "SerialNo='\xC3\xA9\xFF\xC0\xF0\x9F\x98\x80', FwVersion=CAST(x'41004200' AS TEXT)",
                "CREATE TABLE Strange (Machine TEXT)", "UPDATE ZeldbSchema SET Version=99",
                "DROP TABLE ZeldbExport", "CREATE TABLE ZeldbExport (FormatVersion, Written)",
                "INSERT INTO ZeldbExport VALUES (1, x'00FF')", "DROP TABLE Memory"});
  fs::rename(fleet_ / "web-2.db", fleet_ / "\xFF.db");
  const Outcome outcome = collect();
  EXPECT_EQ(outcome.out, "4 machines: 2 stored, 0 unchanged, 2 not read\n") << outcome.err;
  EXPECT_NE(outcome.err.find("the name of the machine is no UTF-8\n"), std::string::npos) << outcome.err;
  EXPECT_EQ(ask("SELECT COUNT(*), COUNT(Taken) FROM FleetMachines"), "2,1");
  const auto hex = [](const std::string& text) {
    std::string all;
    char digits[3];
    for (const char c : text) {
      std::snprintf(digits, sizeof(digits), "%02X", static_cast<unsigned char>(c));
      all += digits;
    }
    return all;
  };
  std::vector<std::string> expected;
  const Outcome listing = run_zeldb({"disks", "--json", "--from", fleet_ / name});
  const Json drives = Json::parse(listing.out);
  for (const Json& drive : drives.at("rows")) {
    std::string& row = expected.emplace_back(hex(name));
    for (const char* column : {"Model", "SerialNo", "FwVersion"})
      row += hex(drive.at(column).is_null() ? "" : drive.at(column).get<std::string>());
    row += drive.at("Temperature").dump();
  }
  std::vector<std::string> stored;
  const char* const select =
      "SELECT HEX(Machine), HEX(Model), HEX(SerialNo), HEX(FwVersion), Temperature FROM FleetDisks "
      "WHERE Machine<>'web-1'";
  for (const auto& cells : database.rows(select, "fleet")) {
    std::string& row = stored.emplace_back();
    for (const Cell& cell : cells) row += cell.value_or("");
  }
  std::ranges::sort(expected);
  std::ranges::sort(stored);
  EXPECT_EQ(stored, expected);
  EXPECT_NE(stored.at(0).find("C3A9EFBFBD"), std::string::npos) << stored.at(0);
}

// The server dies in the middle of the last table of a machine.
TEST(CollectOutage, LeavesNoHalfMachine) {
  const char* const folder = std::getenv("ZELDB_TEST_MARIADB_FOLDER");
  if (folder == nullptr) GTEST_SKIP() << "no MariaDB server: run the tests under with_mariadb";
  const Database database(Engine::Sqlite);
  const fs::path fleet = fs::path(database.folder()) / "fleet";
  fs::create_directory(fleet);
  load_sample();
  ASSERT_EQ(run_zeldb({"export", fleet / "m0"}).exit_status, 0);
  for (int number = 1; number < 100; ++number) fs::copy(fleet / "m0", fleet / ("m" + std::to_string(number)));
  MariaDbServer server(folder, fs::path(folder) / "pristine");
  server.start({"--skip-networking"});
  const std::string url = "mariadb://root@localhost/?socket=" + server.socket();
  const auto collect = [&](const fs::path& what) { return run_zeldb({"collect", "--to", url, what}); };
  ASSERT_EQ(collect(fleet / "m5").exit_status, 0);
  setenv("ZEL_DB_URL", url.c_str(), 1);
  const auto ask = [&](const std::string& select) { return database.text(select, "fleet"); };
  database.run(
      "CREATE TRIGGER Hold BEFORE INSERT ON FleetPending FOR EACH ROW "
      "SET NEW.Since=IF(NEW.Machine='m70' AND SLEEP(60), NULL, NEW.Since)",
      "fleet");
  auto run = std::async(std::launch::async, collect, fleet);
  while (ask("SELECT COUNT(*) FROM information_schema.PROCESSLIST WHERE STATE='User sleep'") == "0") continue;
  server.kill();
  const Outcome outcome = run.get();
  expect_failure(outcome, 1, "connection lost");
  EXPECT_NE(outcome.err.find("(64 of 100 machines are there, each as a whole;"), std::string::npos)
      << outcome.err;

  server.start({"--skip-networking"});
  const std::string wrong =
      "SELECT COUNT(*) FROM FleetMachines m WHERE "
      "(SELECT COUNT(*) FROM FleetDisks d WHERE d.Machine=m.Machine)<>9 OR "
      "(SELECT COUNT(*) FROM FleetPending p WHERE p.Machine=m.Machine)<>1";
  EXPECT_EQ(ask("SELECT COUNT(*) FROM FleetMachines"), "64");
  EXPECT_EQ(ask("SELECT COUNT(*), COUNT(DISTINCT Machine) FROM FleetDisks"), "576,64");
  EXPECT_EQ(ask(wrong), "0");
  database.run("DROP TRIGGER Hold", "fleet");
  EXPECT_EQ(collect(fleet).out, "100 machines: 36 stored, 64 unchanged\n");
  EXPECT_EQ(ask("SELECT COUNT(*), COUNT(DISTINCT Machine) FROM FleetDisks"), "900,100");
  EXPECT_EQ(ask(wrong), "0");
  setenv("ZEL_DB_URL", database.url().c_str(), 1);
}

}  // namespace
}  // namespace zeldb_test
