// SPDX-License-Identifier: Apache-2.0
//
// The findings of the sources: rows for the tables, each with a key that the next scan finds it by.
#ifndef SCAN_ROWS_H
#define SCAN_ROWS_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace zeldb::scan {

// The source gave no value this time: a new row gets the default of the column, an existing one keeps its
// value.
struct Kept {};
// The source may have given this number before, but no longer does: a row that holds it gets 0. Other values
// stay, as with Kept.
struct Withdrawn {
  uint64_t number;
};
// For values that always vary: a number this close to the one in the row is no change.
struct Near {
  uint64_t number;
  uint64_t tolerance;
};
// monostate: NULL.
using Value = std::variant<std::monostate, Kept, Withdrawn, Near, uint64_t, std::string>;

struct Cell {
  const char* column;
  Value value;
};

struct Row {
  Row(const char* of_table, const char* from, std::string named, std::vector<const char*> known_by = {})
      : table(of_table), source(from), key(std::move(named)), identity(std::move(known_by)) {}
  void add(const char* column, Value value) { cells.push_back({column, std::move(value)}); }

  const char* table;
  const char* source;
  std::string key;  // within the table
  // The columns that name the part: a row of another writer with the same values there stands for the same
  // part, and none is written beside it.
  std::vector<const char*> identity;
  std::vector<Cell> cells;
};

// The words of --only, which are also the values of ScannedRows.Source.
inline constexpr const char* kPci = "pci";
inline constexpr const char* kSmbios = "smbios";
inline constexpr const char* kDrives = "drives";
inline constexpr const char* kNetwork = "network";
inline constexpr const char* kFirmware = "firmware";
inline constexpr const char* kSources[] = {kPci, kSmbios, kDrives, kNetwork, kFirmware};

struct Findings {
  std::vector<Row> rows;
  std::set<std::string> complete;  // sources whose parts are all here: missing ones were removed
  // Table and key of rows that could not be read this time, though their source is complete: they stay.
  std::set<std::pair<std::string, std::string>> unread;
  std::vector<std::string> troubles;  // one line each
};

// A text of a device, made fit for a column: without control characters, blanks at its ends and broken UTF-8,
// cut between characters; NULL if it is empty then.
Value text_value(std::string_view text, size_t limit = 255);

template <typename Number>
Value value_of(const std::optional<Number>& number) {
  return number ? Value(static_cast<uint64_t>(*number)) : Value();
}
inline Value value_of(const std::optional<std::string>& text) {
  return text ? text_value(*text) : Value();
}

}  // namespace zeldb::scan

#endif
