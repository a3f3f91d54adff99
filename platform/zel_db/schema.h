// SPDX-License-Identifier: Apache-2.0
//
// The tables are declared once, for all engines and for docs/tables.md. They follow these rules:
//   - everything may be NULL; numbers are signed 64-bit, so that -1 and 4294967295 both fit on every engine;
//   - a text column is wider than any field that is written to it; every engine refuses longer texts;
//   - an index covers one column: with a second one, rows read without an order would come in another order.
#ifndef ZEL_DB_SCHEMA_H
#define ZEL_DB_SCHEMA_H

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zel_db {

struct Dialect;

inline constexpr int64_t kSchemaVersion = 3;
inline constexpr std::array<std::string_view, 2> kDatabases = {"dmdb", "propertiesdb"};
inline constexpr std::string_view kFleetDatabase = "fleet";  // its tables are its users'

enum class Kind : uint8_t { Integer, Unsigned64, Text, Blob };
enum class Index : uint8_t { None, Plain, Unique };
enum class Default : uint8_t { Null, Zero };

struct Column {
  const char* name;
  const char* meaning;
  uint16_t size;  // of a text or blob
  Kind kind;
  Index index = Index::None;
  Default value = Default::Null;
};

// In Markdown.
struct TableNotes {
  const char* purpose;
  const char* written_by;
  const char* read_by;
};

struct Table {
  const char* name;
  std::span<const Column> columns;
  TableNotes notes;
  bool has_row_id = true;
};

// Tables that belong together.
struct Family {
  std::string_view database;  // empty: in each
  const char* title;
  std::span<const Table> tables;
};

// In the order in which their tables are made.
std::span<const Family> families();

// Whether the table of that name has the column _id.
bool has_row_ids(std::string_view name);
// The kind of a table's column, whose name may be in letters of either case; none if there is no such column.
std::optional<Kind> kind_of(std::string_view table_name, std::string_view name);
inline bool has_column(std::string_view table, std::string_view column) {
  return kind_of(table, column).has_value();
}

// The DDL of a column, and of a table under another name and with further columns (", name type").
std::string column_definition(const Column& column, const Dialect& dialect);
std::string table_definition(const Table& table, const std::string& name, const std::string& others,
                             const Dialect& dialect);
// The statements that create the tables and indexes that a database lacks.
std::vector<std::string> definitions(std::string_view database, const Dialect& dialect);

}  // namespace zel_db

#endif
