// SPDX-License-Identifier: Apache-2.0
#include "cli/watch/changes.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "cli/apart.h"
#include "cli/json_value.h"
#include "cli/listing.h"
#include "cli/output.h"
#include "cli/packed_rows.h"
#include "cli/text.h"

namespace zeldb::cli::watch {

namespace {

// The listings, and the columns that identify a row. Rows that share them are numbered.
constexpr struct {
  const char* listing;
  std::string_view keys;
} kWatched[] = {{"slots", "Location SlotNo"},
                {"processors", "Socket NodeIndex"},
                {"memory", "DevLocator SlotNo NodeIndex"},
                {"ports", "Key Idx"},
                {"gpus", "FunKey"},
                {"disks", "Location"},
                {"backplanes", ""},
                {"firmware", "Location SlotNo DeviceName SoftwareID"},
                {"embedded", "DeviceName DeviceIndex"},
                {"pending", "SettingID"}};

// Numbers that change all the time, and ids that say nothing of a machine.
constexpr std::string_view kNotWatched[] = {"_id", "Temperature", "TxUtil", "RxUtil", "CurSpeed"};

std::string place_of(const View& view, std::string_view keys, const Row& row) {
  std::string place;
  while (!keys.empty()) {
    const size_t length = std::min(keys.find(' '), keys.size());
    const std::string_view key = keys.substr(0, length);
    keys.remove_prefix(std::min(length + 1, keys.size()));
    const auto column = std::ranges::find(view.columns, key, &Column::key);
    const std::string cell = cell_of(*column, value_of(view, row, key));
    if (cell != "-") place += (place.empty() ? "" : " ") + cell;
  }
  return place;
}

std::string numbered(const std::map<std::string, Row>& rows, const std::string& place) {
  std::string unique = place;
  for (int number = 2; rows.contains(unique); ++number) unique = place + " #" + std::to_string(number);
  return unique;
}

std::vector<Change::Difference> differences(const View& view, const Row& before, const Row& now) {
  std::vector<Change::Difference> found;
  for (size_t place = 0; place < now.size(); ++place) {
    const Column& column = view.columns[place];
    const bool is_watched = std::ranges::find(kNotWatched, column.key) == std::end(kNotWatched);
    if (is_watched && before[place] != now[place]) found.push_back({column, before[place], now[place]});
  }
  return found;
}

}  // namespace

State read_state(Mask* mask) {
  const std::string text = made_apart([] {
    std::vector<Row> all;
    for (size_t place = 0; place < std::size(kWatched); ++place) {
      for (Row& row : view_called(kWatched[place].listing).read()) {
        row.emplace_back(uint64_t{place});
        all.push_back(std::move(row));
      }
    }
    return packed(all);
  });
  std::map<uint64_t, std::vector<Row>> rows;
  for (Row& row : unpacked(text)) {
    const uint64_t place = std::get<uint64_t>(row.back());
    row.pop_back();
    rows[place].push_back(std::move(row));
  }
  State state;
  for (const auto& [place, of_listing] : rows) {
    const auto& [listing, keys] = kWatched[place];
    View view = view_called(listing);
    view.read = [&of_listing = of_listing] { return of_listing; };
    for (Row& row : read_rows(view, mask)) {
      const std::string where = numbered(state[listing], place_of(view, keys, row));
      state[listing][where] = std::move(row);
    }
  }
  return state;
}

std::vector<Change> changes(const State& before, const State& now) {
  std::vector<Change> found;
  static const std::map<std::string, Row> none;
  for (const auto& [listing, keys] : kWatched) {
    const View& view = view_called(listing);
    const auto rows_of = [&listing = listing](const State& state) -> const auto& {
      const auto rows = state.find(listing);
      return rows != state.end() ? rows->second : none;
    };
    for (const auto& [place, row] : rows_of(before)) {
      if (!rows_of(now).contains(place)) found.push_back({"removed", listing, place});
    }
    for (const auto& [place, row] : rows_of(now)) {
      const auto old = rows_of(before).find(place);
      if (old == rows_of(before).end()) {
        found.push_back({"added", listing, place});
      } else if (auto different = differences(view, old->second, row); !different.empty()) {
        found.push_back({"changed", listing, place, std::move(different)});
      }
    }
  }
  return found;
}

std::string as_line(const Change& change, const std::string& time) {
  std::string line = time + " " + change.change + " " + change.listing + " " + change.place;
  const char* separator = ": ";
  for (const Change::Difference& one : change.differences) {
    line += separator + std::string(one.column.key) + " " + cell_of(one.column, one.was) + " -> " +
            cell_of(one.column, one.is);
    separator = ", ";
  }
  return in_locale(line) + "\n";
}

std::string as_json_line(const Change& change, const std::string& time) {
  nlohmann::ordered_json line = {
      {"time", time}, {"change", change.change}, {"listing", change.listing}, {"place", change.place}};
  for (const Change::Difference& one : change.differences)
    line["columns"][one.column.key] = {{"was", json_of(one.was)}, {"is", json_of(one.is)}};
  return line.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace zeldb::cli::watch
