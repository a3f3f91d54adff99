// SPDX-License-Identifier: Apache-2.0
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <unordered_map>

#include "bench/hand_sql.h"
#include "bench/setting_columns.h"
#include "bench/works.h"

namespace bench {

namespace {

class Statement {
 public:
  Statement(sqlite3* database, const std::string& sql) : database_(database) {
    if (sqlite3_prepare_v3(database, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement_, nullptr) !=
        SQLITE_OK) {
      give_up(sqlite3_errmsg(database));
    }
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
  sqlite3_stmt* get() const { return statement_; }

 private:
  sqlite3* database_;
  sqlite3_stmt* statement_ = nullptr;
};

class HandSqlite : public Works {
 public:
  explicit HandSqlite(const std::string& path) : database_(open(path)) {}
  HandSqlite(const HandSqlite&) = delete;
  HandSqlite& operator=(const HandSqlite&) = delete;
  ~HandSqlite() override {
    updates_.clear();
    find_.reset();
    insert_.reset();
    list_.reset();
    key_.reset();
    sqlite3_close(database_);
  }

  void store(const PCISetting_info& record) override {
    benchmark::DoNotOptimize(key_filter(record).c_str());
    find_->bind(1, reinterpret_cast<const char*>(record.SettingID));
    const int64_t id = find_->step() ? sqlite3_column_int64(find_->get(), 0) : 0;
    find_->reset();
    benchmark::DoNotOptimize(change_filter(record).c_str());
    Statement& write = id == 0 ? *insert_ : update(record);
    int place = bind_columns(write, record);
    if (id != 0) {
      write.bind(place++, id);
      bind_compared(write, record, place);
    }
    write.step();
    write.reset();
  }

  unsigned list() override;

  unsigned aim_supported(uint32_t function_key) override {
    benchmark::DoNotOptimize(function_filter(function_key).c_str());
    key_->bind(1, int64_t{function_key});
    if (!key_->step()) give_up("no such function");
    const auto supported = static_cast<unsigned>(sqlite3_column_int64(key_->get(), 0));
    key_->reset();
    return supported;
  }

 private:
  static sqlite3* open(const std::string& path);
  static int bind_columns(Statement& statement, const PCISetting_info& record);
  static void bind_compared(Statement& statement, const PCISetting_info& record, int place);

  Statement& update(const PCISetting_info& record) {
    std::unique_ptr<Statement>& statement = updates_[shape_of(record)];
    if (statement == nullptr) statement = std::make_unique<Statement>(database_, update_sql(record));
    return *statement;
  }
  std::unique_ptr<Statement> prepared(const std::string& sql) {
    return std::make_unique<Statement>(database_, sql);
  }

  sqlite3* database_;
  std::unique_ptr<Statement> find_ = prepared(kFindSql);
  std::unique_ptr<Statement> insert_ = prepared(insert_sql());
  std::unique_ptr<Statement> key_ = prepared(kKeySql);
  std::unique_ptr<Statement> list_ = prepared(kListSql);
  std::unordered_map<uint32_t, std::unique_ptr<Statement>> updates_;
};

sqlite3* HandSqlite::open(const std::string& path) {
  sqlite3* database = nullptr;
  if (sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr) !=
      SQLITE_OK) {
    give_up(path);
  }
  sqlite3_busy_timeout(database, 5000);
  sqlite3_exec(database, "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL", nullptr, nullptr, nullptr);
  return database;
}

int HandSqlite::bind_columns(Statement& statement, const PCISetting_info& record) {
  int place = 1;
  for (const Column& column : kStored) {
    const char* const text = text_at(record, column);
    if (!column.text) {
      statement.bind(place++, int64_t{number_at(record, column)});
    } else if (*text == '\0') {
      statement.bind_null(place++);
    } else {
      statement.bind(place++, text);
    }
  }
  return place;
}

void HandSqlite::bind_compared(Statement& statement, const PCISetting_info& record, int place) {
  for (const Column& column : kCompared) {
    const char* const text = text_at(record, column);
    if (!column.text) {
      statement.bind(place++, int64_t{number_at(record, column)});
    } else if (*text != '\0') {
      statement.bind(place++, text);
    }
  }
}

template <size_t N>
void copy(sqlite3_stmt* statement, int column, char (&field)[N]) {
  const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
  const auto size = std::min(static_cast<size_t>(sqlite3_column_bytes(statement, column)), N - 1);
  if (text != nullptr) std::memcpy(field, text, size);
  field[text != nullptr ? size : 0] = '\0';
}

unsigned HandSqlite::list() {
  const std::unique_ptr<ListRow[]> rows(new ListRow[kSettings]);
  unsigned count = 0;
  sqlite3_stmt* const s = list_->get();
  const auto number = [s](int column) { return static_cast<uint32_t>(sqlite3_column_int64(s, column)); };
  while (count < kSettings && list_->step()) {
    ListRow& row = rows[count++];
    copy(s, 0, row.SettingID);
    copy(s, 1, row.SettingName);
    copy(s, 2, row.PendingValue);
    copy(s, 3, row.CurrentValue);
    row.PfaKey = number(4);
    copy(s, 5, row.GroupID);
    copy(s, 6, row.GroupName);
    copy(s, 7, row.Mriname);
    copy(s, 8, row.ShortDesc);
    copy(s, 9, row.FullDesc);
    copy(s, 10, row.Defvalue);
    copy(s, 11, row.RecordId);
    row.Type = number(12);
    row.Flags = number(13);
    row.Minim = number(14);
    row.Maxim = number(15);
    row.Step = number(16);
    row.Numchoices = number(17);
    copy(s, 18, row.Choices);
    row.Mininstances = number(19);
    row.Maxinstances = number(20);
  }
  list_->reset();
  return count;
}

}  // namespace

std::unique_ptr<Works> hand_sqlite(const std::string& path) {
  return std::make_unique<HandSqlite>(path);
}

}  // namespace bench
