// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_SQLITE_CONNECTION_H
#define ZEL_DB_SQLITE_CONNECTION_H

#include <sqlite3.h>
#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>

#include "zel_db/engine.h"

namespace zel_db {

inline constexpr int kBusyMilliseconds = 5000;

struct CloseSqlite {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
};
using SqliteDatabase = std::unique_ptr<sqlite3, CloseSqlite>;

struct FinalizeSqlite {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using SqliteStatement = std::unique_ptr<sqlite3_stmt, FinalizeSqlite>;

// Identifies the content of a database file without reading it.
struct FileVersion {
  explicit FileVersion(std::string file);
  // Another connection writes, or has written, since.
  bool has_changed() const;

  std::string path;
  struct stat found {};
};

// Whether the file at path holds something that is not yet in the database.
bool has_log(const std::string& path);

class SqliteConnection : public Connection {
 public:
  // version: the one that the connection takes for unchanged for ever, if it is of that kind.
  SqliteConnection(SqliteDatabase database, std::string path, std::optional<FileVersion> version);

  std::unique_ptr<Prepared> prepare(std::string_view sql, Facts facts, Use use, int* status) override;
  bool is_usable() override;
  bool in_transaction() override { return sqlite3_get_autocommit(database_.get()) == 0; }
  bool begin_reads() override { return !in_transaction() && run(begin_, "BEGIN"); }
  bool end_reads() override { return run(commit_, "COMMIT"); }
  bool is_lost() const override { return is_lost_; }
  bool was_refused() const override { return was_refused_; }
  const std::string& name() const override { return path_; }
  const std::string& message() const override { return message_; }

  sqlite3* database() const { return database_.get(); }
  // The status for a code of SQLite, which keeps its message.
  int fail(int code);
  int refuse(const char* message);
  // Whether a file that is read as one that never changes has indeed not changed.
  int confirm();

 private:
  static int after_commit(void* connection, sqlite3* database, const char* name, int pages);
  void keep_log_short(int pages);
  bool run(SqliteStatement& kept, const char* sql) const;

  SqliteDatabase database_;
  SqliteStatement begin_;
  SqliteStatement commit_;
  std::string path_;
  std::string message_;
  struct stat opened_ {};
  int64_t looked_at_;
  std::optional<FileVersion> version_;
  int checkpoint_at_;
  bool is_lost_ = false;
  bool was_refused_ = false;
};

}  // namespace zel_db

#endif
