// SPDX-License-Identifier: Apache-2.0
#ifndef BENCH_ONE_WORK_H
#define BENCH_ONE_WORK_H

#include <string>

namespace bench {

// Runs a work of the library's exported functions; count is the number of its calls where it has no list.
void run_work(const std::string& name, unsigned count);

}  // namespace bench

#endif
