// SPDX-License-Identifier: Apache-2.0
//
// The limit of a whole program: replay_... WHERE TRACE opens the databases, runs what a trace shows in one
// transaction of each, and ends.
#include "bench/records.h"
#include "bench/works.h"

int main(int argc, char** argv) {
  if (argc != 3) bench::give_up("a place and a trace are needed");
  bench::BENCH_REPLAYER(argv[1])->replay(bench::read_calls(argv[2]));
}
