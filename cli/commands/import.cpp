// SPDX-License-Identifier: Apache-2.0
#include <memory>
#include <optional>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/snapshot.h"
#include "cli/sqlite_file.h"
#include "cli/table_writer.h"

namespace zeldb::cli {

namespace {

struct Options {
  std::string file;
  bool replaces = false;
};

// Literals for both engines: quotes are doubled, nothing else is special.
std::string text_literal(const std::string& text) {
  std::string literal = "'";
  for (const char c : text.substr(0, text.find('\0'))) literal.append(c == '\'' ? 2 : 1, c);
  return literal + "'";
}

std::string bytes_literal(const std::string& bytes) {
  std::string literal = "x'";
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    literal += "0123456789abcdef"[byte >> 4U];
    literal += "0123456789abcdef"[byte & 0xFU];
  }
  return literal + "'";
}

// Copies the rows of one table.
class TableImport {
 public:
  TableImport(const SqliteFile& from, const InventoryTable& table, const TableWriter& to)
      : table_(table), rows_(from.prepare("SELECT * FROM main." + table.name + " ORDER BY _id")), to_(to) {
    for (const auto& column : table.columns) columns_ += (columns_.empty() ? "" : ", ") + column.name;
  }

  void run() {
    while (rows_.step()) {
      // An export keeps numbers from 2^63 on as negative ones; a server's column for them takes no
      // negative numbers.
      if (to_.insert(table_.name, columns_, values(false))) continue;
      if (!has_negative_ || !to_.insert(table_.name, columns_, values(true)))
        throw Failure("table " + table_.name + ": the row with _id " + rows_.text(0) +
                      " does not fit; nothing was imported");
    }
  }

 private:
  std::string values(bool is_unsigned) {
    std::string values;
    has_negative_ = false;
    for (size_t place = 0; place < table_.columns.size(); ++place)
      values += (place != 0 ? ", " : "") + value(static_cast<int>(place), is_unsigned);
    return values;
  }

  std::string value(int place, bool is_unsigned) {
    const std::string& type = table_.columns[static_cast<size_t>(place)].type;
    if (rows_.is_null(place)) return "NULL";
    if (type == "TEXT") return text_literal(rows_.text(place));
    if (type == "BLOB") return bytes_literal(rows_.text(place));
    const int64_t number = rows_.number(place);
    has_negative_ |= number < 0;
    return is_unsigned ? std::to_string(static_cast<uint64_t>(number)) : std::to_string(number);
  }

  const InventoryTable& table_;
  SqliteStatement rows_;
  const TableWriter& to_;
  std::string columns_;
  bool has_negative_ = false;
};

void import_file(const Options& options) {
  const SqliteFile from(unpacked_for_import(options.file), options.file);
  const std::vector<InventoryTable> tables = tables_of(from);
  const TableWriter to(schema_version_of(from));
  for (const InventoryTable& table : tables) {
    if (to.is_empty(table.name)) continue;
    if (!options.replaces)
      throw Failure("table " + table.name +
                    " has rows already (--replace puts the export in place of all rows)");
    to.clear(table.name);
  }
  for (const InventoryTable& table : tables) TableImport(from, table, to).run();
  to.commit();
}

}  // namespace

void setup_import(CLI::App& app) {
  auto options = std::make_shared<Options>();
  require(add_text(app, "FILE", options->file, "", "A file that zeldb export has written"));
  add_flag(app, "--replace", options->replaces, "Delete all existing rows first");
  set_action(
      app, [options] { import_file(*options); },
      "Writes the rows of both databases into those of ZEL_DB_URL, which zeldb init has made: all of "
      "them or none. If these are two databases, both take all rows before either commits. A power cut "
      "between the two commits leaves one without its rows; import again with --replace then. Values "
      "that the export has left out or masked stay so. The files of the platform folder are not "
      "written.");
}

}  // namespace zeldb::cli
