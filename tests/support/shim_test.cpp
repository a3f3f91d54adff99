// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "platform/vrel_log.h"
#include "platform/zel_db.h"
#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/run_program.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/db.h"
#include "zeldb/pci.h"

namespace zeldb_test {
namespace {

using Texts = std::vector<std::string>;

class Shims : public testing::Test {
 protected:
  Database database_;
};

TEST_F(Shims, SeeTheCallsOfTheLibrary) {
  uint32_t aim = 0;
  EXPECT_EQ(zeldb_get_pci_function_oob_type(0xFFFFFFFF, &aim, nullptr), 10);
  EXPECT_EQ(shim().texts(),
            (Texts{"get_dmdb_handle|0 null 0|0",
                   "query|PCIAdapter|AIMSupported,OOBSrc|PCIFuncKey=?|3:4294967295|(null)|0"}));
  EXPECT_EQ(shim().calls("query")[0].steps, 1U);
  EXPECT_EQ(find_db_record(get_dmdb_handle(0, nullptr, 0), "Nowhere", "1"), -1);
  EXPECT_EQ(libc().logs, (Texts{"error Failed to query record:", "error table=Nowhere", "error where=1"}));
}

TEST_F(Shims, InjectFaults) {
  struct Case {
    Rule rule;
    Texts seen;  // query status, result, rows counted, steps with what was read
  };
  const Case cases[] = {
      {{}, {"0", "result", "2", "9:1", "9:2", "10"}},
      {{.op = "query", .table = "PCIs", .status = 2}, {"2", "none"}},
      {{.op = "query", .status = 2, .with_result = true}, {"2", "result", "2", "9:1", "9:2", "10"}},
      {{.op = "query", .nth = 0}, {"0", "none"}},
      {{.op = "query", .table = "Other", .status = 2}, {"0", "result", "2", "9:1", "9:2", "10"}},
      {{.op = "query", .nth = 2, .status = 2}, {"0", "result", "2", "9:1", "9:2", "10"}},
      {{.op = "step", .status = 5, .after = 1}, {"0", "result", "2", "9:1", "5"}},
      {{.op = "step", .status = 5, .after = 2}, {"0", "result", "2", "9:1", "9:2", "5"}},
      {{.op = "row_count", .fewer = 1}, {"0", "result", "1", "9:1", "9:2", "10"}},
      {{.op = "column", .status = 8, .column = 0}, {"0", "result", "2", "9:?", "9:?", "10"}},
      {{.op = "column", .status = 8, .name = "FunKey"}, {"0", "result", "2", "9:?", "9:?", "10"}},
      {{.op = "column", .status = 8, .name = "DevKey"}, {"0", "result", "2", "9:1", "9:2", "10"}}};
  _zel_db_handle_t* const handle = get_dmdb_handle(0, nullptr, 0);
  for (const char* row : {"INSERT INTO PCIs (FunKey) VALUES (1)", "INSERT INTO PCIs (FunKey) VALUES (2)"}) {
    ASSERT_EQ(zel_db_raw_query(handle, row, 64, nullptr), 0);
  }
  for (const Case& test : cases) {
    shim().reset();
    shim().fail(test.rule);
    const char* const columns[] = {"FunKey"};
    zel_db_result_t* result = nullptr;
    Texts seen = {
        std::to_string(zel_db_query(handle, "PCIs", columns, 1, nullptr, nullptr, 0, nullptr, &result))};
    seen.emplace_back(result != nullptr ? "result" : "none");
    if (result != nullptr) seen.push_back(std::to_string(zel_db_result_row_count(result)));
    for (int step = 9; result != nullptr && step == 9;) {
      uint32_t key = 0;
      step = zel_db_result_step(result);
      seen.push_back(std::to_string(step));
      if (step == 9)
        seen.back() += zel_db_result_column_uint(result, 0, &key) == 0 ? ":" + std::to_string(key) : ":?";
    }
    zel_db_free_result(result);
    EXPECT_EQ(seen, test.seen) << test.rule.op << " " << test.rule.table << test.rule.name;
  }
}

TEST_F(Shims, KnowWhatIsAlive) {
  auto* const handle = zel_db_open("localhost", "root", "", "dmdb", 0);
  auto* const values = zel_db_get_content_values(handle);
  EXPECT_EQ(zel_db_content_put_uint(values, "FunKey", 7), 0);
  EXPECT_EQ(zel_db_content_put_null(values, "DevKey"), 0);
  EXPECT_EQ(insert_db_record(handle, "PCIs", values), 1);
  EXPECT_EQ(shim().calls("insert")[0].puts, (Texts{"uint FunKey=7", "null DevKey"}));
  EXPECT_EQ(shim().alive(), "1 content values alive;1 handles open;");
  zel_db_free_content_values(values);
  zel_db_close(handle);
}

TEST(LibcShim, StandsBeforeTheSystem) {
  EXPECT_NE(access("/tmp/slowucm", F_OK), 0);
  libc().mark("dp.ucmparsing");
  EXPECT_GE(open("/tmp/dp.ucmparsing", O_RDONLY | O_CLOEXEC), 0);
  libc().times = {{1, 2}, {3, 4}};
  timeval now{};
  for (const time_t seconds : {1, 3, 3}) EXPECT_EQ((gettimeofday(&now, nullptr), now.tv_sec), seconds);
  syslog(LOG_INFO, "%d", 5);
  vrel_log::logWarn("%s\n", "text");
  EXPECT_EQ(sleep(9), 0U);
  EXPECT_EQ(libc().syslogs, Texts{"6 5"});
  EXPECT_EQ(libc().logs, Texts{"warning text\n"});
  EXPECT_EQ(libc().sleeps, std::vector<unsigned>{9});
}

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
