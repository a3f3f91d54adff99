// SPDX-License-Identifier: Apache-2.0
//
// Many machines at once: exports of the sample controller, some of them changed.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "tests/cli/sample.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

class Fleet : public DatabaseTest {
 protected:
  // web-2 and web-10 alike but for a serial number, web-9 masked, and web-3 damaged.
  void SetUp() override {
    for (const fs::path& made : {fleet_, temporary_}) fs::create_directory(made);
    load_sample();
    add("web-2.zeldb");
    add("web-9", {"--mask"});
    database.run("UPDATE AimDisks SET SerialNo='another' WHERE Location='Bay 1'");
    add("web-10.db");
    std::ofstream(fleet_ / "web-3.zeldb") << content_of(fleet_ / "web-2.zeldb").substr(0, 9000);
    std::ofstream(fleet_ / ".hidden") << "x";
  }

  void add(const char* name, std::vector<std::string> options = {}) const {
    options.insert(options.begin(), {"export", fleet_ / name});
    ASSERT_EQ(run_zeldb(options).exit_status, 0);
  }
  Outcome zeldb(const std::vector<std::string>& arguments) const {
    return run_zeldb(arguments, {"TMPDIR=" + temporary_.string(), "ZEL_DB_URL=" + url_of_nothing(database)});
  }

  const fs::path folder_ = database.folder();
  const fs::path fleet_ = folder_ / "fleet";
  const fs::path temporary_ = folder_ / "tmp";
};
ZELDB_ON_EVERY_ENGINE(Fleet);

TEST_P(Fleet, IsOneListing) {
  const Outcome whole = zeldb({"disks", "--json", "--from", fleet_});
  EXPECT_EQ(whole.exit_status, 1);
  EXPECT_EQ(whole.err,
            "zeldb: " + (fleet_ / "web-3.zeldb").string() + ": database disk image is malformed\n");
  Json expected = Json::array();
  for (const std::string file : {"web-2.zeldb", "web-9", "web-10.db"}) {
    const Json one = Json::parse(zeldb({"disks", "--json", "--from", fleet_ / file}).out);
    EXPECT_GT(one.at("rows").size(), 3U);
    for (const Json& row : one.at("rows")) {
      expected.push_back({{"Machine", file.substr(0, file.find('.'))}});
      expected.back().update(row);
    }
  }
  EXPECT_EQ(Json::parse(whole.out).at("rows"), expected);

  const Outcome two =
      zeldb({"disks", "--json", "--mask", "--from", fleet_ / "web-10.db", "--from", fleet_ / "web-2.zeldb"});
  EXPECT_EQ(two.exit_status, 0) << two.err;
  std::map<std::string, std::string> machines;  // by their drives
  const Json masked = Json::parse(two.out);
  for (const Json& row : masked.at("rows"))
    machines[row.at("SerialNo").dump()] += row.at("Machine").get<std::string>() + " ";
  EXPECT_EQ(machines["\"serial-0001\""], "machine-0001 machine-0002 ");
  const auto is_alone = [](const auto& drive) { return drive.second == "machine-0001 "; };
  EXPECT_EQ(std::ranges::count_if(machines, is_alone), 1);
  const Outcome table = zeldb({"--from", fleet_, "memory", "--output", "Machine,MemSize", "--sort=-Machine"});
  EXPECT_TRUE(table.out.starts_with("MACHINE     MIB\nweb-10  ")) << table.out;
  EXPECT_NE(zeldb({"functions", "--tree", "--from", fleet_}).out.find("web-9: "), std::string::npos);
  const Outcome checked = zeldb({"check", "--from", fleet_});
  EXPECT_EQ(checked.exit_status, 3);
  EXPECT_TRUE(checked.out.starts_with("UNKNOWN: 0 critical, ")) << checked.out;
  EXPECT_NE(checked.out.find("warnings, 1 not read\nMACHINE"), std::string::npos);
  for (const std::vector<std::string>& of_one : std::vector<std::vector<std::string>>{
           {"show", "10"}, {"report", "-"}, {"redfish", "x"}, {"baseline", "-"}, {"export", "x"}})
    expect_failure(zeldb({"--from", fleet_, of_one[0], of_one[1]}), 2, ": --from: takes one file, of one");
  EXPECT_TRUE(fs::is_empty(temporary_));
}

// With machines of other firmware, and one without a drive.
TEST_P(Fleet, DiffersAmongItself) {
  fs::remove(fleet_ / "web-3.zeldb");
  const std::string reference = fleet_ / "web-2.zeldb";
  const Outcome two = zeldb(
      {"diff", reference, "--raw", "--no-headings", "--from", fleet_, "--output", "Machine,Change,Place"});
  EXPECT_EQ(two.exit_status, 1) << two.err;
  EXPECT_NE(two.out.find("web-10\treplaced\tBay 1\n"), std::string::npos) << two.out;
  EXPECT_EQ(two.out.find("web-2"), std::string::npos) << two.out;
  EXPECT_EQ(zeldb({"diff", reference, "--from", reference}).exit_status, 0);

  EXPECT_EQ(zeldb({"diff", "--fleet", fleet_}).exit_status, 0);
  database.run("UPDATE AimDisks SET FwVersion='older' WHERE Location='Bay 1'");
  add("web-11.db");
  database.run("DELETE FROM AimDisks WHERE Location='Bay 1'");
  add("web-12.db");
  const Outcome groups = zeldb({"diff", "--fleet", fleet_, "--raw", "--no-headings"});
  EXPECT_EQ(groups.exit_status, 1) << groups.err;
  EXPECT_EQ(groups.out,
            "4\tdrive\tBay 1\tpart\tthere\tweb-2 web-9 web-10 web-11\n"
            "1\tdrive\tBay 1\tpart\tnot there\tweb-12\n"
            "3\tdrive\tBay 1\tfirmware\tD3MU401\tweb-2 web-9 web-10\n"
            "1\tdrive\tBay 1\tfirmware\tolder\tweb-11\n");
  std::ofstream(fleet_ / "web-13") << "x";
  const Outcome damaged = zeldb({"diff", "--fleet", fleet_, "--json"});
  EXPECT_EQ(damaged.exit_status, 2);
  EXPECT_EQ(damaged.err, "zeldb: " + (fleet_ / "web-13").string() + ": is no export of zeldb\n");
  EXPECT_EQ(Json::parse(damaged.out).at("rows").size(), 4U);
  expect_failure(zeldb({"diff", fleet_ / "web-13", "--from", fleet_}), 2, "web-13: is no baseline");
}

// The program is stopped when it has told of the first machine, so that the time for it comes.
TEST_P(Fleet, ShowsItsProgressOnATerminal) {
  fs::rename(fleet_ / "web-3.zeldb", fleet_ / "a");
  for (int number = 100; number < 160; ++number)
    fs::create_hard_link(fleet_ / "web-2.zeldb", fleet_ / std::to_string(number).insert(0, "web-"));
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    const std::string command =
        "exec " ZELDB_COMMAND_LINE " memory --from '" + fleet_.string() + "' >/dev/null";
    execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  std::string text;
  char block[4096];
  const auto hear = [&] {
    const ssize_t size = read(terminal, block, sizeof(block));
    if (size > 0) text.append(block, static_cast<size_t>(size));
    return size > 0;
  };
  while (text.find('\n') == std::string::npos && hear()) continue;
  kill(child, SIGSTOP);
  usleep(1'100'000);
  kill(child, SIGCONT);
  while (hear()) continue;
  close(terminal);
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(std::regex_search(text, std::regex("malformed\r\n\r\\d+ of 64 machines"))) << text;
  EXPECT_TRUE(text.ends_with("\r\x1b[K")) << text;
}

}  // namespace
}  // namespace zeldb_test
