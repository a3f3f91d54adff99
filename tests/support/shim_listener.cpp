// SPDX-License-Identifier: Apache-2.0
//
// Every test starts with fresh shims and ends with nothing alive.
#include <gtest/gtest.h>

#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"

namespace zeldb_test {
namespace {

class ShimListener : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& /*test*/) override { shim().reset(); }

  void OnTestEnd(const testing::TestInfo& /*test*/) override {
    EXPECT_EQ(shim().alive(), "");
    libc().reset();
  }
};

[[maybe_unused]] const bool kListening = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new ShimListener);
  return true;
}();

}  // namespace
}  // namespace zeldb_test
