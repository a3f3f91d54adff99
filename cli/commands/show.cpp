// SPDX-License-Identifier: Apache-2.0
//
// All rows of the listings for a slot, a bay, or a part with a name of its own.
#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iterator>
#include <memory>
#include <utility>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/output.h"
#include "cli/place_details.h"
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

// Listings of parts with a name of their own, and the column with that name.
constexpr struct {
  const char* view;
  const char* title;
  const char* name;
} kNamed[] = {{"memory", "Memory module", "DevLocator"},
              {"processors", "Processor", "Socket"},
              {"disks", "Drive", "Location"}};

// "DIMM 3", "dimm3" and "DIMM_3" are the same.
std::string plain(const std::string& name) {
  std::string letters;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (std::isalnum(byte) != 0) letters += static_cast<char>(std::tolower(byte));
  }
  return letters;
}

std::vector<PlaceDetails> all_called(PlaceReader& reader, const std::string& name) {
  std::vector<PlaceDetails> all;
  for (const auto& [view_name, title, column] : kNamed) {
    const View& view = view_called(view_name);
    PlaceDetails& details = all.emplace_back(PlaceDetails{&view, title, "all", "", reader.listed(view_name)});
    std::erase_if(details.found.rows, [&, column = column](const Row& row) {
      return plain(name).empty() || plain(text_at(view, row, column)) != plain(name);
    });
  }
  return all;
}

// The slot of the function or adapter with this key, or of the function at this address (of segment 0 where
// it has none), with the adapter.
std::optional<WantedPlace> slot_of_function(PlaceReader& reader, const std::string& text) {
  constexpr const char* kDigits = "0123456789abcdefABCDEF";
  const std::string key = text.starts_with("0x") || text.starts_with("0X") ? text.substr(2) : text;
  const bool is_key = key.size() == 8 && key.find_first_not_of(kDigits) == std::string::npos;
  if (!is_key && text.find('.') == std::string::npos) return std::nullopt;
  const std::string address = std::ranges::count(text, ':') == 1 ? "0000:" + text : text;
  const View& view = view_called("functions");
  const auto& [rows, trouble] = reader.listed("functions");
  if (!trouble.empty()) throw Failure(trouble);
  for (const Row& row : rows) {
    const auto is_it = [&](const char* column, const std::string& wanted) {
      return strcasecmp(text_at(view, row, column).c_str(), wanted.c_str()) == 0;
    };
    const std::string adapter = text_at(view, row, "DevKey");
    const bool has_adapter = adapter != key_text(0);
    if (is_key ? is_it("FunKey", key) || (has_adapter && is_it("DevKey", key)) : is_it("Address", address))
      return WantedPlace{
          .place = {std::stoi(text_at(view, row, "Location")), std::stoi(text_at(view, row, "SlotNo"))},
          .functions = {},
          .adapter = has_adapter ? adapter : ""};
  }
  return std::nullopt;
}

void find_functions(PlaceReader& reader, WantedPlace& wanted) {
  for (const uint32_t key : functions_in_slot(wanted.place)) {
    const auto function = find_function(key);
    if (function && (wanted.adapter.empty() || key_text(function->DevKey) == wanted.adapter))
      wanted.functions.insert(key_text(key));
  }
  reader.read_settings_of(wanted.functions);
}

// The part with this name; of a drive also what else is known of its bay.
std::vector<PlaceDetails> details_called(PlaceReader& reader, const std::string& name) {
  std::vector<PlaceDetails> all = all_called(reader, name);
  const PlaceDetails drive = all.back();
  if (drive.found.rows.size() != 1) return all;
  const auto number = [&](const char* column) {
    return std::stoi(text_at(*drive.view, drive.found.rows.front(), column));
  };
  WantedPlace bay{.place = {number("LocationId"), number("BayNo")}, .functions = {}};
  find_functions(reader, bay);
  std::ranges::copy_if(reader.details_of(bay), std::back_inserter(all),
                       [&](const PlaceDetails& details) { return details.view != drive.view; });
  return all;
}

std::vector<PlaceDetails> find(const std::string& text, Mask* mask) {
  require_inventory("show");
  PlaceReader reader(mask);
  std::optional<WantedPlace> wanted = slot_of_function(reader, text);
  if (!wanted) {
    const auto place = place_of(text);
    if (!place) return details_called(reader, text);
    wanted = WantedPlace{*place, {}};
  }
  find_functions(reader, *wanted);
  return reader.details_of(*wanted);
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

std::string as_text(const std::vector<PlaceDetails>& all, const Terminal& screen) {
  std::string text;
  for (const PlaceDetails& details : all) {
    if (!details.is_shown()) continue;
    const std::string& trouble = details.found.trouble;
    const Table table = table_of(details);
    text += (text.empty() ? "" : "\n") + details.title + "\n";
    if (table.rows.empty())
      text += (trouble.empty() ? details.nothing : "Cannot be read: " + trouble) + "\n";
    else
      text += table.rows.size() == 1 ? as_lines(table, screen)
                                     : as_table(table, {.terminal = screen, .keeps_columns = true}).text;
  }
  return text;
}

std::string as_json(const std::vector<PlaceDetails>& all) {
  std::string text = "{\"format_version\":" + std::to_string(kFormatVersion) + ",\"listings\":{";
  const char* separator = "\n";
  for (const PlaceDetails& details : all) {
    if (!details.found.trouble.empty()) continue;
    const Table table{{details.view->columns.begin(), details.view->columns.end()}, details.found.rows};
    std::string listing = as_json(table);
    listing.pop_back();
    text.append(separator).append("\"").append(schema_name_of(*details.view)).append("\":").append(listing);
    separator = ",\n";
  }
  return text + "\n}}\n";
}

void show(const Options& options) {
  if (!options.from.empty()) use_snapshot(options.from);
  Mask mask;
  const std::vector<PlaceDetails> all = find(options.place, options.masked ? &mask : nullptr);
  const bool is_known = std::ranges::any_of(all, [](const auto& one) { return !one.found.rows.empty(); });
  const bool is_sure = std::ranges::all_of(all, [](const auto& one) { return one.found.trouble.empty(); });
  if (!is_known && is_sure) fail_not_found(printable(options.place, Escape::Terminal));
  Terminal screen = terminal();
  if (options.is_wide) screen.width = 0;
  const std::string text = options.as_json ? as_json(all) : as_text(all, screen);
  std::fwrite(text.data(), 1, text.size(), stdout);
  for (const PlaceDetails& details : all) {
    if (!details.found.trouble.empty())
      throw Failure("show: " + options.place + " is not complete: " + details.found.trouble);
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
      "One JSON object: listings holds the output of each listing for the place, by its name in the schema");
  add_flag(app, "--wide", options->is_wide, "Do not cut texts to the width of the terminal");
  add_flag(app, "--mask", options->masked, kMaskHelp);
  add_snapshot(app, options->from);
  set_action(
      app, [options] { show(*options); },
      "For a slot it shows the card and its health; firmware that runs, waits or has failed; network "
      "ports; settings that change with the next start; PCI functions with their links; NC-SI packages; "
      "vital product data; GPUs; the drives of its controller; and BIOS settings. A listing with one "
      "row is shown with a line for each column.");
}

}  // namespace zeldb::cli
