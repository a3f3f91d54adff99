// SPDX-License-Identifier: Apache-2.0
#include "zel_db/engines/sqlite/sqlite_engine.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <system_error>

#include "zel_db/engines/sqlite/sqlite_connection.h"

namespace zel_db {
namespace {

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
    .batch_settings = nullptr,
    .begin_batch = "BEGIN IMMEDIATE",  // nobody else commits meanwhile
    .usual_settings = nullptr,
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

// 0 if there is no file.
mode_t type_at(const std::string& path) {
  struct stat found {};
  return stat(path.c_str(), &found) == 0 ? found.st_mode & S_IFMT : 0;
}

// One file for each database in a directory, or one file for both.
std::string path_of(const DatabaseUrl& url, const Target& target) {
  const std::string& path = url.path;
  const mode_t type = type_at(path);
  if (type == S_IFREG || (type == 0 && path.ends_with(kSuffix))) return path;
  return path + (path.ends_with('/') ? "" : "/") + target.database + kSuffix;
}

// Why there is nothing to open, or empty. SQLite would take an empty file for a database.
std::string unfit(const std::string& path) {
  struct stat found {};
  if (stat(path.c_str(), &found) != 0) {
    return last_system_error() + (errno == ENOENT ? " (\"zeldb init\" makes the databases)" : "");
  }
  if (!S_ISREG(found.st_mode)) return "it is not a file";
  if (euidaccess(path.c_str(), R_OK) != 0) return last_system_error();
  return found.st_size == 0 ? "it is empty (\"zeldb init\" makes its tables)" : "";
}

// Whether this process may write the file and the log beside it.
bool may_write(const std::string& path) {
  const std::string folder = path.substr(0, path.rfind('/') + 1);
  return euidaccess(path.c_str(), W_OK) == 0 &&
         (euidaccess(folder.c_str(), W_OK) == 0 || euidaccess((path + "-wal").c_str(), W_OK) == 0);
}

int run_all(sqlite3* database, std::initializer_list<const char*> statements) {
  int code = SQLITE_OK;
  for (const char* sql : statements) {
    if (code == SQLITE_OK) code = sqlite3_exec(database, sql, nullptr, nullptr, nullptr);
  }
  return code;
}

int configure(sqlite3* database, bool writes) {
  const char* sync = secure_getenv("ZEL_DB_SYNC");
  const bool full = sync != nullptr && std::strcmp(sync, "FULL") == 0;
  sqlite3_busy_timeout(database, kBusyMilliseconds);
  // Without this a statement is prepared again for each value that LIKE is given.
  sqlite3_db_config(database, SQLITE_DBCONFIG_ENABLE_QPSG, 1, nullptr);
  int code = SQLITE_OK;
  if (writes) {
    // A log that a large write has left is cut to twice its usual size.
    code = run_all(database, {"PRAGMA journal_mode=WAL", "PRAGMA journal_size_limit=8388608",
                              full ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=NORMAL"});
  }
  if (code != SQLITE_OK) return code;
  // The pragmas may leave the file unread.
  return run_all(database, {"PRAGMA case_sensitive_like=ON", "SELECT 1 FROM sqlite_schema LIMIT 1"});
}

// A name of the form that options can follow.
std::string uri_of(const std::string& path) {
  std::string uri = "file:";
  for (const char c : path) {
    if (c == '%' || c == '?' || c == '#') {
      char code[4];
      snprintf(code, sizeof code, "%%%02X", static_cast<unsigned>(c));
      uri.append(code);
    } else {
      uri.push_back(c);
    }
  }
  return uri;
}

struct Opened {
  SqliteDatabase database;
  int code;
  std::string message;
};

Opened open_database(const std::string& name, int flags) {
  sqlite3* database = nullptr;
  Opened opened{nullptr, sqlite3_open_v2(name.c_str(), &database, flags | SQLITE_OPEN_NOMUTEX, nullptr), ""};
  opened.database.reset(database);
  if (opened.code == SQLITE_OK) opened.code = configure(database, (flags & SQLITE_OPEN_READWRITE) != 0);
  if (opened.code != SQLITE_OK) {
    opened.message = database != nullptr ? sqlite3_errmsg(database) : sqlite3_errstr(opened.code);
  }
  return opened;
}

// A user who may not write a database can read it while the log and its index exist. They are removed when
// nobody has the database open; the file is then read without locks, as one that never changes. If it changes
// during a read, the result is discarded.
std::unique_ptr<Connection> open_to_read(const std::string& path, std::string* error) {
  const FileVersion version(path);
  Opened opened = open_database(path, SQLITE_OPEN_READONLY);
  std::optional<FileVersion> unchanged;
  const int kind = opened.code & 0xFF;
  if (kind == SQLITE_CANTOPEN || kind == SQLITE_READONLY) {
    if (has_log(path + "-wal") || has_log(path + "-journal")) {
      *error =
          "cannot open " + path + ": there are changes beside it that only one who may write can bring in";
      return nullptr;
    }
    unchanged = version;
    opened = open_database(uri_of(path) + "?immutable=1", SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
  }
  if (opened.code != SQLITE_OK) {
    *error = "cannot open " + path + ": " + opened.message;
    return nullptr;
  }
  return std::make_unique<SqliteConnection>(std::move(opened.database), path, std::move(unchanged));
}

std::unique_ptr<Connection> open_to_write(const std::string& path, std::string* error) {
  Opened opened = open_database(path, SQLITE_OPEN_READWRITE);
  if (opened.code != SQLITE_OK) {
    *error = "cannot open " + path + ": " + opened.message;
    return nullptr;
  }
  return std::make_unique<SqliteConnection>(std::move(opened.database), path, std::nullopt);
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

// Creates the file here and not in SQLite, to set its mode. An existing file is not opened: closing it would
// drop the locks that SQLite has on it in this process. Links are not followed: others may have made them.
bool make_file(const std::string& path, std::string* error) {
  struct stat found {};
  if (lstat(path.c_str(), &found) == 0) {
    if (S_ISLNK(found.st_mode)) {
      *error = "cannot create " + path + ": it is a symbolic link";
      return false;
    }
    const bool is_empty = S_ISREG(found.st_mode) && found.st_size == 0;
    if (!is_empty || fchmodat(AT_FDCWD, path.c_str(), kFileMode, AT_SYMLINK_NOFOLLOW) == 0) return true;
    *error = failed_to_create(path);
    return false;
  }
  const size_t slash = path.rfind('/');
  const std::string folder = path.substr(0, slash);
  if (slash != 0 && !make_directories(folder, error)) return false;
  const int fd = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kFileMode);
  if (fd < 0 && errno != EEXIST) {
    *error = failed_to_create(path);
    return false;
  }
  if (fd >= 0) {
    // A file that root creates in a user's folder belongs to that user. SQLite does the same with the log.
    struct stat owner {};
    if (geteuid() == 0 && slash != 0 && stat(folder.c_str(), &owner) == 0 && owner.st_uid != 0) {
      [[maybe_unused]] const int given = fchown(fd, owner.st_uid, owner.st_gid);
    }
    close(fd);
  }
  return true;
}

class SqliteEngine : public Engine {
 public:
  std::unique_ptr<Connection> open(const DatabaseUrl& url, const Target& target,
                                   std::string* error) const override {
    const std::string path = path_of(url, target);
    if (const std::string reason = unfit(path); !reason.empty()) {
      *error = "cannot open " + path + ": " + reason;
      return nullptr;
    }
    return may_write(path) ? open_to_write(path, error) : open_to_read(path, error);
  }

  std::unique_ptr<Connection> create(const DatabaseUrl& url, const Target& target,
                                     std::string* error) const override {
    const std::string path = path_of(url, target);
    if (!make_file(path, error)) return nullptr;
    return open_to_write(path, error);
  }

  const Dialect& dialect() const override { return kDialect; }
};

}  // namespace

const Engine& sqlite_engine() {
  static const SqliteEngine engine;
  return engine;
}

}  // namespace zel_db
