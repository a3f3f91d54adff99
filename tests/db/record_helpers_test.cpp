// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "zeldb/db.h"
#include "zeldb/pci.h"
#include "zeldb/ucm.h"

namespace zeldb_test {
namespace {

class Helpers : public DatabaseTest {};

// C++ functions, too, end with a value when memory is short.
TEST_P(Helpers, ThrowNothing) {
  std::map<std::string, std::string> columns = {{"CardName", std::string(200, 'x')}};
  const std::string value(200, 'x');
  const auto* const bytes = reinterpret_cast<const unsigned char*>(value.c_str());
  _ZELDB_PCIVpdInfo record = {};
  for (int nth = 1; nth <= 12; ++nth) {
    if (!LibcShim::fail_allocation(17, nth, "libstdc++.so")) GTEST_SKIP() << "a sanitizer owns them";
    EXPECT_NO_THROW(update_pci_table("PCIAdapter", columns, 1)) << nth;
    LibcShim::fail_allocation(17, nth, "libstdc++.so");
    EXPECT_NO_THROW(set_missing_gpu_vpd_info(&record, 1, columns)) << nth;
    LibcShim::fail_allocation(17, nth, "libstdc++.so");
    std::string condition;
    EXPECT_NO_THROW(condition = get_sql_str("CardName", bytes)) << nth;
    EXPECT_TRUE(condition.empty() ||
                condition.size() == 200 + sizeof("(CardName IS NULL OR CardName!=\"\")") - 1);
    libc().reset();
  }
}

ZELDB_ON_EVERY_ENGINE(Helpers);

}  // namespace
}  // namespace zeldb_test
