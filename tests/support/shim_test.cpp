// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/libc_shim.h"
#include "tests/support/run_program.h"

namespace zeldb_test {
namespace {

TEST(LibcShim, FailsAllocations) {
  if (!LibcShim::fail_allocation(1000, 2, "shim_test")) GTEST_SKIP() << "a sanitizer owns the allocations";
  std::vector<bool> failed;
  for (const size_t size : {1000, 999, 1000, 1000}) {
    void* const block = std::calloc(1, size);
    failed.push_back(block == nullptr);
    std::free(block);
  }
  EXPECT_EQ(failed, (std::vector<bool>{false, false, true, false}));
}

TEST(RunProgram, TellsHowItEnded) {
  const Outcome said =
      run_program({.argv = {"sh", "-c", "echo out; echo $WHO >&2; exit 3"}, .env = {"WHO=err"}});
  EXPECT_EQ(std::to_string(said.exit_status) + said.out + said.err, "3out\nerr\n");
  EXPECT_EQ(run_program({.argv = {"sh", "-c", "kill -9 $$"}}).signal, 9);
  EXPECT_EQ(run_program({.argv = {"no-such-program"}}).exit_status, 127);
  EXPECT_TRUE(run_program({.argv = {"sleep", "60"}, .timeout = std::chrono::seconds(0)}).timed_out);
}

}  // namespace
}  // namespace zeldb_test
