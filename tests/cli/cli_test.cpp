// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/run_program.h"

namespace {

namespace fs = std::filesystem;
using zeldb_test::Outcome;

class Cli : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string name = fs::temp_directory_path() / "zeldb-XXXXXX";
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    folder_ = name;
  }
  void TearDown() override { fs::remove_all(folder_); }

  Outcome zeldb(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), ZELDB_COMMAND);
    return zeldb_test::run_program(
        {.argv = arguments, .env = {"ZEL_DB_URL=sqlite://" + database().string()}});
  }
  Outcome load(const std::string& statements, const std::string& into = "dmdb") const {
    const std::string file = folder_ / "statements.sql";
    std::ofstream(file) << statements;
    return zeldb({"load", "--database", into, file});
  }
  fs::path database() const { return folder_ / "db"; }

  fs::path folder_;
};

void expect_silence(const Outcome& outcome) {
  EXPECT_EQ(outcome.exit_status, 0);
  EXPECT_EQ(outcome.out + outcome.err, "");
}

// One line, on standard error alone, that holds every one of the words.
void expect_error(const Outcome& outcome, int status, const std::vector<std::string>& words) {
  EXPECT_EQ(outcome.exit_status, status);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err.rfind("zeldb: ", 0), 0U) << outcome.err;
  EXPECT_EQ(std::ranges::count(outcome.err, '\n'), 1) << outcome.err;
  for (const std::string& word : words)
    EXPECT_NE(outcome.err.find(word), std::string::npos) << word << ": " << outcome.err;
}

TEST_F(Cli, InitCreatesPrivateFilesAndKeepsWhatIsThere) {
  expect_silence(zeldb({"init"}));
  EXPECT_EQ(fs::status(database()).permissions(), fs::perms(0750));
  for (const char* file : {"dmdb.sqlite", "propertiesdb.sqlite"}) {
    EXPECT_EQ(fs::status(database() / file).permissions(), fs::perms(0600)) << file;
  }
  expect_silence(load("CREATE UNIQUE INDEX Once ON PCIs (FunKey); INSERT INTO PCIs (FunKey) VALUES (7);"));
  expect_silence(zeldb({"init"}));
  expect_error(load("INSERT INTO PCIs (FunKey) VALUES (7);"), 1, {"statement 1"});
}

// The linker finds a file that is no library before the client library.
TEST_F(Cli, AServerNeedsItsClientLibraryAndAFileDoesNot) {
  ASSERT_EQ(zeldb({"init"}).exit_status, 0);
  std::ofstream(folder_ / "libmariadb.so.3") << std::flush;
  const auto slots = [this](const std::string& url) {
    return zeldb_test::run_program({.argv = {ZELDB_COMMAND, "slots"},
                                    .env = {"LD_LIBRARY_PATH=" + folder_.string(), "ZEL_DB_URL=" + url}});
  };
  EXPECT_EQ(slots("sqlite://" + database().string()).exit_status, 0);
  expect_error(slots("mariadb://root@localhost/"), 1, {"cannot open dmdb at localhost", "libmariadb.so.3"});
}

TEST_F(Cli, ANewerSchemaIsRefusedAndAMissingVersionIsNot) {
  ASSERT_EQ(zeldb({"init"}).exit_status, 0);
  expect_silence(load("DROP TABLE ZeldbSchema;"));
  expect_silence(load("DELETE FROM PCIs;"));
  expect_silence(zeldb({"init"}));
  expect_silence(load("UPDATE ZeldbSchema SET Version = Version + 1;"));
  expect_error(zeldb({"init"}), 1, {"version"});
  expect_error(load("DELETE FROM PCIs;"), 1, {"version"});
}

TEST_F(Cli, LoadNamesTheFileAndTheStatementThatFails) {
  ASSERT_EQ(zeldb({"init"}).exit_status, 0);
  const std::string good = "INSERT INTO PCIs (FunKey, SlotNo) VALUES (1, 1); -- a; comment\n";
  expect_error(load(good + "INSERT INTO PCIs (NoColumn) VALUES (';'); SELECT 1;"), 1,
               {"statements.sql", "statement 2", "NoColumn"});
  expect_silence(load("INSERT INTO propertiesDCTbl DEFAULT VALUES;", "propertiesdb"));
  expect_error(load(good, "propertiesdb"), 1, {"statement 1", "PCIs"});
  expect_error(zeldb({"load", folder_ / "absent.sql"}), 1, {"absent.sql"});
}

TEST_F(Cli, LoadCreatesNoDatabase) {
  expect_error(load("SELECT 1;"), 1, {"db"});
  EXPECT_FALSE(fs::exists(database()));
}

TEST_F(Cli, WrongUseIsOneLineAndExitStatus2) {
  const struct {
    std::vector<std::string> arguments;
    std::vector<std::string> words;
  } cases[] = {
      {{}, {"command is required", "zeldb --help"}},
      {{"frobnicate"}, {"frobnicate"}},
      {{"init", "extra"}, {"init", "extra"}},
      {{"load"}, {"load", "FILE"}},
      {{"load", "a.sql", "--database", "other"}, {"other", "dmdb", "propertiesdb"}},
      {{"init", "load", "a.sql"}, {"load"}},
      {{"solts"}, {"no such command, did you mean slots?"}},
      {{"slots", "--jsno"}, {"did you mean --json?"}},
      {{"slots", "--output", "cardnam"}, {"cardnam: no such column, did you mean CardName?"}},
      {{"watch", "--every", "-1"}, {"--every: -1 is no number"}},
      {{"slots", "--slot", "1:2x"}, {"--slot: 1:2x is no LOCATION:NUMBER"}},
      {{"slots", "--slot", ":2"}, {"--slot: :2 is no LOCATION:NUMBER"}},
      {{"--from", "x.db"}, {"a command is required"}},
      {{"--from", "x.db", "schema"}, {"schema: ", "--from"}},
      {{"sl\x1b[2J\nots"}, {"sl\\x1b[2J\\x0aots: no such command"}},
  };
  for (const auto& wrong : cases) expect_error(zeldb(wrong.arguments), 2, wrong.words);
  EXPECT_FALSE(fs::exists(database()));
}

// A word that is far from all others has no suggestion.
TEST_F(Cli, SuggestsWhatIsMeantAlone) {
  for (const char* word : {"frobnicate", "-", "x", "slotsandports"})
    EXPECT_EQ(zeldb({word}).err.find("did you mean"), std::string::npos) << word;
}

TEST_F(Cli, StandardInputAndOutputAreADash) {
  ASSERT_EQ(zeldb({"init"}).exit_status, 0);
  const Outcome baseline = zeldb({"baseline", "-"});
  EXPECT_EQ(baseline.exit_status, 0) << baseline.err;
  EXPECT_NE(baseline.out.find("\"parts\":"), std::string::npos) << baseline.out;
  EXPECT_NE(zeldb({"report", "-"}).out.find("</html>"), std::string::npos);
  EXPECT_FALSE(fs::exists("-"));
  const std::string columns = " decode-vpd - --raw --no-headings --output SerialNo";
  const Outcome piped = zeldb_test::run_program(
      {.argv = {"sh", "-c", "cat " ZELDB_SAMPLES "/nvme-vpd.bin | " ZELDB_COMMAND_LINE + columns},
       .env = {}});
  EXPECT_EQ(piped.out, zeldb({"--raw", "--output=SerialNo", "--no-headings", "decode-vpd",
                              ZELDB_SAMPLES "/nvme-vpd.bin"})
                           .out);
  EXPECT_GT(piped.out.size(), 5U);
}

TEST_F(Cli, HelpAndVersionGoToStandardOutput) {
  const struct {
    std::vector<std::string> arguments;
    std::string shown;
  } cases[] = {{{"--help"}, "init"},
               {{"load", "--help"}, "--database"},
               {{"slots", "--help"}, "CardName"},
               {{"--version"}, "zeldb " ZELDB_VERSION}};
  for (const auto& asked : cases) {
    const Outcome outcome = zeldb(asked.arguments);
    EXPECT_EQ(outcome.exit_status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find(asked.shown), std::string::npos) << outcome.out;
  }
}

}  // namespace
