// SPDX-License-Identifier: Apache-2.0
#include "cli/report/report.h"

#include <algorithm>
#include <ctime>
#include <iterator>
#include <map>
#include <set>

#include "cli/command.h"
#include "cli/components.h"
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
               {"firmware", "Firmware"},
               {"embedded", "Firmware of the controller's own devices"},
               {"vpd", "Vital product data"},
               {"functions", "PCI functions"},
               {"pending", "Changes with the next start"},
               {"settings", "BIOS settings"}};

// The rows that are places: their table, kind of location, and title.
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
std::string id_of(const Group& group, uint64_t number) {
  return std::string(group.shape) + "-" + std::to_string(group.kind) + "-" + std::to_string(number);
}

template <typename Group, typename DetailsOf>
ReportGroup places_of(const ReportTable& table, const Group& group, const DetailsOf& details_of) {
  std::map<uint64_t, ReportPlace> places;
  for (const Row& row : table.rows) {
    if (number_at(table, row, group.kind_column) != group.kind) continue;
    const uint64_t number = number_at(table, row, group.number_column);
    ReportPlace& place = places[number];
    if (!place.id.empty()) continue;  // the first one of a place counts
    place.label = std::string(group.label) + " " + std::to_string(number);
    place.name = cell_at(table, row, group.name_column);
    place.health = cell_at(table, row, "HealthStatus");
    place.id = id_of(group, number);
    place.number = number;
    place.details = details_of({static_cast<int>(group.kind), static_cast<int>(number)});
  }
  ReportGroup drawn{group.title, group.shape, {}};
  for (auto& [number, place] : places) drawn.places.push_back(std::move(place));
  return drawn;
}

// The backplanes' bays are numbered from 0; bays without a known drive are empty.
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
      all.push_back({"bay-2-" + std::to_string(number), label, "Empty", "", true});
    }
  }
  std::ranges::move(group.places, std::back_inserter(all));
  group.places = std::move(all);
}

// The keys of the functions in each slot.
using Functions = std::map<std::pair<int, int>, std::set<std::string>>;
Functions functions_by_place(const std::vector<Row>& rows) {
  const View& view = view_called("functions");
  Functions functions;
  for (const Row& row : rows) {
    const auto place =
        std::pair(std::stoi(text_at(view, row, "Location")), std::stoi(text_at(view, row, "SlotNo")));
    functions[place].insert(text_at(view, row, "FunKey"));
  }
  return functions;
}

// The events of all slots, each with its slot.
ReportTable logs_of(const std::vector<ReportGroup>& groups) {
  constexpr Column kSlot = ZELDB_COLUMN(ReportPlace, number, "SLOT", "Number of the slot");
  const auto columns = view_called("dpu-log").columns;
  ReportTable table{"dpu-log", "Logs of DPUs", {}, {kSlot}, {}};
  table.columns.insert(table.columns.end(), columns.begin(), columns.end());
  for (const ReportGroup& group : groups) {
    for (const ReportPlace& place : group.places) {
      for (const PlaceDetails& details : place.details) {
        if (details.view->command != "dpu-log") continue;
        if (table.failure.empty()) table.failure = details.found.trouble;
        for (const Row& event : details.found.rows) {
          Row& row = table.rows.emplace_back(Row{place.number});
          row.insert(row.end(), event.begin(), event.end());
        }
      }
    }
  }
  return table;
}

// Components whose update failed or waits, and where they sit.
std::vector<ReportNotice> notices_of(const ReportTable& firmware) {
  std::vector<ReportNotice> notices;
  for (const Row& row : firmware.rows) {
    const auto number = [&](const char* key) { return number_at(firmware, row, key); };
    const auto cell = [&](const char* key) { return cell_at(firmware, row, key); };
    const bool has_failed = number("Updated") != 0 && number("UpdateErrCode") != 0;
    const bool waits = number("Status") == kUpdateWaits;
    const auto slots = std::ranges::find_if(kGroups, [&](const auto& group) {
      return std::string_view(group.table) == "slots" && group.kind == number("Location");
    });
    const std::string place = slots != std::end(kGroups) ? id_of(*slots, number("SlotNo")) : "";
    if (has_failed)
      notices.push_back({cell("DeviceName") + ": update failed: " + cell("UpdateErrString"), place});
    if (waits)
      notices.push_back(
          {cell("DeviceName") + ": " + cell("PendingVersionString") + " waits for its activation", place});
  }
  return notices;
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
  Mask mask;
  PlaceReader reader(masked ? &mask : nullptr);
  const Functions functions_at = functions_by_place(reader.listed("functions").rows);
  std::set<std::string> functions;
  for (const auto& [place, keys] : functions_at) functions.insert(keys.begin(), keys.end());
  reader.read_settings_of(functions);

  Report report;
  report.time = now();
  report.tables.reserve(std::size(kTables) + 1);
  for (const auto& [name, title] : kTables) {
    const auto& [rows, trouble] = reader.listed(name);
    const auto columns = view_called(name).columns;
    report.tables.push_back({name, title, trouble, {columns.begin(), columns.end()}, rows});
  }
  const auto details_of = [&](const Place& place) {
    const auto there = functions_at.find({place.location, place.number});
    return reader.details_of({place, there != functions_at.end() ? there->second : std::set<std::string>()});
  };
  for (const auto& group : kGroups) {
    const ReportTable& table = *find_table(report, group.table);
    report.groups.push_back(places_of(table, group, details_of));
    if (std::string_view(group.title) == "Drive bays") add_empty_bays(report, report.groups.back());
  }
  report.notices = notices_of(*find_table(report, "firmware"));
  report.tables.push_back(logs_of(report.groups));
  return report;
}

}  // namespace zeldb::cli
