// SPDX-License-Identifier: Apache-2.0
//
// Conditions as callers put them together, with their values in them. The table access has to select the rows
// that SQLite selects when it runs the same condition in its own spelling; if ZELDB_TEST_MARIADB names a
// server, the server has to select them, too. Every other input is used as it stands: it may be refused but
// must harm nothing.
#include <sqlite3.h>

#include "fuzz/input.h"
#include "platform/zel_db.h"
#include "platform/zel_db_admin.h"

using namespace zeldb_fuzz;

namespace {

constexpr const char* kRows =
    "INSERT INTO PCIAdapter (SlotNo, Location, CardName, ConnectorType) VALUES (1, 0, 'it''s', 'x'), (2, 1, "
    "'Status', '%'),"
    "(3, 0, 'a\"b\\', NULL), (5, NULL, '', '05'), (-4, 1, '?1;--', '1e1')";
constexpr std::string_view kColumns[] = {"SlotNo", "Location", "CardName", "ConnectorType"};
constexpr std::string_view kOperators[] = {"=", "<>", "<", ">=", " LIKE ", " IN ("};
constexpr std::string_view kGlue[] = {" AND ", " OR ", " AND NOT ", "/*'*/AND ", "\tOR--\"\n"};

struct Texts {
  std::string ours, plain;
  void add(std::string_view same) {
    ours += same;
    plain += same;
  }
  void add_quoted(std::string_view value, char quote) {
    const auto quoted = [value](char mark) {
      std::string text(1, mark);
      for (const char c : value) text.append(c == mark ? 2 : 1, c);
      return text + mark;
    };
    ours += quoted(quote);
    plain += quoted('\'');
  }
};

Texts condition(Input& input) {
  Texts texts;
  for (int terms = 0; terms == 0 || (terms < 6 && !input.empty()); ++terms) {
    if (terms > 0) texts.add(kGlue[input.pick(std::size(kGlue))]);
    texts.add(kColumns[input.pick(std::size(kColumns))]);
    const std::string_view compared = kOperators[input.pick(std::size(kOperators))];
    texts.add(compared);
    std::string value(input.take(input.pick(8)));
    std::replace(value.begin(), value.end(), '\0', '\'');
    const unsigned spelling = input.pick(3);
    if (spelling == 0)
      texts.add(std::to_string(value.size()));
    else
      texts.add_quoted(value, spelling == 1 ? '"' : '\'');
    if (compared.back() == '(') texts.add(")");
  }
  return texts;
}

_zel_db_handle_t* opened(const std::string& url) {
  char error[300] = "";
  expect(zel_db_create(url.c_str(), error, sizeof(error)) == 0, error);
  setenv("ZEL_DB_URL", url.c_str(), 1);
  _zel_db_handle_t* const handle = zel_db_open("localhost", "root", "", "dmdb", 0);
  zel_db_raw_query(handle, "DELETE FROM PCIAdapter", 1000, nullptr);
  expect(zel_db_raw_query(handle, kRows, 1000, nullptr) == 0, "rows");
  return handle;
}

// "1 2 5 ", or nothing when it is refused.
std::string matched(_zel_db_handle_t* handle, const std::string& where) {
  const char* const column = "SlotNo";
  zel_db_result_t* result = nullptr;
  std::string rows;
  if (zel_db_query(handle, "PCIAdapter", &column, 1, where.c_str(), nullptr, 0, nullptr, &result) != 0) {
    rows = "refused";
  } else {
    int32_t slot = 0;
    while (zel_db_result_step(result) == 9) {
      zel_db_result_column_int(result, 0, &slot);
      rows += std::to_string(slot) + " ";
    }
  }
  zel_db_free_result(result);
  return rows;
}

std::string answered(sqlite3* database, const std::string& where) {
  sqlite3_stmt* statement = nullptr;
  const std::string sql = "SELECT SlotNo FROM PCIAdapter WHERE " + where + "\nORDER BY _id";
  if (sqlite3_prepare_v2(database, sql.c_str(), -1, &statement, nullptr) != SQLITE_OK) return "refused";
  std::string rows;
  while (sqlite3_step(statement) == SQLITE_ROW)
    rows += std::to_string(sqlite3_column_int(statement, 0)) + " ";
  sqlite3_finalize(statement);
  return rows;
}

sqlite3* plain_database(const std::string& file) {
  sqlite3* database = nullptr;
  expect(sqlite3_open(file.c_str(), &database) == SQLITE_OK, "a database");
  sqlite3_exec(database, "PRAGMA case_sensitive_like = ON", nullptr, nullptr, nullptr);
  return database;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Folder folder;
  static const char* const server = std::getenv("ZELDB_TEST_MARIADB");
  static _zel_db_handle_t* const remote = server != nullptr ? opened(server) : nullptr;
  static _zel_db_handle_t* const handle = opened("sqlite://" + folder.path());
  static sqlite3* const plain = plain_database(folder.path("dmdb.sqlite"));

  Input input(data, size);
  if (input.pick(2) == 0) {
    const std::string text(input.all());
    matched(handle, text);
    if (remote != nullptr) matched(remote, text);
    expect(matched(handle, "") == "1 2 3 5 -4 ", "a condition changes nothing: " + text);
    return 0;
  }
  const Texts texts = condition(input);
  const std::string ours = matched(handle, texts.ours);
  expect(ours == answered(plain, texts.plain),
         "the rows of " + texts.plain + ": " + ours + " for " + texts.ours);
  if (remote != nullptr) expect(ours == matched(remote, texts.ours), "the server's rows of " + texts.ours);
  return 0;
}
