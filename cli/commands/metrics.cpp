// SPDX-License-Identifier: Apache-2.0
#include "cli/metrics/metrics.h"

#include <CLI/CLI.hpp>
#include <sys/stat.h>

#include <cstdio>
#include <memory>
#include <optional>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/file.h"
#include "cli/snapshot.h"

namespace zeldb::cli {

namespace {

struct Options {
  std::string file;
  std::string baseline;
  std::string from;
  bool masked = false;
};

metrics::Read read(const Options& options) {
  std::optional<std::vector<Part>> baseline;
  if (!options.baseline.empty()) baseline = parts_of_baseline(read_file(options.baseline), options.baseline);
  if (!options.from.empty()) use_snapshot(options.from);
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
  // Another user reads the file.
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
  add_text(app, "--from", options->from, "FILE", "Read a file that zeldb export has written");
  set_action(
      app, [options] { write_metrics(*options); },
      "The format is that of Prometheus and OpenMetrics; all metrics are gauges. A label has at most 64 "
      "characters, a metric at most 2000 series; zeldb_series_left_out counts the rest. If a section "
      "cannot be read, the reason goes to standard error, its zeldb_section_up is 0, and the exit "
      "status is 1.");
}

}  // namespace zeldb::cli
