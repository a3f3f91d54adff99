// SPDX-License-Identifier: Apache-2.0
//
// Tables for people: libsmartcols knows widths, alignment, truncation, trees and colours; here is which
// columns a terminal has room for.
#include <libsmartcols/libsmartcols.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <new>

#include "cli/output.h"
#include "cli/text.h"

namespace zeldb::cli {

namespace {

constexpr const char* kGap = "  ";
constexpr size_t kNarrowest = 20;  // that a text is cut to

using Sheet = std::unique_ptr<libscols_table, decltype(&scols_unref_table)>;

void expect_done(int status) {
  if (status != 0) throw std::bad_alloc();
}

template <typename Object>
Object* expect_made(Object* object) {
  if (object == nullptr) throw std::bad_alloc();
  return object;
}

bool is_health(const Column& column) {
  return column.type == Type::Health || column.type == Type::HealthText;
}

bool is_cut(const Column& column) {
  return column.type == Type::Text && !column.is_whole;
}

const char* colour_of(const std::string& health) {
  static constexpr const char* kColours[] = {nullptr, "\x1b[32m", "\x1b[33m", "\x1b[31m"};
  return kColours[static_cast<size_t>(tone_of(health))];
}

int flags_of(const Column& column, bool is_branch) {
  const bool is_left = is_text(column.type) || is_health(column);
  const int tree = is_branch ? SCOLS_FL_TREE : 0;
  return tree | (is_left ? 0 : SCOLS_FL_RIGHT) | (is_cut(column) ? SCOLS_FL_TRUNC : 0);
}

std::string in_locale(const std::string& text) {
  return prints_utf8() ? text : printable(text, Escape::Ascii);
}

void set_text(libscols_line* line, size_t place, const std::string& text) {
  expect_done(scols_line_set_data(line, place, in_locale(text).c_str()));
}

void add_row(libscols_table* sheet, libscols_line* parent, const std::vector<Column>& columns,
             const Row& row) {
  libscols_line* const line = expect_made(scols_table_new_line(sheet, parent));
  for (size_t place = 0; place < row.size(); ++place) {
    const std::string cell = cell_of(columns[place], row[place]);
    set_text(line, place, cell);
    if (is_health(columns[place]))
      expect_done(scols_cell_set_color(scols_line_get_cell(line, place), colour_of(cell)));
  }
}

// The library prints nothing of a table without lines.
void add_headings(libscols_table* sheet, const std::vector<Column>& columns) {
  libscols_line* const line = expect_made(scols_table_new_line(sheet, nullptr));
  for (size_t place = 0; place < columns.size(); ++place) set_text(line, place, columns[place].heading);
}

Sheet sheet_of(const Table& table, const TableStyle& style) {
  Sheet sheet(expect_made(scols_new_table()), scols_unref_table);
  scols_table_enable_noencoding(sheet.get(), 1);  // cells are printable
  scols_table_enable_minout(sheet.get(), 1);      // no spaces at the end of a line
  scols_table_enable_ascii(sheet.get(), prints_utf8() ? 0 : 1);
  scols_table_enable_colors(sheet.get(), style.terminal.has_colour ? 1 : 0);
  scols_table_enable_noheadings(sheet.get(), style.has_headings && !table.rows.empty() ? 0 : 1);
  scols_table_set_termforce(sheet.get(), SCOLS_TERMFORCE_NEVER);
  expect_done(scols_table_set_column_separator(sheet.get(), kGap));
  for (const Column& column : table.columns) {
    const bool is_branch = !table.branches.empty() && &column == &table.columns.front();
    expect_made(scols_table_new_column(sheet.get(), column.heading, 0, flags_of(column, is_branch)));
  }
  std::map<std::string, libscols_line*> branches{{"", nullptr}};
  for (size_t place = 0; place < table.rows.size(); ++place) {
    const std::string& name = table.branches.empty() ? "" : table.branches[place];
    const auto [branch, is_new] = branches.try_emplace(name, nullptr);
    if (is_new) {
      branch->second = expect_made(scols_table_new_line(sheet.get(), nullptr));
      set_text(branch->second, 0, name);
    }
    add_row(sheet.get(), branch->second, table.columns, table.rows[place]);
  }
  if (table.rows.empty() && style.has_headings) add_headings(sheet.get(), table.columns);
  return sheet;
}

std::string print(libscols_table* sheet) {
  char* text = nullptr;
  expect_done(scols_print_table_to_string(sheet, &text));
  const std::unique_ptr<char, void (*)(void*)> owner(text, std::free);
  std::string printed = text != nullptr ? text : "";
  if (!printed.empty()) printed += '\n';
  return printed;
}

// How narrow a column can become, once the sheet has been printed in its full width.
size_t least_width(libscols_table* sheet, const std::vector<Column>& columns, size_t place) {
  const size_t width = scols_column_get_width(scols_table_get_column(sheet, place));
  return is_cut(columns[place]) ? std::min(width, kNarrowest) : width;
}

// Minor columns go first, from the right; the first column stays.
std::vector<size_t> order_of_leaving(const std::vector<Column>& columns) {
  std::vector<size_t> places;
  for (const bool is_minor : {true, false}) {
    for (size_t place = columns.size(); --place > 0;) {
      if (columns[place].is_minor == is_minor) places.push_back(place);
    }
  }
  return places;
}

std::vector<std::string> fit(libscols_table* sheet, const std::vector<Column>& columns,
                             const TableStyle& style) {
  const size_t gap = std::string_view(kGap).size();
  const size_t room = style.terminal.width;
  size_t width = 0;
  for (size_t place = 0; place < columns.size(); ++place) width += least_width(sheet, columns, place) + gap;
  width -= gap;
  std::vector<bool> is_hidden(columns.size());
  for (const size_t place : order_of_leaving(columns)) {
    if (width <= room || style.keeps_columns) break;
    is_hidden[place] = true;
    width -= least_width(sheet, columns, place) + gap;
  }
  std::vector<std::string> hidden;
  for (size_t place = 0; place < columns.size(); ++place) {
    libscols_column* const column = scols_table_get_column(sheet, place);
    if (is_hidden[place]) {
      hidden.emplace_back(columns[place].heading);
      scols_column_set_flags(column, scols_column_get_flags(column) | SCOLS_FL_HIDDEN);
    } else if (is_cut(columns[place])) {
      // The library takes from such texts alone while one of them has a larger share of the terminal than
      // this.
      const auto least = static_cast<double>(least_width(sheet, columns, place));
      scols_column_set_whint(column, (least + 1.5) / static_cast<double>(room));
    }
  }
  return hidden;
}

}  // namespace

PrintedTable as_table(const Table& table, const TableStyle& style) {
  const Sheet sheet = sheet_of(table, style);
  PrintedTable printed{print(sheet.get()), {}};
  const size_t width = style.terminal.width;
  if (width == 0) return printed;
  printed.hidden = fit(sheet.get(), table.columns, style);
  scols_table_set_termforce(sheet.get(), SCOLS_TERMFORCE_ALWAYS);
  scols_table_set_termwidth(sheet.get(), width);
  printed.text = print(sheet.get());
  return printed;
}

}  // namespace zeldb::cli
