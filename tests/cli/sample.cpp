// SPDX-License-Identifier: Apache-2.0
#include "tests/cli/sample.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace zeldb_test {
namespace {

const std::string kWord = "SAMPLES";
const std::string kFolder = ZELDB_SAMPLES;

}  // namespace

Outcome run_zeldb(std::vector<std::string> arguments, const std::vector<std::string>& env) {
  arguments.insert(arguments.begin(), ZELDB_COMMAND);
  Program program{.argv = arguments, .env = env};
  program.env.insert(program.env.begin(),
                     {"LC_ALL=C.UTF-8", "TZ=UTC", "VREL_LOG=/dev/null", "ZEL_PLATFORM_DIR=" + kFolder});
  return run_program(program);
}

void expect_failure(const Outcome& outcome, int status, const std::string& why) {
  EXPECT_EQ(outcome.exit_status, status) << why;
  EXPECT_EQ(outcome.out, "") << why;
  EXPECT_NE(outcome.err.find(why), std::string::npos) << why << ": " << outcome.err;
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
}

void load_sample() {
  std::vector<std::string> load{"load"};
  for (const char* name : {"inventory", "adapters", "processors", "drives", "firmware"})
    load.push_back(kFolder + "/" + name + ".sql");
  for (const auto& arguments : {load, {"load", "--database", "propertiesdb", kFolder + "/properties.sql"}}) {
    const Outcome outcome = run_zeldb(arguments);
    ASSERT_EQ(outcome.exit_status, 0) << outcome.err;
  }
}

std::string url_of_nothing(const Database& database) {
  return database.url() + (database.kind() == Engine::Sqlite ? "/nothing" : "nothing_");
}

std::string with_samples(const std::string& text) {
  return replaced(text, kWord, kFolder);
}

std::string without_samples(const std::string& text) {
  return replaced(text, kFolder, kWord);
}

}  // namespace zeldb_test
