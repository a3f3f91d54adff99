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
  std::string adapter;  // key of the only one that is meant, of several in a slot
  std::set<std::string> functions;
  std::string name;
};

// How a listing says which place a row belongs to. Drive: by its place, or by the function that it is behind.
enum class By : uint8_t { Place, Function, Drive, Setting, Pending };

struct Section {
  const char* view;
  const char* title;
  By by;
  const char* key;      // the column with the key: by place the adapter's, otherwise the function's
  const char* columns;  // to be shown; empty for those that the listing shows
  const char* nothing;  // what is said without rows; null: nothing
};
constexpr Section kSections[] = {
    {"slots", "Slot", By::Place, "", "", nullptr},
    {"firmware", "Firmware", By::Place, "PCIKey",
     "DeviceName,VersionString,PendingVersionString,UpdateErrString,SoftwareID", nullptr},
    {"ports", "Network ports", By::Function, "Key",
     "Key,Idx,PermanentAddress,ConnectorLayoutText,LinkStatus,LinkSpeed", nullptr},
    {"pending", "Changes with the next start", By::Pending, "", "", "None."},
    {"functions", "PCI functions", By::Place, "DevKey",
     "FunKey,Address,VendorId,DeviceId,SubVendorId,SubDeviceId,ClsCode,LanesInUse,MaxLanes,PCIeType,"
     "MaxPCIeType",
     nullptr},
    {"adapters", "Adapter", By::Place, "PCIKey",
     "PCIKey,CardName,ConnectorTypeText,HealthStatus,AIMSupported", nullptr},
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
  std::vector<Row> rows{};
  std::string trouble{};  // why the listing cannot be read
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
  if (section.by == By::Place) {
    const bool is_meant =
        target.adapter.empty() || *section.key == '\0' || text_at(view, row, section.key) == target.adapter;
    return is_meant && is_at("Location", "SlotNo");
  }
  const bool is_functions = target.functions.contains(text_at(view, row, section.key));
  return is_functions || (section.by == By::Drive && is_at("LocationId", "BayNo"));
}

// A part of the inventory that cannot be read does not keep the others from being shown.
template <typename Read>
auto read_or_tell(std::string& trouble, Read read) -> decltype(read()) {
  try {
    return read();
  } catch (const Failure& failure) {
    trouble = failure.what();
    return {};
  }
}

std::vector<Row> rows_of(const Section& section, const Target& target, const View& view, Mask* mask) {
  std::vector<Row> rows = read_rows(view, mask);
  std::erase_if(rows, [&](const Row& row) { return !is_of(target, section, view, row); });
  return rows;
}

std::vector<Found> all_of(const Target& target, Mask* mask) {
  std::string trouble;
  const Settings settings = read_or_tell(trouble, [&] { return settings_of(target.functions); });
  const bool is_slot = target.place->location <= 1;  // others are bays
  std::vector<Found> all;
  for (const Section& section : kSections) {
    const View& view = view_called(section.view);
    const bool is_pending = section.by == By::Pending;
    Found& found = all.emplace_back(Found{&view, section.title, section.columns,
                                          section.nothing != nullptr && is_slot ? section.nothing : ""});
    if (is_pending || section.by == By::Setting) {
      const View of_place{
          view.command, {}, view.columns, [&] { return rows_of_settings(view, settings.all, is_pending); }};
      found.rows = read_rows(of_place, mask);
      found.trouble = trouble;
      if (is_pending && !settings.are_known) found.nothing = "Not known.";
    } else {
      found.rows = read_or_tell(found.trouble, [&] { return rows_of(section, target, view, mask); });
    }
  }
  return all;
}

std::vector<Found> all_called(const std::string& name, Mask* mask) {
  std::vector<Found> all;
  for (const auto& [view_name, title, column] : kNamed) {
    const View& view = view_called(view_name);
    Found& found = all.emplace_back(Found{&view, title, "all", ""});
    found.rows = read_or_tell(found.trouble, [&] { return read_rows(view, mask); });
    std::erase_if(found.rows, [&, column = column](const Row& row) {
      return plain(name).empty() || plain(text_at(view, row, column)) != plain(name);
    });
  }
  return all;
}

// The slot of the function or adapter with this key, or of the function at this address (of segment 0 where
// it has none), with the adapter.
std::optional<Target> slot_of_function(const std::string& text) {
  constexpr const char* kDigits = "0123456789abcdefABCDEF";
  const std::string key = text.starts_with("0x") || text.starts_with("0X") ? text.substr(2) : text;
  const bool is_key = key.size() == 8 && key.find_first_not_of(kDigits) == std::string::npos;
  if (!is_key && text.find('.') == std::string::npos) return std::nullopt;
  const std::string address = std::ranges::count(text, ':') == 1 ? "0000:" + text : text;
  const View& view = view_called("functions");
  for (const Row& row : read_rows(view, nullptr)) {
    const auto is_it = [&](const char* column, const std::string& wanted) {
      return strcasecmp(text_at(view, row, column).c_str(), wanted.c_str()) == 0;
    };
    const std::string adapter = text_at(view, row, "DevKey");
    const bool has_adapter = adapter != key_text(0);
    if (is_key ? is_it("FunKey", key) || (has_adapter && is_it("DevKey", key)) : is_it("Address", address))
      return Target{
          .place = Place{std::stoi(text_at(view, row, "Location")), std::stoi(text_at(view, row, "SlotNo"))},
          .adapter = has_adapter ? adapter : "",
          .functions = {},
          .name = text};
  }
  return std::nullopt;
}

bool is_of_adapter(uint32_t function, const std::string& adapter) {
  const auto found = find_function(function);
  return found && key_text(found->DevKey) == adapter;
}

std::vector<Found> find(const std::string& text, Mask* mask) {
  require_inventory("show");
  Target target = slot_of_function(text).value_or(Target{place_of(text), {}, {}, text});
  if (target.place) {
    for (const uint32_t key : functions_in_slot(*target.place)) {
      if (target.adapter.empty() || is_of_adapter(key, target.adapter))
        target.functions.insert(key_text(key));
    }
  }
  std::vector<Found> all = target.place ? all_of(target, mask) : all_called(text, mask);
  const bool is_known = std::ranges::any_of(all, [](const Found& found) { return !found.rows.empty(); });
  const bool is_sure = std::ranges::all_of(all, &std::string::empty, &Found::trouble);
  if (!is_known && is_sure) fail_not_found(printable(text, Escape::Terminal));
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
std::string as_lines(const Table& table, const Terminal& screen) {
  std::string text;
  size_t width = 0;
  for (const Column& column : table.columns) width = std::max(width, std::string(column.heading).size());
  for (size_t place = 0; place < table.columns.size(); ++place) {
    const std::string cell = in_locale(cell_of(table.columns[place], table.rows.front()[place]));
    std::string line = table.columns[place].heading;
    line.resize(width + 2, ' ');
    line += cell;
    if (cell == "-") continue;
    text.append(screen.width != 0 ? cut_to_places(line, screen.width) : line).append("\n");
  }
  return text;
}

std::string as_text(const std::vector<Found>& all, const Terminal& screen) {
  std::string text;
  for (const Found& found : all) {
    if (found.rows.empty() && found.nothing.empty() && found.trouble.empty()) continue;
    const Table table = table_of(found);
    text += (text.empty() ? "" : "\n") + found.title + "\n";
    if (table.rows.empty())
      text += (found.trouble.empty() ? found.nothing : "Cannot be read: " + found.trouble) + "\n";
    else
      text += table.rows.size() == 1 ? as_lines(table, screen)
                                     : as_table(table, {.terminal = screen, .keeps_columns = true}).text;
  }
  return text;
}

std::string as_json(const std::vector<Found>& all) {
  std::string text = "{\"format_version\":" + std::to_string(kFormatVersion) + ",\"listings\":{";
  const char* separator = "\n";
  for (const Found& found : all) {
    if (!found.trouble.empty()) continue;
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
  for (const Found& found : all) {
    if (!found.trouble.empty())
      throw Failure("show: " + options.place + " is not complete: " + found.trouble);
  }
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
