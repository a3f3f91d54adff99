// SPDX-License-Identifier: Apache-2.0
//
// What benchmarks of whole programs share.
#ifndef BENCH_PROGRAM_H
#define BENCH_PROGRAM_H

#include <sys/resource.h>

#include <string>
#include <vector>

namespace bench {

// Runs a program; what it prints is dropped. Throws unless it exits with 0.
rusage run_program(std::vector<std::string> words);

// What main returns: runs it in a folder of its own, which is removed.
int in_folder(const std::string& name, void (*run)(const std::string& folder));

}  // namespace bench

#endif
