// SPDX-License-Identifier: Apache-2.0
//
// Scripts are split where SQLite sees the end of a statement.
#include <sqlite3.h>

#include "fuzz/input.h"
#include "zel_db/sql/tokens.h"

using namespace zeldb_fuzz;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static sqlite3* const database = [] {
    sqlite3* opened = nullptr;
    expect(sqlite3_open(":memory:", &opened) == SQLITE_OK, "a database");
    sqlite3_exec(opened, "CREATE TABLE t (a INTEGER, b TEXT)", nullptr, nullptr, nullptr);
    return opened;
  }();
  const std::string text(Input(data, size).all());
  const char* behind = text.data();
  for (const std::string_view statement : zel_db::split_statements(text)) {
    expect(statement.data() >= behind && !statement.empty(), "statements follow each other");
    behind = statement.data() + statement.size();
    expect(behind <= text.data() + size, "statements are in the script");
    sqlite3_stmt* prepared = nullptr;
    const char* tail = nullptr;
    const std::string alone(statement);
    if (sqlite3_prepare_v2(database, alone.c_str(), -1, &prepared, &tail) == SQLITE_OK &&
        prepared != nullptr && alone.find('\0') == std::string::npos) {
      expect(zel_db::split_statements(tail).empty(), "one statement: " + alone);
    }
    sqlite3_finalize(prepared);
  }
  return 0;
}
