// SPDX-License-Identifier: Apache-2.0
#include "cli/report/report.h"

#include <algorithm>
#include <ctime>
#include <iterator>
#include <map>
#include <set>

#include "cli/command.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/output.h"

namespace zeldb::cli {

namespace {

constexpr struct {
  const char* view;
  const char* title;
} kTables[] = {{"slots", "Slots"},
               {"processors", "Processors"},
               {"memory", "Memory modules"},
               {"disks", "Drives"},
               {"backplanes", "Backplanes"},
               {"adapters", "Adapters"},
               {"ports", "Network ports"},
               {"gpus", "GPUs and accelerators"},
               {"firmware", "Firmware components"},
               {"embedded", "Firmware of the controller's own devices"},
               {"vpd", "Vital product data"},
               {"functions", "PCI functions"}};

// Which rows of which table are places, by their kind of location, and what they are called.
constexpr struct {
  const char* table;
  const char* kind_column;
  uint64_t kind;
  const char* title;
  const char* shape;
  const char* number_column;
  const char* label;
  const char* name_column;
} kGroups[] = {{"slots", "Location", 1, "Slots", "slot", "SlotNo", "Slot", "CardName"},
               {"disks", "LocationId", 2, "Drive bays", "bay", "BayNo", "Bay", "Model"},
               {"disks", "LocationId", 3, "M.2 bays", "m2", "BayNo", "M.2", "Model"},
               {"disks", "LocationId", 4, "7 mm bays", "bay", "BayNo", "7 mm", "Model"},
               {"slots", "Location", 0, "On the board", "slot", "SlotNo", "Device", "CardName"}};

ReportTable read_table(const View& view, const char* title, Mask* mask) {
  ReportTable table{view.command, title, {}, {view.columns.begin(), view.columns.end()}, {}};
  try {
    table.rows = read_rows(view, mask);
  } catch (const Failure& failure) {
    table.failure = failure.what();
  }
  return table;
}

const ReportTable* find_table(const Report& report, std::string_view name) {
  const auto found = std::ranges::find(report.tables, name, &ReportTable::name);
  return found != report.tables.end() ? &*found : nullptr;
}

const Value& value_at(const ReportTable& table, const Row& row, std::string_view key) {
  static const Value nothing;
  const auto found =
      std::ranges::find(table.columns, key, [](const Column& c) { return std::string_view(c.key); });
  return found != table.columns.end() ? row[static_cast<size_t>(found - table.columns.begin())] : nothing;
}

std::string cell_at(const ReportTable& table, const Row& row, std::string_view key) {
  const auto found =
      std::ranges::find(table.columns, key, [](const Column& c) { return std::string_view(c.key); });
  return found != table.columns.end() ? cell_of(*found, value_at(table, row, key)) : std::string();
}

uint64_t number_at(const ReportTable& table, const Row& row, std::string_view key) {
  const auto* number = std::get_if<uint64_t>(&value_at(table, row, key));
  return number != nullptr ? *number : 0;
}

template <typename Group>
ReportGroup places_of(const ReportTable& table, const Group& group) {
  std::map<uint64_t, ReportPlace> places;
  for (const Row& row : table.rows) {
    if (number_at(table, row, group.kind_column) != group.kind) continue;
    const uint64_t number = number_at(table, row, group.number_column);
    ReportPlace& place = places[number];
    if (place.row != nullptr) continue;  // the first one that is known for a place
    place.label = std::string(group.label) + " " + std::to_string(number);
    place.name = cell_at(table, row, group.name_column);
    place.health = cell_at(table, row, "HealthStatus");
    place.table = &table;
    place.row = &row;
    place.id = std::string(group.shape) + "-" + std::to_string(group.kind) + "-" + std::to_string(number);
  }
  ReportGroup drawn{group.title, group.shape, {}};
  for (auto& [number, place] : places) drawn.places.push_back(std::move(place));
  return drawn;
}

// The backplanes' bays are numbered from 0; those that no drive is known for are empty.
void add_empty_bays(const Report& report, ReportGroup& group) {
  const ReportTable* const totals = find_table(report, "backplanes");
  if (totals == nullptr || totals->rows.empty()) return;
  const uint64_t bays = number_at(*totals, totals->rows.front(), "MaxDrives");
  std::vector<ReportPlace> all;
  for (uint64_t number = 0; number < bays; ++number) {
    const std::string label = "Bay " + std::to_string(number);
    const auto known = std::ranges::find(group.places, label, &ReportPlace::label);
    if (known != group.places.end()) {
      all.push_back(*known);
      group.places.erase(known);
    } else {
      all.push_back({"bay-2-" + std::to_string(number), label, "Empty", "", true, nullptr, nullptr});
    }
  }
  std::ranges::move(group.places, std::back_inserter(all));
  group.places = std::move(all);
}

std::string now() {
  const std::time_t seconds = std::time(nullptr);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", &parts)};
}

}  // namespace

Report read_report(bool masked) {
  require_inventory("report");
  Report report;
  report.time = now();
  Mask mask;
  report.tables.reserve(std::size(kTables));
  for (const auto& [name, title] : kTables) {
    const auto view = std::ranges::find(views(), std::string_view(name), name_of);
    if (view != views().end()) report.tables.push_back(read_table(*view, title, masked ? &mask : nullptr));
  }
  for (const auto& group : kGroups) {
    const ReportTable* const table = find_table(report, group.table);
    if (table == nullptr) continue;
    report.groups.push_back(places_of(*table, group));
    if (std::string_view(group.title) == "Drive bays") add_empty_bays(report, report.groups.back());
  }
  return report;
}

}  // namespace zeldb::cli
