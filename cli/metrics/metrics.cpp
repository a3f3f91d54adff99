// SPDX-License-Identifier: Apache-2.0
#include "cli/metrics/metrics.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <stdexcept>

#include "cli/command.h"
#include "cli/text.h"

namespace zeldb::cli::metrics {

namespace {

constexpr const char* kLeftOut = "zeldb_series_left_out";
constexpr const char* kLeftOutHelp = "Series beyond the bounds, or equal to another one.";

constexpr struct {
  const char* name;
  const char* help;
} kFamilies[] = {
    {"zeldb_part_info", "A part of the machine: what it is, where it sits, its numbers and its firmware."},
    {"zeldb_part_health",
     "1 for the state that the health of an adapter, drive or memory module is in, 0 for others."},
    {"zeldb_part_change", "A part that differs from the baseline."},
    {"zeldb_baseline_differences", "How many parts differ from the baseline."},
    {"zeldb_processor_cores", "Cores of a processor."},
    {"zeldb_memory_size_bytes", "Size of a memory module."},
    {"zeldb_drive_size_bytes", "Capacity of a drive."},
    {"zeldb_drive_temperature_celsius", "Temperature of a drive."},
    {"zeldb_drive_life_left_ratio", "Remaining life of a drive, 1 for a new one."},
    {"zeldb_port_up", "1 if the link of a network port is up."},
    {"zeldb_port_speed_bytes_per_second", "Speed of the link of a network port."},
    {"zeldb_firmware_update_failed", "1 if the last update of a firmware component failed."},
    {"zeldb_firmware_update_pending", "1 if an update of a firmware component waits for its activation."},
    {"zeldb_pending_settings", "How many BIOS settings change with the next start."},
    {"zeldb_inventory_changed_timestamp_seconds", "Time of the last change of the inventory."},
    {"zeldb_table_rows", "Rows of a table."},
    {"zeldb_schema_version", "Version of the schema of the databases."},
    {"zeldb_section_up", "1 if this section of the metrics could be read."},
    {kLeftOut, kLeftOutHelp},
};

std::string escaped(const std::string& text) {
  std::string value;
  for (const char c : text) {
    if (c == '\\' || c == '"') value += '\\';
    value += c;
  }
  return value;
}

std::string label_value(const std::string& text) {
  return escaped(cut(printable(text, Escape::Terminal), kLongestLabel));
}

std::string number_text(double number) {
  char text[32];
  std::snprintf(text, sizeof(text), "%.17g", number);
  // The shortest text that reads back as the same number.
  char shorter[32];
  std::snprintf(shorter, sizeof(shorter), "%.15g", number);
  return std::stod(shorter) == number ? shorter : text;
}

std::string series(const std::string& family, const Labels& labels) {
  std::string text = family;
  char separator = '{';
  for (const auto& [name, value] : labels) {
    if (value.empty()) continue;
    text += separator;
    text += std::string(name) + "=\"" + label_value(value) + "\"";
    separator = ',';
  }
  return separator == ',' ? text + "}" : text;
}

std::string heading(const char* family, const char* help) {
  return std::string("# HELP ") + family + " " + help + "\n# TYPE " + family + " gauge\n";
}

}  // namespace

void Metrics::add(const std::string& family, const Labels& labels, double value) {
  std::vector<std::string>& lines = series_[family];
  const std::string name = series(family, labels);
  if (lines.size() == kMostSeries || !known_.insert(name).second)
    ++left_out_;
  else
    lines.push_back(name + " " + number_text(value) + "\n");
}

void Metrics::add_machine(const std::string& machine, std::string_view text) {
  const std::string label = "{machine=\"" + escaped(printable(machine, Escape::Terminal)) + "\"";
  if (!known_.insert(label).second) throw Failure(machine + ": another machine has the same name");
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n') + 1);
    text.remove_prefix(line.size());
    if (line.starts_with('#')) continue;
    const size_t end = line.find_first_of("{ ");
    const std::string family(line.substr(0, end));
    const bool has_labels = line[end] == '{';
    series_[family].push_back(family + label + (has_labels ? "," : "}") +
                              std::string(line.substr(has_labels ? end + 1 : end)));
  }
}

std::string Metrics::text() const {
  std::string text;
  size_t shown = 0;
  for (const auto& [name, help] : kFamilies) {
    const auto family = series_.find(name);
    if (family == series_.end()) continue;
    ++shown;
    text += heading(name, help);
    for (const std::string& line : family->second) text += line;
  }
  if (shown != series_.size()) throw std::logic_error("a metric without a help text");
  if (!series_.contains(kLeftOut))
    text += heading(kLeftOut, kLeftOutHelp) + kLeftOut + " " + std::to_string(left_out_) + "\n";
  return text + "# EOF\n";
}

}  // namespace zeldb::cli::metrics
