// SPDX-License-Identifier: Apache-2.0
#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <cstring>

#include "bench/hand.h"

namespace bench {

namespace {

struct SqliteCpp {
  static constexpr bool kTuned = false;
  static constexpr const char* kClear = "DELETE FROM PCISetting";

  SqliteCpp(const std::string& folder, bool properties)
      : database(folder + (properties ? "/propertiesdb.sqlite" : "/dmdb.sqlite"), SQLite::OPEN_READWRITE,
                 5000) {
    run("PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA case_sensitive_like=ON");
  }
  void run(const char* sql) { database.exec(sql); }

  class Statement;
  SQLite::Database database;
};

class SqliteCpp::Statement {
 public:
  Statement(const SqliteCpp& client, const std::string& sql, const std::string& /*in*/,
            const std::string& /*out*/)
      : statement_(client.database, sql) {}

  void bind(int place, const char* text) { statement_.bind(place, text); }
  void bind(int place, int64_t number) { statement_.bind(place, number); }
  void bind_null(int place) { statement_.bind(place); }
  bool step() { return statement_.executeStep(); }
  void reset() { statement_.reset(); }
  int columns() const { return statement_.getColumnCount(); }
  int64_t number(int column) { return statement_.getColumn(column).getInt64(); }
  void text(int column, char* field, size_t capacity) {
    const SQLite::Column cell = statement_.getColumn(column);
    const char* const found = cell.getText();
    const auto size = std::min(static_cast<size_t>(cell.getBytes()), capacity - 1);
    std::memcpy(field, found, size);
    field[size] = '\0';
  }
  int64_t cell(int column, char* field, size_t capacity) {
    if (statement_.getColumn(column).isInteger()) return number(column);
    text(column, field, capacity);
    return 0;
  }

 private:
  SQLite::Statement statement_;
};

}  // namespace

std::unique_ptr<Works> sqlitecpp(const std::string& where) {
  return std::make_unique<Hand<SqliteCpp>>(where);
}

}  // namespace bench
