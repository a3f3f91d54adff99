// SPDX-License-Identifier: Apache-2.0
//
// Helpers for benchmarks of whole programs.
#ifndef BENCH_PROGRAM_H
#define BENCH_PROGRAM_H

#include <sys/resource.h>

#include <string>
#include <vector>

namespace bench {

// Runs a program and drops its output. Throws unless it exits with 0.
rusage run_program(std::vector<std::string> words);

// Runs the benchmark in a temporary folder. Returns the exit status.
int in_folder(const std::string& name, void (*run)(const std::string& folder));

}  // namespace bench

#endif
