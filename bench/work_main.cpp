// SPDX-License-Identifier: Apache-2.0
//
// bench_work WORK COUNT: runs one work on the databases that ZEL_DB_URL names.
#include <cstdlib>

#include "bench/one_work.h"
#include "bench/records.h"

int main(int argc, char** argv) {
  if (argc != 3) bench::give_up("a work and a count are needed");
  bench::run_work(argv[1], static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10)));
}
