// SPDX-License-Identifier: Apache-2.0
//
// All that the listings tell of one place. Which rows of which listing belong to a slot is in one table, and
// which listings have places with names of their own in another.
#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <memory>
#include <set>
#include <utility>

#include "cli/arguments.h"
#include "cli/bios_values.h"
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/output.h"
#include "cli/secrets.h"
#include "cli/settings.h"
#include "cli/snapshot.h"
#include "cli/text.h"

namespace zeldb::cli {

namespace {

struct Options {
  std::string place;
  std::string from;
  bool as_json = false;
  bool masked = false;
  bool is_wide = false;
};

// What is asked for: a slot or bay and the functions in it, or something with a name of its own.
struct Target {
  std::optional<Place> place;
  std::set<std::string> functions;
  std::string name;
};

// How a listing says which place a row belongs to. Drive: by its place, or by the function that it is behind.
enum class By : uint8_t { Place, Function, Drive, Setting, Pending };

struct Section {
  const char* view;
  const char* title;
  By by;
  const char* key;      // the column with the function's key
  const char* columns;  // to be shown; empty for those that the listing shows
  const char* nothing;  // what is said without rows; null: nothing
};
constexpr Section kSections[] = {
    {"slots", "Slot", By::Place, "", "", nullptr},
    {"firmware", "Firmware", By::Place, "",
     "DeviceName,VersionString,PendingVersionString,UpdateErrString,SoftwareID", nullptr},
    {"ports", "Network ports", By::Function, "Key",
     "Key,Idx,PermanentAddress,ConnectorLayoutText,LinkStatus,LinkSpeed", nullptr},
    {"pending", "Changes with the next start", By::Pending, "", "", "None."},
    {"functions", "PCI functions", By::Place, "",
     "FunKey,Address,VendorId,DeviceId,SubVendorId,SubDeviceId,ClsCode,LanesInUse,MaxLanes,PCIeType,"
     "MaxPCIeType",
     nullptr},
    {"adapters", "Adapter", By::Place, "", "PCIKey,CardName,ConnectorTypeText,HealthStatus,AIMSupported",
     nullptr},
    {"adapters --ncsi", "NC-SI packages", By::Place, "", "PackageID1,PackageID2", nullptr},
    {"vpd", "Vital product data", By::Function, "FunKey", "", nullptr},
    {"gpus", "GPU", By::Function, "FunKey", "", nullptr},
    {"gpus --chips", "GPU chips", By::Function, "FunKey", "", nullptr},
    {"disks", "Drives", By::Drive, "PCIFuncKey", "", nullptr},
    {"settings", "BIOS settings", By::Setting, "", "SettingID,CurrentValue,PendingValue,ShortDesc", nullptr},
};

// Listings of what has a name of its own, and the column with that name.
constexpr struct {
  const char* view;
  const char* title;
  const char* name;
} kNamed[] = {{"memory", "Memory module", "DevLocator"},
              {"processors", "Processor", "Socket"},
              {"disks", "Drive", "Location"}};

// The rows of a listing that belong to the place.
struct Found {
  const View* view;
  std::string title;
  std::string columns;
  std::string nothing;
  std::vector<Row> rows;
};

const View& view_called(const char* name) {
  return *std::ranges::find(views(), std::string_view(name), name_of);
}

std::string text_at(const View& view, const Row& row, std::string_view key) {
  const Value& value = value_of(view, row, key);
  if (const auto* number = std::get_if<uint64_t>(&value)) return std::to_string(*number);
  const auto* text = std::get_if<std::string>(&value);
  return text != nullptr ? *text : "";
}

// "DIMM 3", "dimm3" and "DIMM_3" are the same.
std::string plain(const std::string& name) {
  std::string letters;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0) letters += static_cast<char>(std::tolower(byte));
  }
  return letters;
}

struct Settings {
  std::vector<PCISetting_info> all;
  bool are_known = false;
};

// Of the functions, with the values that only the BIOS knows; without their secrets.
Settings settings_of(const std::set<std::string>& functions) {
  std::vector<PCISetting_info> settings;
  for (const std::string& key : functions) {
    const auto function = static_cast<uint32_t>(std::stoul(key, nullptr, 16));
    if (find_function(function))
      std::ranges::copy(read_settings_with_secrets(function), std::back_inserter(settings));
  }
  const bool are_known = complete_values(settings);
  std::ranges::for_each(settings, hide_secret);
  return {std::move(settings), are_known};
}

std::vector<Row> rows_of_settings(const View& view, std::vector<PCISetting_info> settings, bool are_pending) {
  const auto stays = [](const PCISetting_info& setting) {
    return text_of(setting.CurrentValue) == text_of(setting.PendingValue);
  };
  if (are_pending) std::erase_if(settings, stays);
  std::vector<Row> rows;
  for (const PCISetting_info& setting : settings) {
    Row& row = rows.emplace_back();
    for (const Column& column : view.columns) row.push_back(value_of(column, &setting));
  }
  return rows;
}

bool is_of(const Target& target, const Section& section, const View& view, const Row& row) {
  const auto is_at = [&](const char* location, const char* number) {
    return text_at(view, row, location) == std::to_string(target.place->location) &&
           text_at(view, row, number) == std::to_string(target.place->number);
  };
  if (section.by == By::Place) return is_at("Location", "SlotNo");
  const bool is_functions = target.functions.contains(text_at(view, row, section.key));
  return is_functions || (section.by == By::Drive && is_at("LocationId", "BayNo"));
}

std::vector<Found> all_of(const Target& target, Mask* mask) {
  const Settings settings = settings_of(target.functions);
  const bool is_slot = target.place->location <= 1;  // others are bays
  std::vector<Found> all;
  for (const Section& section : kSections) {
    const View& view = view_called(section.view);
    const bool is_pending = section.by == By::Pending;
    Found& found = all.emplace_back(Found{&view, section.title, section.columns,
                                          section.nothing != nullptr && is_slot ? section.nothing : "",
                                          std::vector<Row>()});
    if (is_pending || section.by == By::Setting) {
      const View of_place{
          view.command, {}, view.columns, [&] { return rows_of_settings(view, settings.all, is_pending); }};
      found.rows = read_rows(of_place, mask);
      if (is_pending && !settings.are_known) found.nothing = "Not known.";
    } else {
      found.rows = read_rows(view, mask);
      std::erase_if(found.rows, [&](const Row& row) { return !is_of(target, section, view, row); });
    }
  }
  return all;
}

std::vector<Found> all_called(const std::string& name, Mask* mask) {
  std::vector<Found> all;
  for (const auto& [view_name, title, column] : kNamed) {
    const View& view = view_called(view_name);
    Found& found = all.emplace_back(Found{&view, title, "all", "", read_rows(view, mask)});
    std::erase_if(found.rows, [&, column = column](const Row& row) {
      return plain(text_at(view, row, column)) != plain(name);
    });
  }
  return all;
}

// The slot of the function or adapter with this key, or of the function at this address, with or without its
// segment.
std::optional<Place> slot_of_function(const std::string& text) {
  const bool is_key =
      text.size() == 8 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (!is_key && text.find('.') == std::string::npos) return std::nullopt;
  const View& view = view_called("functions");
  for (const Row& row : read_rows(view, nullptr)) {
    const auto is_it = [&](const char* column) {
      const std::string shown = text_at(view, row, column);
      const size_t skipped = is_key || shown.size() != text.size() + 5 ? 0 : 5;
      return strcasecmp(shown.c_str() + skipped, text.c_str()) == 0;
    };
    if (is_key ? is_it("FunKey") || is_it("DevKey") : is_it("Address"))
      return Place{std::stoi(text_at(view, row, "Location")), std::stoi(text_at(view, row, "SlotNo"))};
  }
  return std::nullopt;
}

std::vector<Found> find(const std::string& text, Mask* mask) {
  require_inventory("show");
  Target target{.place = slot_of_function(text), .functions = {}, .name = text};
  if (!target.place) target.place = place_of(text);
  if (target.place) {
    for (const uint32_t key : functions_in_slot(*target.place)) target.functions.insert(key_text(key));
  }
  std::vector<Found> all = target.place ? all_of(target, mask) : all_called(text, mask);
  if (std::ranges::all_of(all, [](const Found& found) { return found.rows.empty(); }))
    fail_not_found(printable(text, Escape::Terminal));
  return all;
}

bool is_shown(const Found& found, const Column& column) {
  if (found.columns.empty()) return !column.is_extra;
  return found.columns == "all" ||
         ("," + found.columns + ",").find("," + std::string(column.key) + ",") != std::string::npos;
}

Table table_of(const Found& found) {
  Table table;
  for (const Column& column : found.view->columns) {
    if (is_shown(found, column)) table.columns.push_back(column);
  }
  for (const Row& row : found.rows) {
    Row& shown = table.rows.emplace_back();
    for (const Column& column : table.columns) shown.push_back(value_of(*found.view, row, column.key));
  }
  return table;
}

// A line for each thing that is known.
std::string as_lines(const Table& table) {
  std::string text;
  size_t width = 0;
  for (const Column& column : table.columns) width = std::max(width, std::string(column.heading).size());
  for (size_t place = 0; place < table.columns.size(); ++place) {
    const std::string cell = cell_of(table.columns[place], table.rows.front()[place]);
    std::string heading = table.columns[place].heading;
    heading.resize(width + 2, ' ');
    if (cell != "-") text.append(heading).append(cell).append("\n");
  }
  return text;
}

std::string as_text(const std::vector<Found>& all, const Terminal& screen) {
  std::string text;
  for (const Found& found : all) {
    if (found.rows.empty() && found.nothing.empty()) continue;
    const Table table = table_of(found);
    text += (text.empty() ? "" : "\n") + found.title + "\n";
    if (table.rows.empty())
      text += found.nothing + "\n";
    else
      text += table.rows.size() == 1 ? as_lines(table)
                                     : as_table(table, {.terminal = screen, .keeps_columns = true}).text;
  }
  return text;
}

std::string as_json(const std::vector<Found>& all) {
  std::string text = "{\"format_version\":" + std::to_string(kFormatVersion) + ",\"listings\":{";
  const char* separator = "\n";
  for (const Found& found : all) {
    const Table table{{found.view->columns.begin(), found.view->columns.end()}, found.rows};
    std::string listing = as_json(table);
    listing.pop_back();
    text.append(separator).append("\"").append(schema_name_of(*found.view)).append("\":").append(listing);
    separator = ",\n";
  }
  return text + "\n}}\n";
}

void show(const Options& options) {
  if (!options.from.empty()) use_snapshot(options.from);
  Mask mask;
  const std::vector<Found> all = find(options.place, options.masked ? &mask : nullptr);
  Terminal screen = terminal();
  if (options.is_wide) screen.width = 0;
  const std::string text = options.as_json ? as_json(all) : as_text(all, screen);
  std::fwrite(text.data(), 1, text.size(), stdout);
}

}  // namespace

void setup_show(CLI::App& app) {
  auto options = std::make_shared<Options>();
  require(add_text(app, "PLACE", options->place, "",
                   "A slot (10, or 0:1 for the first on the board), a bay (2:4), the key or the address of a "
                   "function, the key of an adapter, or the name of a memory slot, a processor's socket or a "
                   "drive's bay, as the listings show it"));
  add_flag(
      app, "--json", options->as_json,
      "One JSON object: listings has what each listing prints of the place, under its name in the schema");
  add_flag(app, "--wide", options->is_wide, "Whole texts, however wide the lines");
  add_flag(app, "--mask", options->masked, kMaskHelp);
  add_text(app, "--from", options->from, "FILE", "Read a file that zeldb export has written");
  set_action(
      app, [options] { show(*options); },
      "Of a slot that is the card and its health, firmware that runs, waits or has failed, network ports, "
      "the settings that change with the next start, PCI functions with their links, NC-SI packages, vital "
      "product data, GPUs, the drives behind it and BIOS settings. What there is one of is shown a line "
      "each.");
}

}  // namespace zeldb::cli
