// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_SQLITE_CONNECTION_H
#define ZEL_DB_SQLITE_CONNECTION_H

#include <sqlite3.h>
#include <sys/stat.h>

#include <memory>
#include <string>

#include "zel_db/engine.h"

namespace zel_db {

struct CloseSqlite {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
};
using SqliteDatabase = std::unique_ptr<sqlite3, CloseSqlite>;

struct FinalizeSqlite {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using SqliteStatement = std::unique_ptr<sqlite3_stmt, FinalizeSqlite>;

class SqliteConnection : public Connection {
 public:
  SqliteConnection(SqliteDatabase database, std::string path);

  std::unique_ptr<Prepared> prepare(std::string_view sql, Facts facts, Use use, int* status) override;
  bool is_usable() override;
  bool in_transaction() override { return sqlite3_get_autocommit(database_.get()) == 0; }
  const std::string& message() const override { return message_; }

  sqlite3* database() const { return database_.get(); }
  // The status for a code of SQLite, which keeps its message.
  int fail(int code);
  int refuse(const char* message);

 private:
  SqliteDatabase database_;
  std::string path_;
  std::string message_;
  struct stat opened_ {};
  int64_t looked_at_;
};

}  // namespace zel_db

#endif
