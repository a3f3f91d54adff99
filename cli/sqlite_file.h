// SPDX-License-Identifier: Apache-2.0
//
// Exports as SQLite files. Everything throws a Failure that names the file.
#ifndef CLI_SQLITE_FILE_H
#define CLI_SQLITE_FILE_H

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zeldb::cli {

struct CloseSqlite {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

// A path as the path of a URL.
std::string percent_encoded(const std::string& path);

class SqliteStatement {
 public:
  // False when there are no more rows.
  bool step();
  // Makes it ready for another run with other values.
  void reset() { sqlite3_reset(statement_.get()); }

  int64_t number(int column) const { return sqlite3_column_int64(statement_.get(), column); }
  std::string text(int column) const;
  bool is_null(int column) const { return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL; }

  // Places count from 1. Texts and bytes have to live until the next step.
  void bind_null(int place) { sqlite3_bind_null(statement_.get(), place); }
  void bind(int place, int64_t number) { sqlite3_bind_int64(statement_.get(), place, number); }
  void bind_text(int place, std::string_view text);
  void bind_bytes(int place, std::string_view bytes);

 private:
  friend class SqliteFile;
  SqliteStatement(sqlite3_stmt* statement, std::string name)
      : statement_(statement), name_(std::move(name)) {}

  std::unique_ptr<sqlite3_stmt, CloseSqlite> statement_;
  std::string name_;  // of the file
};

class SqliteFile {
 public:
  // Opens an existing file for reading and writing; name is what failures call it.
  SqliteFile(const std::string& path, std::string name);

  SqliteStatement prepare(const std::string& sql) const;
  void run(const std::string& sql) const { prepare(sql).step(); }

 private:
  std::unique_ptr<sqlite3, CloseSqlite> database_;
  std::string name_;
};

// A table of the inventory, without those that hold the versions.
struct InventoryTable {
  struct Column {
    std::string name;
    std::string type;  // INTEGER, TEXT or BLOB
  };
  std::string name;
  std::vector<Column> columns;
};

// Creates the tables of both databases in one file, which exists and is empty.
SqliteFile create_inventory(const std::string& path, const std::string& name);
std::vector<InventoryTable> tables_of(const SqliteFile& inventory);
int64_t schema_version_of(const SqliteFile& inventory, const std::string& attached = "main");

}  // namespace zeldb::cli

#endif
