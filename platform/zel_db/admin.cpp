// SPDX-License-Identifier: Apache-2.0
//
// Creates the databases, fills them from a file, and says what is wrong with them.
#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

#include "zel_db/c_face.h"
#include "zel_db/connections.h"
#include "zel_db/run_once.h"
#include "zel_db/schema.h"
#include "zel_db/session.h"
#include "zel_db/sql/tokens.h"
#include "zel_db/upgrade.h"

namespace zel_db {
namespace {

std::string url_or_environment(const char* url) {
  return std::string(url != nullptr ? std::string_view(url) : environment_url());
}

// 0 if the database has none.
int64_t version_of(Connection& connection, const Dialect& dialect) {
  if (rows_of(connection, dialect.columns_of("ZeldbSchema")).empty()) return 0;
  Result versions;
  run_once(connection, "SELECT max(Version) FROM ZeldbSchema", &versions);
  uint64_t version = 0;
  versions.step();
  return versions.number(0, &version) == kOk ? static_cast<int64_t>(version) : 0;
}

// If an engine commits each definition by itself and is interrupted, the next call continues: the version is
// written last.
void define(Connection& connection, const std::string& database, const Dialect& dialect) {
  run_once(connection, dialect.begin_definitions);
  const int64_t version = version_of(connection, dialect);
  upgrade_tables(connection, database, dialect);  // two databases in one file have one version
  for (const std::string& statement : definitions(database, dialect)) run_once(connection, statement);
  if (version < kSchemaVersion) {
    const std::string number = std::to_string(kSchemaVersion);
    run_once(connection, version == 0 ? "INSERT INTO ZeldbSchema (Version) VALUES (" + number + ")"
                                      : "UPDATE ZeldbSchema SET Version=" + number);
  }
  run_once(connection, dialect.commit_definitions);
}

std::unique_ptr<Connection> created(const Target& target, const Engine*& engine) {
  std::string error;
  DatabaseUrl parts;
  engine = engine_of(target, &parts, &error);
  if (engine == nullptr) throw Failure(kInvalidArgument, error);
  std::unique_ptr<Connection> connection = engine->create(parts, target, &error);
  if (connection == nullptr) throw Failure(kSqlError, error);
  return connection;
}

void create(const std::string& url, std::string_view database) {
  std::string error;
  const Target target{url, std::string(database), "root", ""};
  const Engine* engine = nullptr;
  const auto connection = created(target, engine);
  if (!has_known_schema(*connection, &error)) throw Failure(kSqlError, error);
  try {
    define(*connection, target.database, engine->dialect());
  } catch (const Failure& failure) {
    throw Failure(failure.status, "cannot make the tables of " + target.database + ": " + failure.what());
  }
}

std::string read_file(const std::string& path) {
  const auto fail = [&] {
    const std::string reason = std::generic_category().message(errno);
    return Failure(kInvalidArgument, "cannot read " + path + ": " + reason);
  };
  const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(path.c_str(), "re"), fclose);
  if (file == nullptr) throw fail();
  std::string content;
  char block[16384];
  while (const size_t size = fread(block, 1, sizeof block, file.get())) content.append(block, size);
  if (ferror(file.get()) != 0) throw fail();
  return content;
}

struct CloseHandle {
  void operator()(Handle* handle) const { close_handle(handle); }
};

void load(const std::string& url, const char* database, const std::string& path) {
  const Target target{url, database, "root", ""};
  DatabaseUrl parts;
  std::string error;
  if (engine_of(target, &parts, &error) == nullptr) throw Failure(kInvalidArgument, error);
  const std::string script = read_file(path);
  const std::unique_ptr<Handle, CloseHandle> handle(open_handle(target, &error));
  if (handle == nullptr) throw Failure(kConnectionLost, error);
  size_t number = 0;
  for (const std::string_view statement : split_statements(script)) {
    ++number;
    const int status = handle->raw_query(statement, nullptr);
    if (status != kOk) {
      throw Failure(status, path + ": statement " + std::to_string(number) + ": " + handle->message());
    }
  }
}

void clear(const std::string& url, const std::string& database) {
  std::string error;
  const std::unique_ptr<Handle, CloseHandle> handle(open_handle({url, database, "root", ""}, &error));
  if (handle == nullptr) throw Failure(kConnectionLost, error);
  const auto run = [&](const std::string& sql) {
    const int status = handle->raw_query(sql, nullptr);
    if (status != kOk) throw Failure(status, handle->name() + ": " + handle->message());
  };
  run("BEGIN");  // closing the handle takes back what is not committed
  for (const Family& family : families()) {
    if (family.database != database) continue;
    for (const Table& table : family.tables) run(std::string("DELETE FROM ") + table.name);
  }
  run("COMMIT");
}

void check(const std::string& url, const std::string& database) {
  std::string error;
  const std::unique_ptr<Handle, CloseHandle> handle(open_handle({url, database, "root", ""}, &error));
  if (handle == nullptr) throw Failure(kConnectionLost, error);
  for (const Family& family : families()) {
    if (!family.database.empty() && family.database != database) continue;
    for (const Table& table : family.tables) {
      if (!table.has_row_id) continue;  // a database without a version is in order
      std::string sql = "SELECT _id";
      for (const Column& column : table.columns) sql.append(", ").append(column.name);
      const int status = handle->raw_query(sql.append(" FROM ").append(table.name) + " LIMIT 0", nullptr);
      if (status == kOk) continue;
      throw Failure(status, handle->name() + ": " + handle->message() +
                                (status == kSqlError ? " (\"zeldb init\" makes what is missing)" : ""));
    }
  }
}

template <class Body>
int reported(char* error, unsigned capacity, Body body) {
  return guarded([&] {
    if (error != nullptr && capacity != 0) *error = '\0';
    try {
      body();
      return static_cast<int>(kOk);
    } catch (const Failure& failure) {
      if (error != nullptr) snprintf(error, capacity, "%s", failure.what());
      return failure.status;
    }
  });
}

}  // namespace
}  // namespace zel_db

using namespace zel_db;  // NOLINT(google-build-using-namespace): exported C functions stand outside

int zel_db_create(const char* url, char* error, unsigned capacity) {
  return reported(error, capacity, [&] {
    for (const std::string_view database : kDatabases) create(url_or_environment(url), database);
  });
}

int zel_db_create_fleet(const char* url, char* error, unsigned capacity) {
  return reported(error, capacity, [&] {
    const Engine* engine = nullptr;
    created({url_or_environment(url), std::string(kFleetDatabase), "root", ""}, engine);
  });
}

int zel_db_clear(const char* url, const char* database, char* error, unsigned capacity) {
  if (database == nullptr) return kInvalidArgument;
  return reported(error, capacity, [&] { clear(url_or_environment(url), database); });
}

int zel_db_check(const char* url, const char* database, char* error, unsigned capacity) {
  if (database == nullptr) return kInvalidArgument;
  return reported(error, capacity, [&] { check(url_or_environment(url), database); });
}

int zel_db_load(const char* url, const char* database, const char* path, char* error, unsigned capacity) {
  if (database == nullptr || path == nullptr) return kInvalidArgument;
  return reported(error, capacity, [&] { load(url_or_environment(url), database, path); });
}
