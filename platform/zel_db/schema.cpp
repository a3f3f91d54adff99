// SPDX-License-Identifier: Apache-2.0
#include "zel_db/schema.h"

#include <algorithm>

#include "zel_db/engine.h"
#include "zel_db/schema_families.h"
#include "zel_db/sql/tokens.h"

namespace zel_db {
namespace {

constexpr Column kVersion[] = {
    number("Version", "version of the schema, raised with every change of it"),
};
constexpr Table kVersionTables[] = {
    {"ZeldbSchema",
     kVersion,
     {"The version of the schema of a database: one row. A database with a newer version than the "
      "program knows is refused, one without this table is accepted.",
      "`zeldb init`", "`libzel_db`, once per connection"},
     false},
};

constexpr Column kScannedRows[] = {
    text("TableName", 64, "table that the row is in", Index::Plain),
    number("RowId", "`_id` of the row"),
    text("RowKey", "key by which the next scan finds the part, such as `0000:17:00.0`"),
    text("Source", 16, "source of the scan: pci, smbios, drives, network, firmware"),
};
constexpr Table kScanTables[] = {
    {"ScannedRows",
     kScannedRows,
     {"The rows of other tables that a scan has written: it changes and removes only these.", "`zeldb scan`",
      "`zeldb scan`"}},
};

constexpr Column kProperties[] = {
    text("propName", "path of the property", Index::Unique),
    blob("propValue", 1024, "a type tag of one byte, which no reader looks at, and the bytes of the value"),
};
constexpr Table kPropertyTables[] = {
    {"propertiesDCTbl",
     kProperties,
     {"The controller's property store. A text begins after the tag and ends with the value or at a "
      "NUL; a number is one byte, or four bytes with the lowest first.",
      "the controller's services",
      "`propdb_get_string`, `propdb_get_dword`, `propdb_get_byte` and with them the readers of vital "
      "product data, of PLDM components and of drives; `zeldb_get_mvl_ctrl_type`, "
      "`zeldb_get_bp_drive_count`"}},
};

std::string index_definition(const Table& table, const Column& column) {
  const char* unique = column.index == Index::Unique ? "UNIQUE " : "";
  const std::string name = std::string(table.name) + "_" + column.name;
  return std::string("CREATE ") + unique + "INDEX IF NOT EXISTS " + name + " ON " + table.name + " (" +
         column.name + ")";
}

const Table* table_of(std::string_view name) {
  for (const Family& family : families()) {
    for (const Table& table : family.tables) {
      if (table.name == name) return &table;
    }
  }
  return nullptr;
}

}  // namespace

std::span<const Family> families() {
  static const Family kFamilies[] = {
      {{}, "Schema", kVersionTables},
      {kDatabases[0], "Settings", setting_tables()},
      {kDatabases[0], "PCI functions, adapters, ports and GPUs", pci_tables()},
      {kDatabases[0], "Firmware", firmware_tables()},
      {kDatabases[0], "Processors and memory", cpumem_tables()},
      {kDatabases[0], "Storage", storage_tables()},
      {kDatabases[0], "Scans of the machine", kScanTables},
      {kDatabases[1], "Properties", kPropertyTables},
  };
  return kFamilies;
}

bool has_row_ids(std::string_view name) {
  const Table* const table = table_of(name);
  return table != nullptr && table->has_row_id;
}

std::optional<Kind> kind_of(std::string_view table_name, std::string_view name) {
  const Table* const table = table_of(table_name);
  if (table == nullptr) return {};
  if (equal_ignoring_case(name, "_id"))
    return table->has_row_id ? std::optional(Kind::Integer) : std::nullopt;
  const auto column = std::ranges::find_if(
      table->columns, [&](const Column& one) { return equal_ignoring_case(one.name, name); });
  return column != table->columns.end() ? std::optional(column->kind) : std::nullopt;
}

std::string column_definition(const Column& column, const Dialect& dialect) {
  std::string sql = std::string(column.name) + " " + dialect.type(column);
  if (column.value == Default::Zero) sql.append(" DEFAULT 0");
  return sql;
}

std::string table_definition(const Table& table, const std::string& name, const std::string& others,
                             const Dialect& dialect) {
  std::string columns;
  if (table.has_row_id) columns.append("_id ").append(dialect.row_id);
  for (const Column& column : table.columns) {
    columns.append(columns.empty() ? "" : ", ").append(column_definition(column, dialect));
  }
  return "CREATE TABLE " + name + " (" + columns + others + ")" + dialect.table_options;
}

std::vector<std::string> definitions(std::string_view database, const Dialect& dialect) {
  std::vector<std::string> statements;
  for (const Family& family : families()) {
    if (!family.database.empty() && family.database != database) continue;
    for (const Table& table : family.tables) {
      statements.push_back(table_definition(table, std::string("IF NOT EXISTS ") + table.name, "", dialect));
      for (const Column& column : table.columns) {
        if (column.index != Index::None) statements.push_back(index_definition(table, column));
      }
    }
  }
  return statements;
}

}  // namespace zel_db
