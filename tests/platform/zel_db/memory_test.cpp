// SPDX-License-Identifier: Apache-2.0
//
// Memory that is short for a moment.
#include <chrono>

#include "tests/platform/zel_db/client.h"
#include "tests/support/libc_shim.h"

namespace zeldb_test {
namespace {

class ShortMemory : public DatabaseTest {};
ZELDB_ON_EVERY_ENGINE(ShortMemory);

// Each call fails at its nth allocation in one of the libraries, where it may; what follows goes undisturbed.
TEST_P(ShortMemory, FailsOneCallAndNoneAfterIt) {
  // A row that is longer than what a client library reads at a time, of more columns than it makes room for.
  const std::string text(2000, 'x');
  database.run(
      "insert into PCISetting (Type, GroupName, SuppressIf, GrayIf, GroupSuppressIf, GroupGrayIf, Choices) "
      "values (1, '', '" +
      replaced("....", ".", text + "', '") + text + "')");
  const Client first;
  zel_db_content_values_t* const values = zel_db_get_content_values(first);
  zel_db_content_put_text(values, "Choices", text.c_str());
  const std::string engine = GetParam() == Engine::Sqlite ? "libsqlite3" : "libmariadb";
  for (const std::string& object : {engine, std::string("libstdc++")}) {
    int failures = 0;
    for (int nth = 1, more = 1; more > 0 && nth < 1000; ++nth) {
      more = 0;
      const std::string column = "*,Type+" + std::to_string(nth);  // prepared anew, then found
      const char* const columns[] = {column.c_str()};
      auto client = std::make_unique<Client>();
      for (const bool writes : {false, false, true}) {
        zel_db_result_t* rows = nullptr;
        if (!LibcShim::fail_allocation(0, nth, object.c_str())) GTEST_SKIP() << "a sanitizer's allocations";
        const int status =
            writes ? zel_db_update(*client, "PCISetting", values, "Type=1", nullptr, 0, nullptr)
                   : zel_db_query(*client, "PCISetting", columns, 1, "Type=1", nullptr, 0, nullptr, &rows);
        const bool failed = LibcShim::allocation_failed();
        more += failed ? 1 : 0;
        zel_db_free_result(rows);
        EXPECT_TRUE(status == 0 || (failed && (status == 4 || status == 14)))
            << object << nth << ": " << status;
        EXPECT_EQ(query(*client, "PCISetting", "Type,Choices", "Type=1"), "1," + text) << object << nth;
      }
      const auto start = std::chrono::steady_clock::now();
      client.reset();
      EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
      failures += more;
    }
    EXPECT_GT(failures, 0) << object;
  }
  zel_db_free_content_values(values);
}

TEST_P(ShortMemory, ClosingTakesNone) {
  for (int i = 0; i < 12; ++i) {  // also when more are closed than are kept
    std::vector<_zel_db_handle_t*> handles;
    for (int open = 0; open < i; ++open) handles.push_back(zel_db_open("localhost", "root", "", "dmdb", 0));
    for (_zel_db_handle_t* const handle : handles) {
      if (!LibcShim::fail_allocation(0, 1, "libstdc++")) GTEST_SKIP() << "a sanitizer's allocations";
      const int status = zel_db_close(handle);
      EXPECT_FALSE(LibcShim::allocation_failed());
      EXPECT_EQ(status, 0);
    }
  }
}

}  // namespace
}  // namespace zeldb_test
