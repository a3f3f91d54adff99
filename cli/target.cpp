// SPDX-License-Identifier: Apache-2.0
#include "cli/target.h"

#include "cli/command.h"
#include "cli/library.h"
#include "platform/zel_db.h"
#include "platform/zel_db_admin.h"
#include "zeldb/status.h"

namespace zeldb::cli {

namespace {

int run(_zel_db_handle_t* handle, const std::string& statement) {
  return zel_db_raw_query(handle, statement.c_str(), static_cast<int>(statement.size()), nullptr);
}

struct Release {
  void operator()(zel_db_result_t* result) const { zel_db_free_result(result); }
};
using Result = std::unique_ptr<zel_db_result_t, Release>;

Result select(_zel_db_handle_t* handle, const std::string& statement, const std::string& what) {
  zel_db_result_t* rows = nullptr;
  const int status = zel_db_raw_query(handle, statement.c_str(), static_cast<int>(statement.size()), &rows);
  Result owner(rows);
  check(status, what);
  return owner;
}

int64_t version_of(_zel_db_handle_t* handle, const std::string& what) {
  const Result versions = select(handle, "SELECT max(Version) FROM ZeldbSchema", what);
  int64_t version = 0;
  if (zel_db_result_step(versions.get()) == ZELDB_ROW)
    zel_db_result_column_int64(versions.get(), 0, &version);
  return version;
}

}  // namespace

void Target::Close::operator()(_zel_db_handle_t* handle) const {
  run(handle, "ROLLBACK");
  zel_db_close(handle);
}

Target::Handle Target::open(const char* database, int64_t schema_version) {
  char error[1024] = {};
  if (zel_db_check(nullptr, database, error, sizeof(error)) != 0) throw Failure(error);
  const std::string what = std::string("database ") + database;
  Handle handle(zel_db_open("localhost", "root", "", database, 0));
  if (handle == nullptr) check(ZELDB_NO_HANDLE, what);
  if (version_of(handle.get(), what) != schema_version)
    throw Failure(what + ": its tables are older (\"zeldb init\" brings them up to date)");
  check(run(handle.get(), "BEGIN"), what);
  return handle;
}

Target::Target(int64_t schema_version) : inventory_(open("dmdb", schema_version)) {
  const std::string look = std::string("SELECT 1 FROM ") + kPropertyTable + " LIMIT 0";
  if (run(inventory_.get(), look) != 0) properties_ = open("propertiesdb", schema_version);
}

Target::~Target() = default;

_zel_db_handle_t* Target::handle_of(const std::string& table) const {
  return table == kPropertyTable && properties_ != nullptr ? properties_.get() : inventory_.get();
}

bool Target::is_empty(const std::string& table) const {
  const Result rows = select(handle_of(table), "SELECT 1 FROM " + table + " LIMIT 1", "table " + table);
  return zel_db_result_row_count(rows.get()) == 0;
}

void Target::clear(const std::string& table) const {
  check(run(handle_of(table), "DELETE FROM " + table), "table " + table);
}

bool Target::insert(const std::string& table, const std::string& columns, const std::string& values) const {
  return run(handle_of(table), "INSERT INTO " + table + " (" + columns + ") VALUES (" + values + ")") == 0;
}

void Target::commit() const {
  if (properties_ != nullptr) check(run(properties_.get(), "COMMIT"), "database propertiesdb");
  check(run(inventory_.get(), "COMMIT"), "database dmdb");
}

}  // namespace zeldb::cli
