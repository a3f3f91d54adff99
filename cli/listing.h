// SPDX-License-Identifier: Apache-2.0
//
// A command that shows rows. Its setup function adds its arguments and its views: a view is a table of
// columns and a function that reads the records; the first one is shown unless an option chooses another. The
// rest (--json, --output, help, ...) is the same for every listing.
#ifndef CLI_LISTING_H
#define CLI_LISTING_H

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/column.h"
#include "cli/mask.h"

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace zeldb::cli {

struct View {
  std::string command;
  std::string option;  // chooses it, such as "--logical"; empty for the first one
  std::span<const Column> columns;
  std::function<std::vector<Row>()> read;
  std::vector<std::string_view> order{};  // the columns that sort the rows; empty: as they are read
};

// The views of all commands, in their order. The name of a view is the command's, or "ports --logical".
const std::vector<View>& views();
std::string name_of(const View& view);
const View& view_called(std::string_view name);
// The name in the schema, where a reference has no blanks: "ports-logical".
std::string schema_name_of(const View& view);
// The value in the column with this key.
const Value& value_of(const View& view, const Row& row, std::string_view key);
// The value that a table shows; nothing if the column does not apply to the row.
Value shown_value(const View& view, const Row& row, const Column& column);
// The rows of a view in its order, masked when there is a mask.
std::vector<Row> read_rows(const View& view, Mask* mask);

// Values of the columns of each record.
template <typename Record>
std::vector<Row> as_rows(std::span<const Column> columns, const std::vector<Record>& records) {
  std::vector<Row> rows;
  for (const Record& record : records) {
    Row& row = rows.emplace_back();
    for (const Column& column : columns) row.push_back(value_of(column, &record));
  }
  return rows;
}

struct Judged {
  const View& view;
  const std::vector<Row>& rows;
  size_t unread;  // machines that are missing
  bool is_for_people;
};

class Listing {
 public:
  explicit Listing(CLI::App& app);

  // read() returns a vector of records and throws Failure. columns must outlive the program's run.
  template <typename Read>
  Listing& view(std::span<const Column> columns, Read read) {
    add({}, {}, columns, rows(columns, std::move(read)));
    return *this;
  }
  template <typename Read>
  Listing& view(const std::string& option, const std::string& help, std::span<const Column> columns,
                Read read) {
    add(option, help, columns, rows(columns, std::move(read)));
    return *this;
  }

  // Sorts the rows of the last view by these columns, as --sort does.
  Listing& order(std::vector<std::string_view> columns);
  // Options that cannot be combined with the last view.
  Listing& without(const std::vector<CLI::Option*>& options);
  // Adds a text below the columns in the help text.
  Listing& note(const std::string& text);
  // Adds an option that shows the rows as a tree. branch returns the parent of a row of the first view; empty
  // for none.
  Listing& tree(const std::string& help, std::function<std::string(const View& view, const Row& row)> branch);
  // Runs command around the listing: it shows the listing by calling its argument.
  Listing& around(std::function<void(const std::function<void()>& show)> command);
  // Sees the rows before they are shown, and returns whether they are to be.
  Listing& judge(std::function<bool(const Judged& judged)> look);

  struct State;

 private:
  template <typename Read>
  static std::function<std::vector<Row>()> rows(std::span<const Column> columns, Read read) {
    return [columns, read] { return as_rows(columns, read()); };
  }
  void add(const std::string& option, const std::string& help, std::span<const Column> columns,
           std::function<std::vector<Row>()> read);

  CLI::App& app_;
  std::shared_ptr<State> state_;
};

}  // namespace zeldb::cli

#endif
