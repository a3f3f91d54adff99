// SPDX-License-Identifier: Apache-2.0
//
// Tables for people. libsmartcols does widths, alignment, trees and colours; this file fits a table to the
// terminal, because the library cuts texts without an ellipsis.
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
constexpr size_t kNarrowest = 20;  // the shortest width that a text is cut to
constexpr size_t kNarrowestAskedFor = 6;

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
  const bool is_left = is_text(column.type) || is_health(column) || column.words != nullptr;
  const int tree = is_branch ? SCOLS_FL_TREE : 0;
  return tree | (is_left ? 0 : SCOLS_FL_RIGHT);
}

// A table of the library. Texts in columns of a limited width are cut; a width of 0 leaves the column out.
class Sheet {
 public:
  Sheet(const Table& table, const TableStyle& style, std::vector<size_t> widths = {});

  libscols_table* get() const { return sheet_.get(); }
  std::string print() const;

 private:
  struct Release {
    void operator()(libscols_table* sheet) const { scols_unref_table(sheet); }
  };

  std::string cut_at(size_t place, const std::string& text) const {
    const std::string shown = in_locale(text);
    return widths_.empty() || widths_[place] == 0 ? shown : cut_to_places(shown, widths_[place]);
  }
  void set_text(libscols_line* line, size_t place, const std::string& text) {
    expect_done(scols_line_set_data(line, place, cut_at(place, text).c_str()));
  }
  void add_column(const Column& column, size_t place, bool is_branch);
  void add_row(libscols_line* parent, const std::vector<Column>& columns, const Row& row);
  void add_headings(const std::vector<Column>& columns);

  std::unique_ptr<libscols_table, Release> sheet_;
  std::vector<size_t> widths_;
};

void Sheet::add_column(const Column& column, size_t place, bool is_branch) {
  const bool is_hidden = !widths_.empty() && widths_[place] == 0;
  const int flags = flags_of(column, is_branch) | (is_hidden ? SCOLS_FL_HIDDEN : 0);
  expect_made(scols_table_new_column(get(), cut_at(place, column.heading).c_str(), 0, flags));
}

void Sheet::add_row(libscols_line* parent, const std::vector<Column>& columns, const Row& row) {
  libscols_line* const line = expect_made(scols_table_new_line(get(), parent));
  for (size_t place = 0; place < row.size(); ++place) {
    const std::string cell = cell_of(columns[place], row[place]);
    set_text(line, place, cell);
    if (is_health(columns[place]))
      expect_done(scols_cell_set_color(scols_line_get_cell(line, place), colour_of(cell)));
  }
}

// The library prints nothing for a table without lines.
void Sheet::add_headings(const std::vector<Column>& columns) {
  libscols_line* const line = expect_made(scols_table_new_line(get(), nullptr));
  for (size_t place = 0; place < columns.size(); ++place) set_text(line, place, columns[place].heading);
}

Sheet::Sheet(const Table& table, const TableStyle& style, std::vector<size_t> widths)
    : sheet_(expect_made(scols_new_table())), widths_(std::move(widths)) {
  scols_table_enable_noencoding(get(), 1);  // cells are printable
  scols_table_enable_minout(get(), 1);      // no spaces at the end of a line
  scols_table_enable_ascii(get(), prints_utf8() ? 0 : 1);
  scols_table_enable_colors(get(), style.terminal.has_colour ? 1 : 0);
  scols_table_enable_noheadings(get(), style.has_headings && !table.rows.empty() ? 0 : 1);
  scols_table_set_termforce(get(), SCOLS_TERMFORCE_NEVER);
  expect_done(scols_table_set_column_separator(get(), kGap));
  for (size_t place = 0; place < table.columns.size(); ++place)
    add_column(table.columns[place], place, place == 0 && !table.branches.empty());
  std::map<std::string, libscols_line*> branches{{"", nullptr}};
  for (size_t place = 0; place < table.rows.size(); ++place) {
    const std::string& name = table.branches.empty() ? "" : table.branches[place];
    const auto [branch, is_new] = branches.try_emplace(name, nullptr);
    if (is_new) {
      branch->second = expect_made(scols_table_new_line(get(), nullptr));
      expect_done(scols_line_set_data(branch->second, 0, in_locale(name).c_str()));
    }
    add_row(branch->second, table.columns, table.rows[place]);
  }
  if (table.rows.empty() && style.has_headings) add_headings(table.columns);
}

std::string Sheet::print() const {
  char* text = nullptr;
  expect_done(scols_print_table_to_string(get(), &text));
  const std::unique_ptr<char, void (*)(void*)> owner(text, std::free);
  std::string printed = text != nullptr ? text : "";
  if (!printed.empty()) printed += '\n';
  return printed;
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

// Chooses the columns and widths that fit a terminal, from the widths of the sheet printed in full.
class Fitting {
 public:
  Fitting(libscols_table* sheet, const Table& table, size_t room)
      : sheet_(sheet), table_(table), room_(room), widths_(table.columns.size()) {
    for (size_t place = 0; place < widths_.size(); ++place) widths_[place] = width_of(place);
  }

  // 0 for a column that is left out.
  const std::vector<size_t>& fit(bool keeps_columns) {
    narrow(kNarrowest, is_cut);
    if (keeps_columns) {
      narrow(kNarrowestAskedFor, is_cut);
      for (const size_t least : {kNarrowestAskedFor, size_t{1}})
        narrow(least, [](const Column&) { return true; });
    }
    for (const size_t place : order_of_leaving(table_.columns)) {
      if (excess() == 0) break;
      widths_[place] = 0;
    }
    if (!keeps_columns) widen();
    return widths_;
  }

 private:
  size_t excess() const {
    size_t width = 0;
    for (const size_t taken : widths_) {
      if (taken != 0) width += taken + (width != 0 ? std::string_view(kGap).size() : 0);
    }
    return width > room_ ? width - room_ : 0;
  }

  // Takes from the widest column first. A tree's first column holds its branches, too.
  template <typename Predicate>
  void narrow(size_t least, Predicate may_be_cut) {
    for (size_t over = excess(); over > 0; --over) {
      size_t* widest = nullptr;
      for (size_t place = table_.branches.empty() ? 0 : 1; place < widths_.size(); ++place) {
        size_t& width = widths_[place];
        if (may_be_cut(table_.columns[place]) && width > least && (widest == nullptr || width > *widest))
          widest = &width;
      }
      if (widest == nullptr) return;
      --*widest;
    }
  }

  // The remaining texts share the room of the columns that are left out.
  void widen() {
    for (size_t place = 0; place < widths_.size(); ++place) {
      if (widths_[place] != 0 && is_cut(table_.columns[place])) widths_[place] = width_of(place);
    }
    narrow(kNarrowest, is_cut);
  }

  size_t width_of(size_t place) const {
    return scols_column_get_width(scols_table_get_column(sheet_, place));
  }

  libscols_table* sheet_;
  const Table& table_;
  size_t room_;
  std::vector<size_t> widths_;
};

}  // namespace

PrintedTable as_table(const Table& table, const TableStyle& style) {
  const Sheet whole(table, style);
  PrintedTable printed{whole.print(), {}};
  const size_t width = style.terminal.width;
  if (width == 0) return printed;
  // The library keeps the widths that it has printed, so a narrower table is a new sheet.
  Fitting fitting(whole.get(), table, width);
  const std::vector<size_t>& widths = fitting.fit(style.keeps_columns);
  for (size_t place = 0; place < widths.size(); ++place) {
    if (widths[place] == 0) printed.hidden.emplace_back(table.columns[place].heading);
  }
  printed.text = Sheet(table, style, widths).print();
  return printed;
}

}  // namespace zeldb::cli
