// SPDX-License-Identifier: Apache-2.0
//
// Output of rows: as a table, as lines for other programs, or as JSON.
#ifndef CLI_OUTPUT_H
#define CLI_OUTPUT_H

#include <string>
#include <vector>

#include "cli/column.h"
#include "cli/terminal.h"

namespace zeldb::cli {

constexpr int kFormatVersion = 1;

struct Table {
  std::vector<Column> columns;
  std::vector<Row> rows;  // a value for each column
  // For each row the name of its parent in a tree, or empty; without elements: a plain table.
  std::vector<std::string> branches{};
};

struct TableStyle {
  bool has_headings = true;
  Terminal terminal{};
  bool keeps_columns = false;  // columns that were asked for by name are cut, not left out
};

// A value as a table shows it, with characters beyond ASCII.
std::string cell_of(const Column& column, const Value& value);

struct PrintedTable {
  std::string text;
  std::vector<std::string> hidden;  // headings of columns for which the terminal has no room
};

// Aligned columns; ASCII alone unless the locale is UTF-8. On a terminal texts are cut, with an ellipsis, to
// the room in the line, but not to less than 20 cells; then columns are left out, minor ones first, from the
// right.
PrintedTable as_table(const Table& table, const TableStyle& style);

// Fields separated by tabs; numbers as they are, control characters and backslashes escaped.
std::string as_raw(const Table& table, bool has_headings);

// One object, one row a line, nothing but ASCII.
std::string as_json(const Table& table);

}  // namespace zeldb::cli

#endif
