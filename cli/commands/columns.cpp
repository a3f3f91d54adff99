// SPDX-License-Identifier: Apache-2.0
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/mask.h"

namespace zeldb::cli {

namespace {

struct Entry {
  char View[33];
  char Column[33];
  char Heading[33];
  char Type[33];
  uint8_t InTable;
  char Identifies[9];
  char Help[161];
};

constexpr Column kColumns[] = {
    ZELDB_COLUMN(Entry, View, "VIEW", "A command, and the option that chooses another view of it"),
    whole(ZELDB_COLUMN(Entry, Column, "COLUMN", "Key in JSON and for --output")),
    ZELDB_COLUMN(Entry, Type, "TYPE", "Type of its values"),
    ZELDB_COLUMN(Entry, InTable, "IN TABLE", "1 when it is in a table without being asked for"),
    ZELDB_COLUMN(Entry, Identifies, "MASKED AS", "What --mask replaces it by; text: addresses inside it"),
    ZELDB_COLUMN(Entry, Help, "HELP", "What it is"),
    extra(ZELDB_COLUMN(Entry, Heading, "HEADING", "Its heading in a table")),
};

std::vector<Entry> read_columns(const std::string& command) {
  std::vector<Entry> entries;
  for (const View& view : views()) {
    if (!command.empty() && view.command != command) continue;
    for (const Column& column : view.columns) {
      Entry& entry = entries.emplace_back();
      copy_text(entry.View, name_of(view));
      copy_text(entry.Column, column.key);
      copy_text(entry.Heading, column.heading);
      copy_text(entry.Type, type_name(column));
      entry.InTable = column.is_extra ? 0 : 1;
      copy_text(entry.Identifies, std::string(identified_by(column.key)));
      copy_text(entry.Help, column.help);
    }
  }
  return entries;
}

}  // namespace

void setup_columns(CLI::App& app) {
  auto command = std::make_shared<std::string>();
  add_text(app, "COMMAND", *command, "", "Those of one command");
  Listing(app).view(kColumns, [command] { return read_columns(*command); });
}

}  // namespace zeldb::cli
