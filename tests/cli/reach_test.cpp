// SPDX-License-Identifier: Apache-2.0
//
// The command uses every reading function of the library.
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

#include "tests/support/texts.h"

namespace zeldb_test {
namespace {

// Functions that write, and functions that help services with statements of their own.
const std::set<std::string> kOthers = {
    "delete_db_record",
    "dpu_clear_logs_by_slot",
    "dpu_insert_log",
    "extract_PCISetting_info",
    "fileexist",
    "find_db_record",
    "get_sql_str",
    "insert_db_record",
    "insert_or_update_db_record",
    "put_text_value",
    "retimer_update_fw",
    "update_db_record",
    "update_pci_table",
    "zeldb_hbm_memory_cleanup",
    "zeldb_merge_aim_ucm_pfa",
    "zeldb_save_pci_configSet_list",
};
const std::regex kWriting("zeldb_(add|clear|insert|set|update)_.*");

TEST(Reach, CoversEveryReadingFunction) {
  const std::string program = content_of(ZELDB_COMMAND);
  std::set<std::string> unseen(kOthers);
  size_t reading = 0;
  for (const auto& [symbol, name] : exports_of(ZELDB_EXPORT_LIST)) {
    if (unseen.erase(name) > 0 || std::regex_match(name, kWriting)) continue;
    ++reading;
    // A name of the symbols that the program needs ends with a NUL.
    EXPECT_NE(program.find(symbol + '\0'), std::string::npos) << name;
  }
  EXPECT_GT(reading, 0U);
  EXPECT_EQ(unseen, std::set<std::string>());
}

}  // namespace
}  // namespace zeldb_test
