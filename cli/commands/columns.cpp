// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/mask.h"
#include "cli/words.h"

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
    in_words(ZELDB_COLUMN(Entry, InTable, "IN TABLE", "1 if a table shows it by default"), yes_or_no),
    ZELDB_COLUMN(Entry, Identifies, "MASKED AS",
                 "How --mask replaces the value; text: only addresses inside it; value: the same, or all of "
                 "a text setting"),
    ZELDB_COLUMN(Entry, Help, "HELP", "Meaning of the column"),
    extra(ZELDB_COLUMN(Entry, Heading, "HEADING", "Heading in a table")),
};

struct Shown {
  char Column[33];
  char Why[81];
};

constexpr Column kUnmaskedColumns[] = {
    whole(ZELDB_COLUMN(Shown, Column, "COLUMN", "Column of a listing or of a table")),
    ZELDB_COLUMN(Shown, Why, "WHY", "Reason why it does not identify the machine"),
};

std::vector<Shown> read_unmasked() {
  std::vector<Shown> rows;
  for (const auto& [column, why] : unmasked_columns()) {
    Shown& row = rows.emplace_back();
    copy_text(row.Column, std::string(column));
    copy_text(row.Why, why);
  }
  return rows;
}

std::vector<Entry> read_columns(const std::string& command) {
  const auto is_it = [&command](const View& view) { return view.command == command; };
  if (!command.empty() && std::ranges::none_of(views(), is_it)) throw Failure(command + ": not found");
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
      copy_text(entry.Identifies, std::string(identified_by(column)));
      copy_text(entry.Help, column.help);
    }
  }
  return entries;
}

}  // namespace

void setup_columns(CLI::App& app) {
  auto command = std::make_shared<std::string>();
  CLI::Option* const one = add_text(app, "COMMAND", *command, "", "The columns of one command");
  Listing(app)
      .view(kColumns, [command] { return read_columns(*command); })
      .view("--unmasked", "Texts that --mask leaves as they are, and why", kUnmaskedColumns, read_unmasked)
      .without({one});
}

}  // namespace zeldb::cli
