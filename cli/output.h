// SPDX-License-Identifier: Apache-2.0
//
// How rows are shown: as a table, as lines for other programs, or as JSON.
#ifndef CLI_OUTPUT_H
#define CLI_OUTPUT_H

#include <vector>

#include "cli/column.h"
#include "cli/terminal.h"

namespace zeldb::cli {

constexpr int kFormatVersion = 1;

struct Table {
  std::vector<Column> columns;
  std::vector<Row> rows;  // a value for each column
};

struct TableStyle {
  bool has_headings = true;
  Terminal terminal{};
};

// A value as a table shows it.
std::string cell_of(const Column& column, const Value& value);

// Aligned columns. On a terminal, texts are cut until a line fits.
std::string as_table(const Table& table, const TableStyle& style);

// Fields separated by tabs; numbers as they are, control characters and backslashes escaped.
std::string as_raw(const Table& table, bool has_headings);

// One object, one row a line, nothing but ASCII.
std::string as_json(const Table& table);

}  // namespace zeldb::cli

#endif
