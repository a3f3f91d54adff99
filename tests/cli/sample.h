// SPDX-License-Identifier: Apache-2.0
//
// The command, and the sample controller in front of it.
#ifndef TESTS_CLI_SAMPLE_H
#define TESTS_CLI_SAMPLE_H

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/database.h"
#include "tests/support/run_program.h"
#include "tests/support/texts.h"

namespace zeldb_test {

Outcome run_zeldb(std::vector<std::string> arguments, const std::vector<std::string>& env = {});

// One line, on standard error alone, with the reason in it.
void expect_failure(const Outcome& outcome, int status, const std::string& why);

// Into the databases of ZEL_DB_URL.
void load_sample();

// A URL of the same engine without databases behind it.
std::string url_of_nothing(const Database& database);

// Has statements go to an export.
struct Redirected {
  Redirected(const std::string& exported, const Database& database) : url(database.url()) {
    setenv("ZEL_DB_URL", ("sqlite://" + exported).c_str(), 1);
  }
  Redirected(const Redirected&) = delete;
  Redirected& operator=(const Redirected&) = delete;
  ~Redirected() { setenv("ZEL_DB_URL", url.c_str(), 1); }
  const std::string& url;
};

// SAMPLES in a text, and the folder that it stands for.
std::string with_samples(const std::string& text);
std::string without_samples(const std::string& text);

}  // namespace zeldb_test

#endif
