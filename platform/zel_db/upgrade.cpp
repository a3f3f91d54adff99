// SPDX-License-Identifier: Apache-2.0
#include "zel_db/upgrade.h"

#include <algorithm>

#include "zel_db/run_once.h"
#include "zel_db/sql/tokens.h"

namespace zel_db {
namespace {

// A column as it is in the database.
struct Found {
  std::string name;
  std::string type;
};

bool are_same(std::string_view a, std::string_view b) {
  return equal_ignoring_case(a, b);
}

class TableUpgrade {
 public:
  TableUpgrade(Connection& connection, const Table& table, const Dialect& dialect)
      : connection_(connection), table_(table), dialect_(dialect), name_(table.name) {
    for (const auto& row : rows_of(connection_, dialect.columns_of(name_)))
      found_.push_back({row[0], row[1]});
  }

  void run() {
    if (found_.empty()) return;  // there is no such table
    add_columns();
    if (!dialect_.rebuilds_tables || has_checks()) return;
    refuse_long_values();
    rebuild();
  }

 private:
  bool has(const Column& column) const {
    return std::ranges::any_of(found_, [&](const Found& found) { return are_same(found.name, column.name); });
  }

  bool has_checks() const {
    const std::string sql = rows_of(
        connection_, "SELECT sql FROM sqlite_schema WHERE type='table' AND name='" + name_ + "'")[0][0];
    return std::ranges::all_of(table_.columns, [&](const Column& column) {
      return column.size == 0 || sql.find(column_definition(column, dialect_)) != std::string::npos;
    });
  }

  // The message names the row and the column; that of the engine would not.
  void refuse_long_values() const {
    for (const Column& column : table_.columns) {
      if (column.size == 0) continue;
      const std::string name = column.name;
      const std::string size = "length(cast(" + name + " as " + dialect_.bytes + "))";
      const TextRows rows = rows_of(connection_, "SELECT _id, " + size + " FROM " + name_ + " WHERE " + size +
                                                     " > " + std::to_string(column.size) + " LIMIT 1");
      if (rows.empty()) continue;
      throw Failure(kConstraint, name_ + "." + name + " of the row with _id " + rows[0][0] + " has " +
                                     rows[0][1] + " bytes, it may have " + std::to_string(column.size));
    }
  }

  void add_columns() {
    for (const Column& column : table_.columns) {
      if (has(column)) continue;
      const std::string definition = column_definition(column, dialect_);
      run_once(connection_, "ALTER TABLE " + name_ + " ADD COLUMN " + definition);
      found_.push_back({column.name, {}});
    }
  }

  bool is_known(const Found& found) const {
    return are_same(found.name, "_id") || std::ranges::any_of(table_.columns, [&](const Column& column) {
             return are_same(found.name, column.name);
           });
  }

  void rebuild() {
    const std::string made = name_ + "_made";
    std::string others;
    std::string names;
    for (const Found& found : found_) {
      names.append(names.empty() ? "" : ", ").append("`" + found.name + "`");
      if (!is_known(found)) others.append(", `" + found.name + "` " + found.type);
    }
    const std::string where = " WHERE name='" + name_ + "'";
    const TextRows extras = rows_of(connection_, "SELECT sql FROM sqlite_schema WHERE tbl_name='" + name_ +
                                                     "' AND type IN ('index','trigger') AND sql IS NOT NULL");
    for (const std::string& sql : {
             std::string("PRAGMA legacy_alter_table=ON"),  // a view may name the table while there is none
             table_definition(table_, made, others, dialect_),
             "INSERT INTO " + made + " (" + names + ") SELECT " + names + " FROM " + name_ + " ORDER BY _id",
             "DELETE FROM sqlite_sequence WHERE name='" + made + "'",
             "INSERT INTO sqlite_sequence (name, seq) SELECT '" + made + "', seq FROM sqlite_sequence" +
                 where,
             "DROP TABLE " + name_,
             "ALTER TABLE " + made + " RENAME TO " + name_,
         }) {
      run_once(connection_, sql);
    }
    for (const auto& row : extras) run_once(connection_, row[0]);
  }

  Connection& connection_;
  const Table& table_;
  const Dialect& dialect_;
  const std::string name_;
  std::vector<Found> found_;
};

}  // namespace

void upgrade_tables(Connection& connection, const std::string& database, const Dialect& dialect) {
  for (const Family& family : families()) {
    if (!family.database.empty() && family.database != database) continue;
    for (const Table& table : family.tables) {
      if (table.has_row_id) TableUpgrade(connection, table, dialect).run();
    }
  }
}

}  // namespace zel_db
