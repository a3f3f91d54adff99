// SPDX-License-Identifier: Apache-2.0
#include <sqlite3.h>

#include <algorithm>
#include <cstring>

#include "bench/hand.h"

namespace bench {

namespace {

// ByValues looks a cell up once; ByColumns once for each function, as code is usually written.
enum class Cells { ByValues, ByColumns };

template <Cells cells>
struct Sqlite {
  static constexpr bool kTuned = true;
  static constexpr const char* kClear = "DELETE FROM PCISetting";

  Sqlite(const std::string& folder, bool properties) {
    const std::string path = folder + (properties ? "/propertiesdb.sqlite" : "/dmdb.sqlite");
    if (sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) !=
        SQLITE_OK) {
      give_up(path);
    }
    sqlite3_busy_timeout(database, 5000);
    run("PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA case_sensitive_like=ON");
  }
  Sqlite(const Sqlite&) = delete;
  Sqlite& operator=(const Sqlite&) = delete;
  ~Sqlite() { sqlite3_close(database); }
  void run(const char* sql) const {
    if (sqlite3_exec(database, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
      give_up(sqlite3_errmsg(database));
  }

  class Statement;
  sqlite3* database = nullptr;
};

template <Cells cells>
class Sqlite<cells>::Statement {
 public:
  Statement(const Sqlite& client, const std::string& sql, const std::string& /*in*/,
            const std::string& /*out*/)
      : database_(client.database) {
    if (sqlite3_prepare_v3(database_, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement_, nullptr) !=
        SQLITE_OK) {
      give_up(sqlite3_errmsg(database_));
    }
    columns_ = sqlite3_column_count(statement_);
  }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement() { sqlite3_finalize(statement_); }

  void bind(int place, const char* text) { sqlite3_bind_text(statement_, place, text, -1, SQLITE_STATIC); }
  void bind(int place, int64_t number) { sqlite3_bind_int64(statement_, place, number); }
  void bind_null(int place) { sqlite3_bind_null(statement_, place); }
  bool step() {
    const int code = sqlite3_step(statement_);
    if (code != SQLITE_ROW && code != SQLITE_DONE) give_up(sqlite3_errmsg(database_));
    return code == SQLITE_ROW;
  }
  void reset() { sqlite3_reset(statement_); }
  int columns() const { return columns_; }
  int64_t number(int column) {
    if constexpr (cells == Cells::ByColumns) return sqlite3_column_int64(statement_, column);
    return sqlite3_value_int64(sqlite3_column_value(statement_, column));
  }
  void text(int column, char* field, size_t capacity) {
    if constexpr (cells == Cells::ByColumns) {
      const auto* const text = sqlite3_column_text(statement_, column);
      copy(text, sqlite3_column_bytes(statement_, column), field, capacity);
    } else {
      copy(sqlite3_column_value(statement_, column), field, capacity);
    }
  }
  // A number, or a text into the field.
  int64_t cell(int column, char* field, size_t capacity) {
    sqlite3_value* const found = sqlite3_column_value(statement_, column);
    if (sqlite3_value_type(found) == SQLITE_INTEGER) return sqlite3_value_int64(found);
    copy(found, field, capacity);
    return 0;
  }

 private:
  static void copy(sqlite3_value* found, char* field, size_t capacity) {
    const auto* const text = sqlite3_value_text(found);
    copy(text, sqlite3_value_bytes(found), field, capacity);
  }
  static void copy(const unsigned char* text, int bytes, char* field, size_t capacity) {
    const auto size = std::min(static_cast<size_t>(bytes), capacity - 1);
    if (text != nullptr) std::memcpy(field, text, size);
    field[text != nullptr ? size : 0] = '\0';
  }

  sqlite3* database_;
  sqlite3_stmt* statement_ = nullptr;
  int columns_ = 0;
};

}  // namespace

std::unique_ptr<Works> tuned_sqlite(const std::string& where) {
  return std::make_unique<Hand<Sqlite<Cells::ByValues>>>(where);
}

std::unique_ptr<Works> columns_sqlite(const std::string& where) {
  return std::make_unique<Hand<Sqlite<Cells::ByColumns>>>(where);
}

std::unique_ptr<Replayer> replayer_sqlite(const std::string& where) {
  return std::make_unique<HandReplayer<Sqlite<Cells::ByValues>>>(where);
}

}  // namespace bench
