// SPDX-License-Identifier: Apache-2.0
#include "zel_db/engines/sqlite/sqlite_engine.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "zel_db/engines/sqlite/sqlite_connection.h"

namespace zel_db {
namespace {

constexpr int kBusyMilliseconds = 5000;
constexpr mode_t kDirectoryMode = S_IRWXU | S_IRGRP | S_IXGRP;
constexpr mode_t kFileMode = S_IRUSR | S_IWUSR;

std::string type_of(const Column& column) {
  switch (column.kind) {
    case Kind::Integer:
    case Kind::Unsigned64:
      return "INTEGER";
    case Kind::Text:
    case Kind::Blob:
      break;
  }
  const std::string type = column.kind == Kind::Text ? "TEXT" : "BLOB";
  return type + " CHECK(length(cast(" + column.name + " as blob))<=" + std::to_string(column.size) + ")";
}

std::string columns_of(const std::string& table) {
  return "SELECT name, type || coalesce(' DEFAULT (' || dflt_value || ')', '') FROM pragma_table_info('" +
         table + "')";
}

constexpr Dialect kDialect = {
    .insert_without_values = " DEFAULT VALUES",
    .row_id = "INTEGER PRIMARY KEY AUTOINCREMENT",
    .type = type_of,
    .table_options = " STRICT",
    .begin_definitions = "BEGIN IMMEDIATE",
    .commit_definitions = "COMMIT",
    .columns_of = columns_of,
    .bytes = "blob",
    .rebuilds_tables = true,
    .without_indexes = " NOT INDEXED",
    .searches_conditions = false,
    .pays_for_order = false,
};

constexpr const char* kSuffix = ".sqlite";

std::string last_system_error() {
  return std::generic_category().message(errno);
}

std::string failed_to_create(const std::string& path) {
  std::string line = last_system_error();
  return line.insert(0, "cannot create " + path + ": ");
}

// 0 where there is nothing.
mode_t type_at(const std::string& path) {
  struct stat found {};
  return stat(path.c_str(), &found) == 0 ? found.st_mode & S_IFMT : 0;
}

// One file for each database in a directory, or one file for both.
std::string path_of(const Target& target) {
  const std::string& path = target.url.path;
  const mode_t type = type_at(path);
  if (type == S_IFREG || (type == 0 && path.ends_with(kSuffix))) return path;
  return path + (path.ends_with('/') ? "" : "/") + target.database + kSuffix;
}

// Why there is nothing to open, or empty. SQLite would take an empty file for a database.
std::string unfit(const std::string& path) {
  struct stat found {};
  if (stat(path.c_str(), &found) != 0) return last_system_error();
  if (!S_ISREG(found.st_mode)) return "it is not a file";
  return found.st_size == 0 ? "it is empty" : "";
}

int configure(sqlite3* database) {
  const char* sync = std::getenv("ZEL_DB_SYNC");
  const bool full = sync != nullptr && std::strcmp(sync, "FULL") == 0;
  sqlite3_busy_timeout(database, kBusyMilliseconds);
  // The last one because the pragmas may leave the file unread.
  for (const char* sql : {"PRAGMA case_sensitive_like=ON", "PRAGMA journal_mode=WAL",
                          full ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=NORMAL",
                          "SELECT 1 FROM sqlite_schema LIMIT 1"}) {
    const int code = sqlite3_exec(database, sql, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) return code;
  }
  return SQLITE_OK;
}

std::unique_ptr<Connection> open_file(const std::string& path, std::string* error) {
  const std::string prefix = "cannot open " + path + ": ";
  sqlite3* opened = nullptr;
  int code = sqlite3_open_v2(path.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  SqliteDatabase database(opened);
  if (code == SQLITE_OK) code = configure(opened);
  if (code != SQLITE_OK) {
    *error = prefix + (opened != nullptr ? sqlite3_errmsg(opened) : sqlite3_errstr(code));
    return nullptr;
  }
  if (sqlite3_db_readonly(opened, "main") != 0) {
    *error = prefix + "it is read-only";
    return nullptr;
  }
  return std::make_unique<SqliteConnection>(std::move(database), path);
}

bool make_directories(const std::string& path, std::string* error) {
  for (size_t end = 0; end != std::string::npos;) {
    end = path.find('/', end + 1);
    const std::string directory = path.substr(0, end);
    if (mkdir(directory.c_str(), kDirectoryMode) != 0 && errno != EEXIST) {
      *error = failed_to_create(directory);
      return false;
    }
  }
  return true;
}

// Made here, not by SQLite, for the sake of its mode. An existing one is not opened: closing it would drop
// the locks that SQLite has on it in this process.
bool make_file(const std::string& path, std::string* error) {
  if (type_at(path) != 0) return true;
  const size_t slash = path.rfind('/');
  if (slash != 0 && !make_directories(path.substr(0, slash), error)) return false;
  const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode);
  if (fd < 0 && errno != EEXIST) {
    *error = failed_to_create(path);
    return false;
  }
  if (fd >= 0) close(fd);
  return true;
}

class SqliteEngine : public Engine {
 public:
  std::unique_ptr<Connection> open(const Target& target, std::string* error) const override {
    const std::string path = path_of(target);
    if (const std::string reason = unfit(path); !reason.empty()) {
      *error = "cannot open " + path + ": " + reason;
      return nullptr;
    }
    return open_file(path, error);
  }

  std::unique_ptr<Connection> create(const Target& target, std::string* error) const override {
    const std::string path = path_of(target);
    if (!make_file(path, error)) return nullptr;
    return open_file(path, error);
  }

  const Dialect& dialect() const override { return kDialect; }
};

}  // namespace

const Engine& sqlite_engine() {
  static const SqliteEngine engine;
  return engine;
}

}  // namespace zel_db
