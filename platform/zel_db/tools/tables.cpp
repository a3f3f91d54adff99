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

- Each table but `ZeldbSchema` has a column `_id` that identifies rows: a number from 1 on that is never given out
  twice, or one that the writer chooses; in `PCIs` it is the function's key if writers follow the samples. Rows that
  are read without an order come in the order of `_id`.
- Any column may be NULL, which is also the default unless another one is given. A reader of the library takes NULL
  for 0 or an empty text unless its header says otherwise.
- The library carries numbers from their writers to their readers and converts none, except as noted: units and codes
  are those of the writers. Many are SMBIOS codes, named so here.
- Texts are bytes, compared byte by byte; a longer one than the column's size is refused. An index covers one column.
- "Written by" and "read by" name the exported functions (`include/zeldb`). The record helpers of `zeldb/db.h` and
  `zeldb load` write to any table; an SQL condition of a caller reads the tables that it names.

| Type | SQLite | MariaDB |
|---|---|---|
| number | `INTEGER` | `BIGINT` |
| unsigned 64-bit | `INTEGER` | `BIGINT UNSIGNED` |
| text N | `TEXT` with a check of its bytes | `VARCHAR(N)`, latin1, binary collation |
| bytes N | `BLOB` with a check of its bytes | `VARBINARY(N)` |

## Conditions

A where text is SQL, and both engines answer alike as long as it compares columns with values of their own kind:
`=`, `!=`, `<`, `<=`, `>`, `>=`, `IN`, `BETWEEN`, `LIKE`, `IS NULL`, `AND`, `OR`, `NOT`, `||`, `&`, `|`, `<<`, `>>`, `+`, `-`,
`*`, `%`, `CASE`, sub-selects, `count`, `sum`, `min`, `max`, `length`, `lower`, `upper`, `substr`, `trim`, `replace`,
`coalesce`. A number beside a column of texts is a text (`DriveTypeId IN (5)` does not meet `05`), a text beside a
column of numbers that is no number meets none. These are not alike:

| Form | Why | Portable form |
|---|---|---|
| `Text=5+0`, `Text=(SELECT max(Number) ...)` | compared as numbers by MariaDB: `05` is one, too | `Text=5` |
| `Text=Number`, `Text & 4` | MariaDB takes a text that is no number for 0, and reads exponents | compare with a value |
| `Text=0x5`, `Text=x'35'`, `Number=x'35'` | MariaDB takes them for bytes, or for a number | decimal numbers, quoted texts |
| `Number / 2` | MariaDB keeps the fraction: 32.5, 32.0000 | `>>`, or compare the product |
| `avg(Number)` | MariaDB gives four decimals | `sum` and `count` |
| `~Number` | unsigned on MariaDB | `-1 - Number` |
| `"Column"` among the columns or in the order | a name to SQLite, a text to MariaDB | the bare name, or in backticks |
| `-- ` and `/*` among the columns or in the order | not the same comments | none |
| `==`, `IS 5`, `ISNULL`, `NOTNULL`, `GLOB`, `COLLATE`, `NULLS LAST`, `rowid`, `cast(... as text)`, `iif`, `min(a, b)` | SQLite alone; MariaDB refuses them | `=`, `IS NULL`, `LIKE`, `_id`, `CASE` |
| `<=>`, `&&`, `XOR`, `!`, `^`, `DIV`, `MOD`, `REGEXP`, `> ALL`, `concat`, `if` | MariaDB alone; SQLite refuses them | `AND`, `OR`, `NOT`, `%`, `CASE` |
| functions of dates, random numbers, characters | named or working differently | none |
| `#`, `@`, `[`, `\` outside of quotes, an unclosed quote | refused on both | |
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
