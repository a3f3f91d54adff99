// SPDX-License-Identifier: Apache-2.0
//
// Prints docs/tables.md.
#include <cctype>
#include <cstdio>
#include <string>
#include <string_view>

#include "zel_db/schema.h"

using namespace zel_db;

namespace {

constexpr const char* kIntroduction =
    R"(<!-- Written by scripts/docs from platform/zel_db/schema*.cpp: change it there. -->
# Tables

The inventory is the database `dmdb`, the property store the database `propertiesdb`. `zeldb init` makes both.

- Each table but `ZeldbSchema` has a column `_id`, the number of the row: from 1 on, never given out twice. Rows that
  are read without an order come in the order of `_id`.
- Any column may be NULL, which is also the default where no other one is given. A reader of the library takes NULL
  for 0 or an empty text unless its header says otherwise.
- The library carries numbers from their writers to their readers and converts none, but where it says so: units and
  codes are those of the writers. Many are SMBIOS codes, named so here.
- Texts are bytes, compared byte by byte; the size is the most that the column holds on MariaDB. An index covers one
  column.
- "Written by" and "read by" name the exported functions (`include/zeldb`). The record helpers of `zeldb/db.h` and
  `zeldb load` write to any table; an SQL condition that a caller hands in reads what it names.

| Type | SQLite | MariaDB |
|---|---|---|
| number | `INTEGER` | `BIGINT` |
| unsigned 64-bit | `INTEGER` | `BIGINT UNSIGNED` |
| text N | `TEXT` | `VARCHAR(N)`, latin1, binary collation |
| bytes N | `BLOB` | `VARBINARY(N)` |
)";

std::string type_of(const Column& column) {
  switch (column.kind) {
    case Kind::Integer:
      return "number";
    case Kind::Unsigned64:
      return "unsigned 64-bit";
    case Kind::Text:
      return "text " + std::to_string(column.size);
    case Kind::Blob:
      break;
  }
  return "bytes " + std::to_string(column.size);
}

const char* index_of(const Column& column) {
  if (column.index == Index::None) return "";
  return column.index == Index::Unique ? "unique" : "yes";
}

// The place of a heading within the page.
std::string anchor(std::string_view heading) {
  std::string name;
  for (const char c : heading) name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return name;
}

void print_contents() {
  for (const Family& family : families()) {
    std::printf("\n%s (%s):\n", family.title,
                family.database.empty() ? "both databases" : std::string(family.database).c_str());
    for (const Table& table : family.tables)
      std::printf("[%s](#%s)%s\n", table.name, anchor(table.name).c_str(),
                  &table == &family.tables.back() ? "" : ",");
  }
}

void print_table(const Table& table) {
  std::printf("\n## %s\n\n%s\n\n", table.name, table.notes.purpose);
  std::printf("- Written by: %s.\n- Read by: %s.\n\n", table.notes.written_by, table.notes.read_by);
  std::printf("| Column | Type | Index | Default | Meaning |\n|---|---|---|---|---|\n");
  for (const Column& column : table.columns) {
    std::printf("| `%s` | %s | %s | %s | %s |\n", column.name, type_of(column).c_str(), index_of(column),
                column.value == Default::Zero ? "0" : "", column.meaning);
  }
}

}  // namespace

int main() {
  std::fputs(kIntroduction, stdout);
  print_contents();
  for (const Family& family : families()) {
    for (const Table& table : family.tables) print_table(table);
  }
  return std::ferror(stdout) == 0 && std::fflush(stdout) == 0 ? 0 : 1;
}
