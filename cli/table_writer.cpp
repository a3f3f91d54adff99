// SPDX-License-Identifier: Apache-2.0
#include "cli/table_writer.h"

#include "cli/command.h"
#include "cli/library.h"
#include "platform/zel_db_admin.h"

namespace zeldb::cli {

namespace {

Result select(const Transaction& database, const std::string& statement, const std::string& what) {
  Result rows;
  check(database.run(statement, rows), what);
  return rows;
}

std::unique_ptr<Transaction> begin(const std::string& name, int64_t schema_version) {
  char error[1024] = {};
  if (zel_db_check(nullptr, name.c_str(), error, sizeof(error)) != 0) throw Failure(error);
  auto database = std::make_unique<Transaction>(name);
  const std::string what = "database " + name;
  Result versions = select(*database, "SELECT max(Version) FROM ZeldbSchema", what);
  int64_t version = 0;
  if (versions.next()) versions.row().read(0, version);
  if (version != schema_version)
    throw Failure(what + ": its tables are older (\"zeldb init\" brings them up to date)");
  return database;
}

}  // namespace

TableWriter::TableWriter(int64_t schema_version) : inventory_(begin("dmdb", schema_version)) {
  const std::string look = std::string("SELECT 1 FROM ") + kPropertyTable + " LIMIT 0";
  if (inventory_->run(look) != 0) properties_ = begin("propertiesdb", schema_version);
}

const Transaction& TableWriter::database_of(const std::string& table) const {
  return table == kPropertyTable && properties_ != nullptr ? *properties_ : *inventory_;
}

bool TableWriter::is_empty(const std::string& table) const {
  return select(database_of(table), "SELECT 1 FROM " + table + " LIMIT 1", "table " + table).row_count() == 0;
}

void TableWriter::clear(const std::string& table) const {
  check(database_of(table).run("DELETE FROM " + table), "table " + table);
}

bool TableWriter::insert(const std::string& table, const std::string& columns,
                         const std::string& values) const {
  return database_of(table).run("INSERT INTO " + table + " (" + columns + ") VALUES (" + values + ")") == 0;
}

void TableWriter::commit() const {
  if (properties_ != nullptr) properties_->commit();
  inventory_->commit();
}

}  // namespace zeldb::cli
