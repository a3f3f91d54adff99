// SPDX-License-Identifier: Apache-2.0
#include "tests/cli/sample.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace zeldb_test {
namespace {

const std::string kWord = "SAMPLES";
const std::string kFolder = ZELDB_SAMPLES;

void replace(std::string& text, const std::string& from, const std::string& to) {
  for (size_t place = text.find(from); place != std::string::npos; place = text.find(from, place + to.size()))
    text.replace(place, from.size(), to);
}

}  // namespace

Outcome run_zeldb(std::vector<std::string> arguments, const std::vector<std::string>& env) {
  arguments.insert(arguments.begin(), ZELDB_COMMAND);
  Program program{.argv = arguments, .env = env};
  program.env.insert(program.env.begin(), {"TZ=UTC", "VREL_LOG=/dev/null", "ZEL_PLATFORM_DIR=" + kFolder});
  return run_program(program);
}

void expect_failure(const Outcome& outcome, int status, const std::string& why) {
  EXPECT_EQ(outcome.exit_status, status) << why;
  EXPECT_EQ(outcome.out, "") << why;
  EXPECT_NE(outcome.err.find(why), std::string::npos) << why << ": " << outcome.err;
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
}

std::string content_of(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
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

std::string with_samples(std::string text) {
  replace(text, kWord, kFolder);
  return text;
}

std::string without_samples(std::string text) {
  replace(text, kFolder, kWord);
  return text;
}

}  // namespace zeldb_test
