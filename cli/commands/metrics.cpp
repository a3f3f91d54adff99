// SPDX-License-Identifier: Apache-2.0
#include "cli/metrics/metrics.h"

#include <CLI/CLI.hpp>
#include <sys/stat.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/file.h"
#include "cli/fleet.h"
#include "cli/snapshot.h"

namespace zeldb::cli {

namespace {

struct Options {
  std::string file;
  std::string baseline;
  std::vector<std::string> from{};
  bool masked = false;
};

using Baseline = std::optional<std::vector<Part>>;

// The first character of a reply: whether all sections could be read.
constexpr char kWhole = 'W';
constexpr char kPart = 'P';

metrics::Read read_machines(const Options& options, const Baseline& baseline) {
  if (options.masked) throw WrongUse("--mask: takes one machine; zeldb export --mask masks each");
  metrics::Read all;
  const auto ask = [&baseline] {
    const metrics::Read one = metrics::read_metrics({nullptr, baseline ? &*baseline : nullptr});
    return (one.is_whole ? kWhole : kPart) + one.metrics.text();
  };
  const auto take = [&all](const Machine& machine, std::string_view answer) {
    all.metrics.add_machine(machine.name, answer.substr(1));
    all.is_whole &= answer.front() == kWhole;
  };
  if (ask_each(machines_of(options.from), ask, take) != 0) all.is_whole = false;
  return all;
}

metrics::Read read(const Options& options) {
  Baseline baseline;
  if (!options.baseline.empty()) baseline = parts_of_baseline(read_file(options.baseline), options.baseline);
  if (are_many(options.from)) return read_machines(options, baseline);
  if (!options.from.empty()) use_snapshot(options.from.front());
  Mask mask;
  return metrics::read_metrics({options.masked ? &mask : nullptr, baseline ? &*baseline : nullptr});
}

void write_metrics(const Options& options) {
  if (options.file.empty()) {
    const metrics::Read read_now = read(options);
    std::fputs(read_now.metrics.text().c_str(), stdout);
    if (!read_now.is_whole) throw Failure("");
    return;
  }
  // The collector that reads the file is another user.
  constexpr mode_t kReadable = 0644;
  NewFile file(options.file, IfExists::Replace);
  const metrics::Read read_now = read(options);
  write_file(file.temporary_path(), read_now.metrics.text());
  if (chmod(file.temporary_path().c_str(), kReadable) != 0)
    throw Failure(options.file + ": cannot be made readable");
  file.commit();
  if (!read_now.is_whole) throw Failure("");
}

}  // namespace

void setup_metrics(CLI::App& app) {
  auto options = std::make_shared<Options>();
  add_text(app, "FILE", options->file, "",
           "A file to replace as a whole, readable for all, for a textfile collector; without it, standard "
           "output");
  add_text(app, "--baseline", options->baseline, "FILE",
           "Also show the differences from a file that zeldb baseline has written");
  add_flag(app, "--mask", options->masked, kMaskHelp);
  app.add_option(
         "--from", options->from,
         "Read a file that zeldb export has written; several of them, or a folder: all these machines, "
         "with their names in the label machine")
      ->allow_extra_args(false)
      ->type_name("FILE");
  set_action(
      app, [options] { write_metrics(*options); },
      "The format is that of Prometheus and OpenMetrics; all metrics are gauges. A label has at most 64 "
      "characters, a metric at most 2000 series; zeldb_series_left_out counts the rest. If a section "
      "cannot be read, the reason goes to standard error, its zeldb_section_up is 0, and the exit "
      "status is 1.");
}

}  // namespace zeldb::cli
