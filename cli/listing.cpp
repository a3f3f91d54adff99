// SPDX-License-Identifier: Apache-2.0
#include "cli/listing.h"

#include <CLI/CLI.hpp>
#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/fleet.h"
#include "cli/output.h"
#include "cli/packed_rows.h"
#include "cli/settings.h"
#include "cli/similar.h"
#include "cli/snapshot.h"

namespace zeldb::cli {

struct Listing::State {
  struct Choice {
    size_t view;
    CLI::Option* option;
  };
  std::vector<Choice> choices;  // options that choose a view other than the first
  size_t first = 0;
  bool as_json = false;
  bool as_raw = false;
  bool no_headings = false;
  bool is_wide = false;
  bool as_tree = false;
  std::function<std::string(const View& view, const Row& row)> branch;
  bool masked = false;
  std::vector<std::string> output;
  std::string sort;
  std::vector<std::string> snapshots;
  std::function<bool(const Judged& judged)> judge = [](const Judged&) { return true; };
  std::string note;
};

namespace {

constexpr const char* kFromHelp =
    "Read a file that zeldb export has written; several of them, or a folder: the rows of all these "
    "machines, "
    "with their names in the column Machine";

std::vector<View>& registry() {
  static std::vector<View> all;
  return all;
}

std::string columns_help(const View& view) {
  size_t width = 0;
  for (const Column& column : view.columns) width = std::max(width, std::string_view(column.key).size());
  const std::string title = view.option.empty() ? "Columns" : "Columns with " + view.option;
  std::string text = title + " (* not in a table unless asked for):\n";
  for (const Column& column : view.columns) {
    std::string key = column.key;
    key.resize(width, ' ');
    text += (column.is_extra ? "* " : "  ") + key + "  " + column.help;
    const std::string type = type_name(column);
    if (type != "text") text += " (" + type + ")";
    text += '\n';
  }
  return text;
}

std::string help_of(const std::string& command) {
  std::string text;
  for (const View& view : views()) {
    if (view.command == command) text += columns_help(view) + "\n";
  }
  text.resize(text.find_last_not_of('\n') + 1);
  return text;
}

const View& chosen_view(const Listing::State& state) {
  for (const auto& choice : state.choices) {
    if (choice.option->count() != 0) return registry()[choice.view];
  }
  return registry()[state.first];
}

size_t column_at(const View& view, const std::string& option, const std::string& key) {
  for (size_t place = 0; place < view.columns.size(); ++place) {
    if (strcasecmp(view.columns[place].key, key.c_str()) == 0) return place;
  }
  std::vector<std::string> known;
  for (const Column& column : view.columns) known.emplace_back(column.key);
  throw WrongUse(option + ": " + key + ": no such column" + did_you_mean(key, known));
}

// The indices of the columns to be shown.
std::vector<size_t> chosen_columns(const Listing::State& state, const View& view) {
  std::vector<size_t> places;
  const bool is_all = state.output.size() == 1 && state.output.front() == "all";
  if (!state.output.empty() && !is_all) {
    for (const std::string& key : state.output) places.push_back(column_at(view, "--output", key));
    return places;
  }
  for (size_t place = 0; place < view.columns.size(); ++place) {
    if (is_all || state.as_json || !view.columns[place].is_extra) places.push_back(place);
  }
  return places;
}

// Splits the rows in place: those of many machines need much memory.
Table table_of(const View& view, const std::vector<size_t>& places, std::vector<Row> rows) {
  Table table;
  for (const size_t place : places) table.columns.push_back(view.columns[place]);
  table.rows.reserve(rows.size());
  for (Row& whole : rows) {
    const Row row = std::move(whole);
    Row& shown = table.rows.emplace_back();
    shown.reserve(places.size());
    for (const size_t place : places) shown.push_back(row[place]);
  }
  return table;
}

// Numbers in texts count as numbers; nothing comes before everything.
bool is_before(const Value& one, const Value& other) {
  const auto* const text = std::get_if<std::string>(&one);
  const auto* const other_text = std::get_if<std::string>(&other);
  if (text != nullptr && other_text != nullptr) return strverscmp(text->c_str(), other_text->c_str()) < 0;
  return one < other;
}

// Sorts by a column, which need not be shown; "-" before its name reverses the order.
void sort_rows(const View& view, std::string_view key, std::vector<Row>& rows) {
  const bool is_reverse = key.starts_with('-');
  const size_t place = column_at(view, "--sort", std::string(key.substr(is_reverse ? 1 : 0)));
  std::ranges::stable_sort(rows, [=](const Row& one, const Row& other) {
    return is_reverse ? is_before(other[place], one[place]) : is_before(one[place], other[place]);
  });
}

std::vector<Row> ordered_rows(const View& view) {
  std::vector<Row> rows = view.read();
  for (auto key = view.order.rbegin(); key != view.order.rend(); ++key) sort_rows(view, *key, rows);
  return rows;
}

// "24 in total: MIB 786432"; empty where there is nothing to sum.
std::string total_of(const Table& table) {
  std::string sums;
  for (size_t place = 0; place < table.columns.size(); ++place) {
    if (!table.columns[place].is_summed) continue;
    uint64_t sum = 0;
    for (const Row& row : table.rows) {
      if (const auto* number = std::get_if<uint64_t>(&row[place])) sum += *number;
    }
    sums +=
        std::string(sums.empty() ? ": " : ", ") + table.columns[place].heading + " " + std::to_string(sum);
  }
  return sums.empty() || table.rows.size() < 2
             ? ""
             : std::to_string(table.rows.size()) + " in total" + sums + "\n";
}

// Only a table for people leaves out columns, and only its reader needs this note.
void say_hidden(const std::vector<std::string>& hidden) {
  if (hidden.empty()) return;
  std::string names;
  for (const std::string& name : hidden) names += (names.empty() ? "" : ", ") + name;
  std::fflush(stdout);
  std::fprintf(stderr, "zeldb: no room for %s (--wide shows all)\n", names.c_str());
}

void print(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
}

// Each machine has branches of its own.
std::string branch_of(const Listing::State& state, const View& view, const Row& row) {
  const std::string branch = state.branch(view, row);
  const bool has_machine = view.columns.front().key == std::string_view(kMachineKey);
  return has_machine && !branch.empty() ? std::get<std::string>(row.front()) + ": " + branch : branch;
}

std::vector<Row> shown_rows(const View& view, std::vector<Row> rows) {
  for (Row& row : rows) {
    const Row whole = row;
    for (size_t place = 0; place < row.size(); ++place)
      row[place] = shown_value(view, whole, view.columns[place]);
  }
  return rows;
}

void print(const Listing::State& state, const View& view, const std::vector<size_t>& places,
           std::vector<Row> rows) {
  std::vector<std::string> branches;
  if (state.as_tree) {
    for (const Row& row : rows) branches.push_back(branch_of(state, view, row));
  }
  if (!state.as_json && !state.as_raw) rows = shown_rows(view, std::move(rows));
  Table table = table_of(view, places, std::move(rows));
  table.branches = std::move(branches);
  if (state.as_json || state.as_raw) {
    print(state.as_json ? as_json(table) : as_raw(table, !state.no_headings));
    return;
  }
  Terminal screen = terminal();
  if (state.is_wide) screen.width = 0;
  const PrintedTable printed = as_table(
      table,
      {.has_headings = !state.no_headings, .terminal = screen, .keeps_columns = !state.output.empty()});
  print(printed.text + (state.no_headings ? "" : total_of(table)));
  say_hidden(printed.hidden);
}

// The view of many machines: the same with their names in front.
class ManyView {
 public:
  ManyView(const View& of_one, const std::vector<std::string>& files)
      : columns_{kMachineColumn}, view_(of_one) {
    columns_.insert(columns_.end(), of_one.columns.begin(), of_one.columns.end());
    view_.columns = columns_;
    view_.order.clear();  // each machine's rows are in theirs
    view_.read = [this, &of_one, files] { return read(of_one, machines_of(files)); };
  }
  ManyView(const ManyView&) = delete;
  ManyView& operator=(const ManyView&) = delete;
  ~ManyView() = default;

  const View& view() const { return view_; }
  // Machines that could not be read.
  size_t unread() const { return unread_; }

 private:
  std::vector<Row> read(const View& of_one, const std::vector<Machine>& machines) {
    std::vector<Row> rows;
    const auto take = [&rows](const Machine& machine, std::string_view answer) {
      for (Row& row : unpacked(answer, {machine.name})) rows.push_back(std::move(row));
    };
    unread_ = ask_each(
        machines, [&of_one] { return packed(ordered_rows(of_one)); }, take);
    return rows;
  }

  std::vector<Column> columns_;
  View view_;
  size_t unread_ = 0;
};

void show(const Listing::State& state) {
  const View& of_one = chosen_view(state);
  std::optional<ManyView> many;
  if (are_many(state.snapshots)) many.emplace(of_one, state.snapshots);
  const View& view = many ? many->view() : of_one;
  if (state.as_tree && &of_one != &registry()[state.first])
    throw WrongUse("--tree does not go with " + view.option);
  const std::vector<size_t> places = chosen_columns(state, view);
  if (!state.sort.empty()) column_at(view, "--sort", state.sort.substr(state.sort.starts_with('-') ? 1 : 0));
  if (!many && !state.snapshots.empty()) use_snapshot(state.snapshots.front());
  Mask mask;
  std::vector<Row> rows = read_rows(view, state.masked ? &mask : nullptr);
  const size_t unread = many ? many->unread() : 0;
  const bool is_shown = state.judge({view, rows, unread, !state.as_json && !state.as_raw});
  if (!state.sort.empty()) sort_rows(view, state.sort, rows);
  if (is_shown) print(state, view, places, std::move(rows));
  if (unread != 0) throw Failure("");
}

void add_options(CLI::App& app, Listing::State& state) {
  constexpr const char* kGroup = "Output";
  CLI::Option* json =
      app.add_flag("--json", state.as_json, "One JSON object, with all columns unless --output is given");
  CLI::Option* raw = app.add_flag(
      "--raw", state.as_raw, "Fields separated by tabs, numbers as they are, \\x1b for control characters");
  CLI::Option* headings = app.add_flag("--no-headings", state.no_headings, "No line of headings");
  CLI::Option* wide = app.add_flag("--wide", state.is_wide,
                                   "All columns and whole texts, not cut to the width of the terminal");
  exclude_each_other({json, raw});
  CLI::Option* output = app.add_option("--output", state.output, "The columns to show, or all")
                            ->delimiter(',')
                            ->allow_extra_args(false)
                            ->type_name("COL,...");
  CLI::Option* sort =
      app.add_option("--sort", state.sort, "Sort by this column; -COL: in reverse order")->type_name("COL");
  CLI::Option* masked = app.add_flag("--mask", state.masked, kMaskHelp);
  CLI::Option* from =
      app.add_option("--from", state.snapshots, kFromHelp)->allow_extra_args(false)->type_name("FILE");
  for (CLI::Option* option : {json, raw, headings, wide, output, sort, masked, from}) option->group(kGroup);
}

}  // namespace

namespace {

// Whether the row of a setting may have any text, by the setting's type; other rows have no such values.
Holds held_by(const View& view, const Row& row) {
  for (size_t place = 0; place < row.size(); ++place) {
    const auto* const type = std::get_if<uint64_t>(&row[place]);
    if (type != nullptr && *type == kTextType && std::string_view(view.columns[place].key) == "Type")
      return Holds::FreeText;
  }
  return Holds::Choice;
}

}  // namespace

const std::vector<View>& views() {
  return registry();
}

// Replacements are given out in the order in which values stand in all columns, so that they do not depend on
// those that are shown.
std::vector<Row> read_rows(const View& view, Mask* mask) {
  std::vector<Row> rows = ordered_rows(view);
  if (mask == nullptr) return rows;
  for (Row& row : rows) {
    const Holds holds = held_by(view, row);
    for (size_t place = 0; place < row.size(); ++place) {
      auto* const text = std::get_if<std::string>(&row[place]);
      if (text != nullptr && !identified_by(view.columns[place]).empty())
        *text = (*mask)(view.columns[place].key, *text, holds);
    }
  }
  return rows;
}

const Value& value_of(const View& view, const Row& row, std::string_view key) {
  const auto column = std::ranges::find(view.columns, key, &Column::key);
  return row.at(static_cast<size_t>(column - view.columns.begin()));
}

Value shown_value(const View& view, const Row& row, const Column& column) {
  const Value& value = value_of(view, row, column.key);
  if (column.condition == nullptr) return value;
  const bool is_zero = *column.condition == '!';
  const Value& other = value_of(view, row, column.condition + (is_zero ? 1 : 0));
  return (other == Value(uint64_t{0})) == is_zero ? value : Value();
}

const View& view_called(std::string_view name) {
  return *std::ranges::find(views(), name, name_of);
}

std::string name_of(const View& view) {
  return view.option.empty() ? view.command : view.command + " " + view.option;
}

std::string schema_name_of(const View& view) {
  return view.command + (view.option.empty() ? "" : view.option.substr(1));
}

Listing::Listing(CLI::App& app) : app_(app), state_(std::make_shared<State>()) {
  state_->first = registry().size();
  add_options(app, *state_);
  const std::string command = app.get_name();
  app.footer([command, state = state_] {
    return help_of(command) + (state->note.empty() ? "" : "\n\n" + state->note);
  });
  app.callback([state = state_] { show(*state); });
}

Listing& Listing::without(const std::vector<CLI::Option*>& options) {
  for (CLI::Option* option : options) state_->choices.back().option->excludes(option);
  return *this;
}

Listing& Listing::order(std::vector<std::string_view> columns) {
  registry().back().order = std::move(columns);
  return *this;
}

Listing& Listing::note(const std::string& text) {
  state_->note = text;
  return *this;
}

Listing& Listing::tree(const std::string& help,
                       std::function<std::string(const View& view, const Row& row)> branch) {
  state_->branch = std::move(branch);
  app_.add_flag("--tree", state_->as_tree, help);
  return *this;
}

Listing& Listing::judge(std::function<bool(const Judged& judged)> look) {
  state_->judge = std::move(look);
  return *this;
}

Listing& Listing::around(std::function<void(const std::function<void()>& show)> command) {
  app_.callback([state = state_, command = std::move(command)] { command([&state] { show(*state); }); });
  return *this;
}

void Listing::add(const std::string& option, const std::string& help, std::span<const Column> columns,
                  std::function<std::vector<Row>()> read) {
  if (!option.empty()) {
    CLI::Option* const flag = app_.add_flag(option, help);
    for (const State::Choice& choice : state_->choices) exclude_each_other({flag, choice.option});
    state_->choices.push_back({registry().size(), flag});
  }
  registry().push_back({app_.get_name(), option, columns, std::move(read), {}});
}

}  // namespace zeldb::cli
