// SPDX-License-Identifier: Apache-2.0
#include "zel_db/engines/sqlite/sqlite_connection.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include "zel_db/sql/tokens.h"

namespace zel_db {
namespace {

int status_for(int code) {
  switch (code & 0xFF) {
    case SQLITE_OK:
      return kOk;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return kBusy;
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
    case SQLITE_TOOBIG:
      return kConstraint;
    case SQLITE_NOMEM:
      return kNoMemory;
    case SQLITE_READONLY:
      return kReadOnly;
    default:
      return kSqlError;
  }
}

// When the log has this many pages (4 MB), it is copied into the database and starts again.
constexpr int kLogPages = 1000;
constexpr int kCheckpointMilliseconds = 1000;

// A tick lasts some milliseconds.
int64_t clock_tick() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

struct ResetSqlite {
  void operator()(sqlite3_stmt* statement) const { sqlite3_reset(statement); }
};

class SqlitePrepared : public Prepared {
 public:
  SqlitePrepared(SqliteConnection& connection, SqliteStatement statement, Facts facts)
      : Prepared(std::move(facts)),
        connection_(connection),
        statement_(std::move(statement)),
        placeholders_(static_cast<size_t>(sqlite3_bind_parameter_count(statement_.get()))) {}

  int run(std::span<const Value> values, Result* rows, Outcome* outcome) override;

 private:
  int bind(std::span<const Value> values);
  int fetch(Result* rows);
  const ColumnNames& columns();
  void append_row(Result& rows);

  SqliteConnection& connection_;
  SqliteStatement statement_;
  const size_t placeholders_;
  ColumnNames columns_;
  int prepared_again_ = 0;
};

// Texts stay where they are: each run binds all of them again before it steps.
int SqlitePrepared::bind(std::span<const Value> values) {
  sqlite3_stmt* statement = statement_.get();
  int code = SQLITE_OK;
  int place = 0;
  for (const Value& value : values) {
    ++place;
    switch (value.kind) {
      case Value::Kind::Text:
        code = sqlite3_bind_text(statement, place, value.text, static_cast<int>(value.size), SQLITE_STATIC);
        break;
      case Value::Kind::Null:
        code = sqlite3_bind_null(statement, place);
        break;
      case Value::Kind::Integer:
      case Value::Kind::Unsigned:
        code = sqlite3_bind_int64(statement, place, value.number);
        break;
    }
    if (code != SQLITE_OK) break;
  }
  return code;
}

// SQLite prepares a statement again when the schema has changed; "*" may then have other columns.
const ColumnNames& SqlitePrepared::columns() {
  sqlite3_stmt* statement = statement_.get();
  const int prepared_again = sqlite3_stmt_status(statement, SQLITE_STMTSTATUS_REPREPARE, 0);
  if (columns_ == nullptr || prepared_again != prepared_again_) {
    auto names = std::make_shared<std::vector<std::string>>();
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
      const char* name = sqlite3_column_name(statement, i);
      names->emplace_back(name != nullptr ? name : "");
    }
    columns_ = std::move(names);
    prepared_again_ = prepared_again;
  }
  return columns_;
}

// A value is looked up once per cell. SQLite's unprotected values are safe here: the handle is locked.
void SqlitePrepared::append_row(Result& rows) {
  sqlite3_stmt* statement = statement_.get();
  rows.begin_row();
  const int width = static_cast<int>(columns_->size());
  for (int i = 0; i < width; ++i) {
    const auto column = static_cast<size_t>(i);
    sqlite3_value* value = sqlite3_column_value(statement, i);
    const int type = sqlite3_value_type(value);
    if (type == SQLITE_INTEGER) {
      rows.put_integer(column, sqlite3_value_int64(value));
    } else if (type == SQLITE_FLOAT) {
      rows.put_real(column, sqlite3_value_double(value));
    } else if (type == SQLITE_NULL) {
      rows.put_null(column);
    } else {
      const void* bytes = type == SQLITE_TEXT ? sqlite3_value_text(value) : sqlite3_value_blob(value);
      const auto size = static_cast<size_t>(sqlite3_value_bytes(value));
      char* place = rows.put_bytes(column, type == SQLITE_TEXT ? CellType::Text : CellType::Blob, size);
      if (size != 0) std::memcpy(place, bytes, size);
    }
  }
}

int SqlitePrepared::fetch(Result* rows) {
  int code = sqlite3_step(statement_.get());
  if (rows != nullptr && (code == SQLITE_ROW || code == SQLITE_DONE)) rows->set_columns(columns());
  while (code == SQLITE_ROW) {
    if (rows != nullptr) append_row(*rows);
    code = sqlite3_step(statement_.get());
  }
  return code == SQLITE_DONE ? SQLITE_OK : code;
}

int SqlitePrepared::run(std::span<const Value> values, Result* rows, Outcome* outcome) {
  const std::unique_ptr<sqlite3_stmt, ResetSqlite> reset(statement_.get());
  if (placeholders_ != values.size()) {
    return connection_.refuse("placeholders of another kind than \"?\"");
  }
  int code = bind(values);
  if (code == SQLITE_OK) code = fetch(rows);
  if (code != SQLITE_OK) return connection_.fail(code);
  if (const int status = connection_.confirm(); status != kOk) return status;
  if (outcome != nullptr) {
    outcome->row_id = sqlite3_last_insert_rowid(connection_.database());
    outcome->changed = sqlite3_changes(connection_.database());
  }
  return kOk;
}

}  // namespace

FileVersion::FileVersion(std::string file) : path(std::move(file)) {
  stat(path.c_str(), &found);
}

bool FileVersion::has_changed() const {
  const FileVersion now(path);
  const auto same_time = [](const timespec& a, const timespec& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
  };
  return now.found.st_ino != found.st_ino || now.found.st_size != found.st_size ||
         !same_time(now.found.st_mtim, found.st_mtim) || has_log(path + "-wal") || has_log(path + "-journal");
}

bool has_log(const std::string& path) {
  struct stat found {};
  return stat(path.c_str(), &found) == 0 && found.st_size != 0;
}

SqliteConnection::SqliteConnection(SqliteDatabase database, std::string path,
                                   std::optional<FileVersion> version)
    : database_(std::move(database)),
      path_(std::move(path)),
      looked_at_(clock_tick()),
      version_(std::move(version)),
      checkpoint_at_(kLogPages) {
  stat(path_.c_str(), &opened_);
  sqlite3_wal_hook(this->database(), after_commit, this);
}

// A failure here does not undo the commit.
int SqliteConnection::after_commit(void* connection, sqlite3* /*database*/, const char* /*name*/, int pages) {
  static_cast<SqliteConnection*>(connection)->keep_log_short(pages);
  return SQLITE_OK;
}

// The log starts again from its beginning only when nobody reads from it. SQLite does not wait for that, and
// with one reader after the other it never happens. Here the writer waits for the readers: they are short,
// and later ones read only the database. If a reader takes too long, the next attempt comes when the log has
// grown by the same amount again, so that writers do not wait each time.
void SqliteConnection::keep_log_short(int pages) {
  if (pages < kLogPages) checkpoint_at_ = kLogPages;  // another connection was here
  if (pages < checkpoint_at_) return;
  sqlite3_busy_timeout(database(), kCheckpointMilliseconds);
  const int code = sqlite3_wal_checkpoint_v2(database(), "main", SQLITE_CHECKPOINT_RESTART, nullptr, nullptr);
  sqlite3_busy_timeout(database(), kBusyMilliseconds);
  checkpoint_at_ = code == SQLITE_OK ? kLogPages : pages + kLogPages;
}

bool SqliteConnection::run(SqliteStatement& kept, const char* sql) const {
  if (kept == nullptr) {
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v3(database(), sql, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    kept.reset(prepared);
  }
  const int code = sqlite3_step(kept.get());
  sqlite3_reset(kept.get());
  return code == SQLITE_DONE;
}

int SqliteConnection::confirm() {
  if (!version_ || !version_->has_changed()) return kOk;
  is_lost_ = true;
  message_ = "the file has changed while it was read";
  return kConnectionLost;
}

int SqliteConnection::refuse(const char* message) {
  message_ = message;
  was_refused_ = true;
  return kSqlError;
}

int SqliteConnection::fail(int code) {
  message_ = sqlite3_errmsg(database());
  const int status = status_for(code);
  was_refused_ =
      (code & 0xFF) == SQLITE_ERROR || status == kConstraint || status == kReadOnly || status == kNoMemory;
  return status;
}

std::unique_ptr<Prepared> SqliteConnection::prepare(std::string_view sql, Facts facts, Use use, int* status) {
  sqlite3_stmt* prepared = nullptr;
  const char* tail = nullptr;
  const int code = sqlite3_prepare_v3(database(), sql.data(), static_cast<int>(sql.size()),
                                      use == Use::Often ? SQLITE_PREPARE_PERSISTENT : 0, &prepared, &tail);
  SqliteStatement statement(prepared);
  if (code != SQLITE_OK) {
    *status = fail(code);
    return nullptr;
  }
  const bool more =
      std::any_of(tail, sql.data() + sql.size(), [](char c) { return !is_blank(c) && c != ';'; });
  if (statement == nullptr || more) {
    *status = refuse(more ? "more than one statement" : "no statement");
    return nullptr;
  }
  return std::make_unique<SqlitePrepared>(*this, std::move(statement), std::move(facts));
}

// If another file has taken the place of the open one, writes to the open one are lost. A check costs half as
// much as a keyed read, so it is made once per tick of the clock.
bool SqliteConnection::is_usable() {
  const int64_t now = clock_tick();
  if (now == looked_at_) return true;
  looked_at_ = now;
  struct stat found {};
  return stat(path_.c_str(), &found) == 0 && found.st_dev == opened_.st_dev && found.st_ino == opened_.st_ino;
}

}  // namespace zel_db
