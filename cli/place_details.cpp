// SPDX-License-Identifier: Apache-2.0
//
// One table says which rows of which listing belong to a place.
#include "cli/place_details.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>

#include "cli/bios_values.h"
#include "cli/command.h"
#include "cli/dpu_log.h"
#include "cli/inventory.h"
#include "cli/secrets.h"

namespace zeldb::cli {

namespace {

// How a row names its place. Drive: by the place, or by the function above the drive. Slot: the listing is of
// one slot.
enum class By : uint8_t { Place, Function, Drive, Slot };

struct Section {
  const char* view;
  const char* title;
  By by;
  const char* key;      // the column with the key: by place the adapter's, otherwise the function's
  const char* columns;  // as PlaceDetails has them
  const char* nothing;
};
constexpr Section kSections[] = {
    {"slots", "Slot", By::Place, "", "", ""},
    {"firmware", "Firmware", By::Place, "PCIKey",
     "DeviceName,VersionString,PendingVersionString,UpdateErrString,SoftwareID", ""},
    {"ports", "Network ports", By::Function, "Key",
     "Key,Idx,PermanentAddress,ConnectorLayoutText,LinkStatus,LinkSpeed", ""},
    {"pending", "Changes with the next start", By::Function, "PfaKey", "", "None."},
    {"functions", "PCI functions", By::Place, "DevKey",
     "FunKey,Address,VendorId,DeviceId,SubVendorId,SubDeviceId,ClsCode,LanesInUse,MaxLanes,PCIeType,"
     "MaxPCIeType",
     ""},
    {"adapters", "Adapter", By::Place, "PCIKey",
     "PCIKey,CardName,ConnectorTypeText,HealthStatus,AIMSupported", ""},
    {"adapters --ncsi", "NC-SI packages", By::Place, "", "PackageID1,PackageID2", ""},
    {"vpd", "Vital product data", By::Function, "FunKey", "", ""},
    {"gpus", "GPU", By::Function, "FunKey", "", ""},
    {"gpus --chips", "GPU chips", By::Function, "FunKey", "", ""},
    {"dpu-log", "Log of the DPU", By::Slot, "", "", ""},
    {"disks", "Drives", By::Drive, "PCIFuncKey", "", ""},
    {"settings", "BIOS settings", By::Function, "PfaKey", "SettingID,CurrentValue,PendingValue,ShortDesc",
     ""},
};

bool is_of(const WantedPlace& wanted, const Section& section, const View& view, const Row& row) {
  const auto is_at = [&](const char* location, const char* number) {
    return text_at(view, row, location) == std::to_string(wanted.place.location) &&
           text_at(view, row, number) == std::to_string(wanted.place.number);
  };
  if (section.by == By::Place) {
    const bool is_meant =
        wanted.adapter.empty() || *section.key == '\0' || text_at(view, row, section.key) == wanted.adapter;
    return is_meant && is_at("Location", "SlotNo");
  }
  const bool is_functions = wanted.functions.contains(text_at(view, row, section.key));
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

template <typename Record>
std::vector<Row> rows_of(const View& view, const std::vector<Record>& records, Mask* mask) {
  return read_rows({view.command, {}, view.columns, [&] { return as_rows(view.columns, records); }, {}},
                   mask);
}

bool stays(const PCISetting_info& setting) {
  return text_of(setting.CurrentValue) == text_of(setting.PendingValue);
}

// Adds the values that only the BIOS knows.
std::vector<PCISetting_info> settings_of(const std::set<std::string>& functions, bool& are_values_known) {
  std::vector<PCISetting_info> settings;
  for (const std::string& key : functions) {
    const auto function = static_cast<uint32_t>(std::stoul(key, nullptr, 16));
    std::ranges::copy(read_settings_with_secrets(function), std::back_inserter(settings));
  }
  are_values_known = complete_values(settings);
  std::ranges::for_each(settings, hide_secret);
  return settings;
}

}  // namespace

std::string text_at(const View& view, const Row& row, std::string_view key) {
  const Value& value = value_of(view, row, key);
  if (const auto* number = std::get_if<uint64_t>(&value)) return std::to_string(*number);
  const auto* text = std::get_if<std::string>(&value);
  return text != nullptr ? *text : "";
}

Table table_of(const PlaceDetails& details) {
  const auto is_shown = [&](const Column& column) {
    if (details.columns.empty()) return !column.is_extra;
    return details.columns == "all" ||
           ("," + details.columns + ",").find("," + std::string(column.key) + ",") != std::string::npos;
  };
  Table table;
  std::ranges::copy_if(details.view->columns, std::back_inserter(table.columns), is_shown);
  for (const Row& row : details.found.rows) {
    Row& shown = table.rows.emplace_back();
    for (const Column& column : table.columns) shown.push_back(shown_value(*details.view, row, column));
  }
  return table;
}

void PlaceReader::read_settings_of(const std::set<std::string>& functions) {
  settings_ = read_or_tell(settings_trouble_, [&] { return settings_of(functions, are_values_known_); });
}

Listed PlaceReader::read(const View& view) {
  if (view.command == "settings" || view.command == "pending") {
    std::vector<PCISetting_info> settings = settings_;
    if (view.command == "pending") std::erase_if(settings, stays);
    return {rows_of(view, settings, mask_), settings_trouble_};
  }
  Listed listed;
  listed.rows = read_or_tell(listed.trouble, [&] { return read_rows(view, mask_); });
  return listed;
}

const Listed& PlaceReader::listed(std::string_view name) {
  const auto known = listed_.find(name);
  if (known != listed_.end()) return known->second;
  return listed_.emplace(name, read(view_called(name))).first->second;
}

Listed PlaceReader::dpu_log(int slot) {
  Listed listed;
  listed.rows = read_or_tell(listed.trouble,
                             [&] { return rows_of(view_called("dpu-log"), read_dpu_log(slot), mask_); });
  return listed;
}

std::vector<PlaceDetails> PlaceReader::details_of(const WantedPlace& wanted) {
  const bool is_slot = wanted.place.location <= 1;  // the others are bays
  std::vector<PlaceDetails> all;
  for (const Section& section : kSections) {
    const View& view = view_called(section.view);
    PlaceDetails& details =
        all.emplace_back(PlaceDetails{&view, section.title, section.columns, is_slot ? section.nothing : ""});
    if (section.by == By::Slot) {
      if (wanted.place.location == 1 && wanted.place.number > 0) details.found = dpu_log(wanted.place.number);
      continue;
    }
    const Listed& listed_rows = listed(section.view);
    details.found.trouble = listed_rows.trouble;
    std::ranges::copy_if(listed_rows.rows, std::back_inserter(details.found.rows),
                         [&](const Row& row) { return is_of(wanted, section, view, row); });
    if (!details.nothing.empty() && !are_values_known_) details.nothing = "Not known.";
  }
  return all;
}

}  // namespace zeldb::cli
