// SPDX-License-Identifier: Apache-2.0
//
// The display of rows: terminals, colours, pipes, and texts that are not what they
// should be.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <sstream>

#include "tests/cli/sample.h"

namespace zeldb_test {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

std::string run_in_shell(const std::string& line, const Texts& env = {}) {
  Program program{.argv = {"sh", "-c", line}, .env = env};
  program.env.insert(program.env.begin(), {"LC_ALL=C.UTF-8", "VREL_LOG=/dev/null"});
  const Outcome outcome = run_program(program);
  EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
  return outcome.out;
}

// On a terminal of its own, without the carriage returns that this adds.
std::string on_terminal(const std::string& arguments, const Texts& env) {
  std::string shown =
      run_in_shell("script -qec '" ZELDB_COMMAND_LINE " " + arguments + "' /dev/null </dev/null", env);
  std::erase(shown, '\r');
  return shown;
}

size_t longest_line(const std::string& text) {
  size_t longest = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const auto continued = std::ranges::count_if(line, [](char c) { return (c & 0xC0) == 0x80; });
    longest = std::max(longest, line.size() - static_cast<size_t>(continued));
  }
  return longest;
}

class Display : public testing::Test {
 protected:
  Display() { load_sample(); }
  Database database_;
};

TEST_F(Display, RawShowsCodesAsTheyAre) {
  const Texts raw = {"ports", "--slot", "10", "--raw", "--no-headings", "--output", "LinkStatus,LinkSpeed"};
  EXPECT_EQ(run_zeldb(raw).out, "1\t10000\n1\t10000\n1\t1000\n0\t0\n");
  const Texts classes = {"functions", "--slot", "1", "--raw", "--no-headings", "--output", "ClsCode"};
  EXPECT_EQ(run_zeldb(classes).out, "010400\n");
}

TEST_F(Display, FitsATerminalAndNothingElse) {
  const std::string wide = on_terminal("slots", {"COLUMNS=200", "NO_COLOR=1"});
  EXPECT_EQ(wide, run_zeldb({"slots"}, {"COLUMNS=40"}).out);
  EXPECT_EQ(wide, on_terminal("slots --wide", {"COLUMNS=40", "NO_COLOR=1"}));
  const std::string narrow = on_terminal("slots", {"COLUMNS=80", "NO_COLOR=1"});
  EXPECT_EQ(longest_line(narrow), 80U) << narrow;
  for (const char* whole : {"Broadcom 57416 10GBAS", "PHLF7391000A2P0", "94.07.5B.00.01  OK"})
    EXPECT_NE(narrow.find(whole), std::string::npos) << whole << "\n" << narrow;
  const std::string said = "zeldb: no room for ADDRESS, PORTS (--wide shows all)\n";
  EXPECT_TRUE(narrow.ends_with(said)) << narrow;
  EXPECT_EQ(on_terminal("slots --output all", {"COLUMNS=80"}).find("no room"), std::string::npos);
}

TEST_F(Display, IsAsciiInALocaleWithoutMore) {
  const std::string tree = run_zeldb({"functions", "--tree"}, {"LC_ALL=C"}).out;
  EXPECT_NE(tree.find("\n`-01f80000"), std::string::npos) << tree;
  EXPECT_NE(run_zeldb({"functions", "--tree"}).out.find("\n└─01f80000"), std::string::npos);
}

TEST_F(Display, CutsWhatIsAskedForToTheTerminal) {
  database_.run(
      "UPDATE PCIs SET SlotDesignation='Steckplatz \xC3\xBC\xE2\x82\xAC' WHERE SlotNo=10 AND Location=1");
  const struct {
    std::string command;
    std::string locale;
    const char* columns;
    size_t widest;
    const char* ellipsis;
  } cases[] = {
      {"slots --output all", "C.UTF-8", "80", 80, "\xE2\x80\xA6"},
      {"slots --output all", "C", "80", 80, "+"},
      {"show 10", "C.UTF-8", "60", 60, "\xE2\x80\xA6"},
      {"show 10", "C", "40", 40, "+"},
      {"show dimm3", "C", "14", 14, "+"},
      {"slots --output CardName,SerialNo,Address", "C.UTF-8", "30", 30, "\xE2\x80\xA6"},
      {"slots", "C.UTF-8", "30", 30, ""},
  };
  for (const auto& [command, locale, columns, widest, ellipsis] : cases) {
    std::string shown =
        on_terminal(command, {"LC_ALL=" + locale, std::string("COLUMNS=") + columns, "NO_COLOR=1"});
    if (const size_t said = shown.find("zeldb: no room"); said != std::string::npos) shown.resize(said);
    EXPECT_LE(longest_line(shown), widest) << command << "\n" << shown;
    EXPECT_NE(shown.find(ellipsis), std::string::npos) << command << "\n" << shown;
    const bool is_ascii = std::ranges::all_of(shown, [](char c) { return (c & 0x80) == 0; });
    EXPECT_TRUE(is_ascii || locale != "C") << shown;
  }
  EXPECT_EQ(on_terminal("slots", {"COLUMNS=99999999999999999999", "NO_COLOR=1"}), run_zeldb({"slots"}).out);
}

TEST_F(Display, ColoursHealthOnATerminalAlone) {
  const std::string green = "\x1b[32mOK ";
  const std::string yellow = "\x1b[33mDegraded";
  const std::string coloured = on_terminal("slots", {"TERM=xterm", "COLUMNS=200", "NO_COLOR="});
  EXPECT_NE(coloured.find(green), std::string::npos) << coloured;
  EXPECT_NE(coloured.find(yellow), std::string::npos) << coloured;
  for (const Texts& env : {Texts{"TERM=dumb", "NO_COLOR="}, Texts{"TERM=xterm", "NO_COLOR=1"}})
    EXPECT_EQ(on_terminal("slots", env).find('\x1b'), std::string::npos) << env[0];
  EXPECT_EQ(run_zeldb({"slots"}, {"TERM=xterm"}).out.find('\x1b'), std::string::npos);
}

TEST_F(Display, AClosedPipeIsTheEndAndAFullDiskIsAnError) {
  // The reader has gone before anything is written.
  EXPECT_EQ(run_in_shell("{ { sleep 0.3; " ZELDB_COMMAND_LINE
                         " functions --json; echo $? >&3; } 2>&3 | true; } 3>&1"),
            "0\n");
  EXPECT_EQ(run_in_shell(ZELDB_COMMAND_LINE " slots 2>&1 >/dev/full || echo $?"),
            "zeldb: standard output: No space left on device\n1\n");
}

class Show : public DatabaseTest {};
ZELDB_ON_EVERY_ENGINE(Show);

TEST_P(Show, KnowsWhichOneIsMeant) {
  load_sample();
  // A second adapter in slot 10, a function without an adapter, and a drive without a name.
  database.run_all({
      "UPDATE PCIs SET DevKey=99 WHERE BusNo=9 AND SlotNo=10 AND Location=1",
      "INSERT INTO PCIAdapter VALUES (NULL, 99, 17367040, 0, 10, 1, 9, 0, 0, 1, 1, 1, 2, '1', 'Second')",
      "UPDATE PCIs SET DevKey=0 WHERE FunKey=28377088",
      "UPDATE AimDisks SET Location='-' WHERE Location='Bay 1'",
  });
  const auto keys_of = [](const std::string& place, const char* listing, const char* column) {
    const Outcome outcome = run_zeldb({"show", place, "--json"});
    Texts keys;
    if (outcome.exit_status != 0) return Texts{outcome.err};
    const Json shown = Json::parse(outcome.out);
    for (const Json& row : shown.at("listings").at(listing).at("rows"))
      keys.push_back(row.at(column).get<std::string>());
    return keys;
  };
  const auto functions = [&](const std::string& place) { return keys_of(place, "functions", "FunKey"); };
  const std::pair<const char*, Texts> cases[] = {
      {"10", {"01080000", "01080001", "01090000", "01090001"}},
      {"0001000a", {"01080000", "01080001"}},
      {"01080001", {"01080000", "01080001"}},
      {"0x00000063", {"01090000", "01090001"}},
      {"0001:09:00.1", {"01090000", "01090001"}},
      {"04:00.0", functions("0:1")},
      {"09:00.0", {"zeldb: 09:00.0: not found\n"}},
      {"00000000", {"zeldb: 00000000: not found\n"}},
      {"1:-10", {"zeldb: 1:-10: not found\n"}},
      {"0x1080000", {"zeldb: 0x1080000: not found\n"}},
      {"-", {"zeldb: -: not found\n"}},
  };
  for (const auto& [place, expected] : cases) EXPECT_EQ(functions(place), expected) << place;
  EXPECT_EQ(keys_of("10", "adapters", "PCIKey"), (Texts{"00000063", "0001000a"}));
  EXPECT_EQ(keys_of("00000063", "adapters", "PCIKey"), Texts{"00000063"});
}

TEST_P(Show, TellsWhatItCannotRead) {
  load_sample();
  database.run("DROP TABLE PCIGPUChip");
  const Outcome outcome = run_zeldb({"show", "3"});
  EXPECT_EQ(outcome.exit_status, 1);
  EXPECT_NE(outcome.out.find("GPU chips\nCannot be read: "), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("A2 16GB PCIe Accelerator"), std::string::npos);
  EXPECT_NE(outcome.err.find("3 is not complete"), std::string::npos) << outcome.err;
  const Json json = Json::parse(run_zeldb({"show", "3", "--json"}).out).at("listings");
  EXPECT_FALSE(json.contains("gpus-chips"));
  EXPECT_TRUE(json.contains("gpus"));
}

class Bytes : public DatabaseTest {};
ZELDB_ON_EVERY_ENGINE(Bytes);

// A text that would clear the screen, end a line, set the direction, and is no UTF-8 at that.
TEST_P(Bytes, NeitherSteerATerminalNorBreakJson) {
  const std::string bytes = "a\x1b[2J\n\t\\\x7f\xc2\x9b\xe2\x80\xae\xff\xc0\xaf\xe2\x82z\xc3\xa4";
  database.run("INSERT INTO EmbeddedDeviceFirmware (DeviceName, SoftwareID) VALUES ('" + bytes + "', 'x')");
  const Texts shown{"--no-headings", "--output", "DeviceName"};
  const auto embedded = [&shown](const std::string& style) {
    Texts arguments{"embedded", style};
    arguments.insert(arguments.end(), shown.begin(), shown.end());
    return run_zeldb(arguments).out;
  };
  const std::string safe =
      "a\\x1b[2J\\x0a\\x09\\\\x7f\\x9b\\u202e\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"
      "\xEF\xBF\xBDz\xc3\xa4\n";
  EXPECT_EQ(embedded("--mask"), safe);
  EXPECT_EQ(run_zeldb({"embedded", "--no-headings", "--output", "DeviceName"}, {"LC_ALL=C"}).out,
            "a\\x1b[2J\\x0a\\x09\\\\x7f\\x9b\\u202e\\ufffd\\ufffd\\ufffd\\ufffd\\ufffdz\\xe4\n");
  std::string raw = safe;
  raw.insert(raw.find("\\\\x7f"), "\\");
  EXPECT_EQ(embedded("--raw"), raw);
  const std::string json = embedded("--json");
  EXPECT_TRUE(std::ranges::all_of(json, [](char c) { return (c >= ' ' && c < '\x7f') || c == '\n'; }))
      << json;
  EXPECT_TRUE(Json::accept(json)) << json;
}

TEST_P(Bytes, OfTheSameValueAreMaskedAlike) {
  database.run_all({
      "INSERT INTO DPUEvents (Slot, GenID, Message, Timestamp) VALUES (1, 'a', 'Port 02:00:5e:10:00:01 of "
      "192.0.2.10 (fe80::1), 02-00-5E-10-00-01', 1)",
      "INSERT INTO DPUEvents (Slot, GenID, Message, Timestamp) VALUES (1, 'b', 'at 12:30:45, version 1.2.3: "
      "02005e100001 is 5a0e64b0-c2d7-11ef-a1b2-005056c00001, 192.0.2.10', 2)",
  });
  EXPECT_EQ(run_zeldb({"dpu-log", "1", "--mask", "--no-headings", "--output", "Message"}).out,
            "Port address-0001 of address-0002 (address-0003), address-0004\n"
            "at 12:30:45, version 1.2.3: address-0005 is address-0006, address-0002\n");
}

}  // namespace
}  // namespace zeldb_test
