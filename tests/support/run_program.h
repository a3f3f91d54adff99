// SPDX-License-Identifier: Apache-2.0
//
// Starts every program that a test runs.
#ifndef TESTS_SUPPORT_RUN_PROGRAM_H
#define TESTS_SUPPORT_RUN_PROGRAM_H

#include <chrono>
#include <string>
#include <vector>

namespace zeldb_test {

struct Program {
  std::vector<std::string> argv;
  std::vector<std::string> env{};  // NAME=VALUE, on top of this process's environment
  std::string preload{};           // a shared object
  std::chrono::seconds timeout{60};
};

struct Outcome {
  int exit_status = -1;  // 127: could not be started
  int signal = 0;        // that ended it
  bool timed_out = false;
  std::string out;
  std::string err;
};

Outcome run_program(const Program& program);

}  // namespace zeldb_test

#endif
