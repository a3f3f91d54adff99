// SPDX-License-Identifier: Apache-2.0
#include "cli/sqlite_file.h"

#include <cctype>
#include <cstdio>
#include <filesystem>

#include "cli/command.h"
#include "platform/zel_db_admin.h"

namespace zeldb::cli {

namespace {

[[noreturn]] void fail(const std::string& name, sqlite3* database) {
  throw Failure(name + ": " + sqlite3_errmsg(database));  // "out of memory" if there is none
}

}  // namespace

std::string percent_encoded(const std::string& path) {
  constexpr std::string_view kPlain = "/._-~";
  std::string encoded;
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    char code[4] = {c, '\0'};
    if (byte >= 0x80 || (std::isalnum(byte) == 0 && kPlain.find(c) == std::string_view::npos))
      std::snprintf(code, sizeof(code), "%%%02X", byte);
    encoded += code;
  }
  return encoded;
}

bool SqliteStatement::step() {
  const int status = sqlite3_step(statement_.get());
  if (status != SQLITE_ROW && status != SQLITE_DONE) fail(name_, sqlite3_db_handle(statement_.get()));
  return status == SQLITE_ROW;
}

std::string SqliteStatement::text(int column) const {
  const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement_.get(), column));
  return {bytes != nullptr ? bytes : "", static_cast<size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

void SqliteStatement::bind_text(int place, std::string_view text) {
  sqlite3_bind_text(statement_.get(), place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
}

void SqliteStatement::bind_bytes(int place, std::string_view bytes) {
  sqlite3_bind_blob(statement_.get(), place, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC);
}

SqliteFile::SqliteFile(const std::string& path, std::string name) : name_(std::move(name)) {
  sqlite3* opened = nullptr;
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI;
  const int status = sqlite3_open_v2(("file:" + percent_encoded(path)).c_str(), &opened, flags, nullptr);
  database_.reset(opened);
  if (status != SQLITE_OK) fail(name_, opened);
  // Files of strangers are read, too: what their schema defines is not run.
  sqlite3_db_config(opened, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
}

SqliteStatement SqliteFile::prepare(const std::string& sql) const {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v2(database_.get(), sql.c_str(), -1, &statement, nullptr) != SQLITE_OK)
    fail(name_, database_.get());
  return {statement, name_};
}

SqliteFile create_inventory(const std::string& path, const std::string& name) {
  char error[1024] = {};
  if (zel_db_create(("sqlite://" + percent_encoded(std::filesystem::absolute(path))).c_str(), error,
                    sizeof(error)) != 0)
    throw Failure(name + ": " + error);
  SqliteFile file(path, name);
  // One file at rest, without the logs beside it.
  file.run("PRAGMA journal_mode=DELETE");
  return file;
}

int64_t schema_version_of(const SqliteFile& inventory, const std::string& attached) {
  SqliteStatement version = inventory.prepare("SELECT max(Version) FROM " + attached + ".ZeldbSchema");
  version.step();
  return version.number(0);
}

std::vector<InventoryTable> tables_of(const SqliteFile& inventory) {
  std::vector<InventoryTable> tables;
  SqliteStatement columns = inventory.prepare(
      "SELECT t.name, c.name, c.type FROM main.sqlite_schema t, pragma_table_info(t.name) c "
      "WHERE t.type='table' AND t.name NOT LIKE 'sqlite_%' AND t.name!='ZeldbSchema' ORDER BY t.rowid, "
      "c.cid");
  while (columns.step()) {
    const std::string name = columns.text(0);
    if (tables.empty() || tables.back().name != name) tables.emplace_back().name = name;
    tables.back().columns.push_back({columns.text(1), columns.text(2)});
  }
  return tables;
}

}  // namespace zeldb::cli
