// SPDX-License-Identifier: Apache-2.0
#include "cli/report/report.h"

#include <CLI/CLI.hpp>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <memory>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/file.h"
#include "cli/mask.h"
#include "cli/snapshot.h"

namespace zeldb::cli {

namespace {

struct Options {
  std::string file;
  std::string from;
  std::string name;
  bool replace = false;
  bool masked = false;
};

// A mask hides the names of hosts.
std::string machine_name(const Options& options) {
  if (!options.name.empty() || options.masked) return options.name;
  if (!options.from.empty()) return std::filesystem::path(options.from).stem();
  char name[HOST_NAME_MAX + 1] = "";
  return gethostname(name, sizeof name) == 0 ? name : "";
}

void write_report(const Options& options) {
  write_output(options.file, options.replace ? IfExists::Replace : IfExists::Refuse, [&] {
    if (!options.from.empty()) use_snapshot(options.from);
    Report report = read_report(options.masked);
    report.machine = machine_name(options);
    return as_html(report);
  });
}

}  // namespace

void setup_report(CLI::App& app) {
  auto options = std::make_shared<Options>();
  require(add_text(app, "FILE", options->file, "",
                   "The page to write, readable by its owner only; - is standard output"));
  add_flag(app, "--force", options->replace, "Replace the file if it exists");
  add_flag(app, "--mask", options->masked, kMaskHelp);
  add_snapshot(app, options->from);
  add_text(
      app, "--name", options->name, "NAME",
      "The name of the machine on the page; by default the host's name, with --from the file's name, with "
      "--mask no name");
  app.footer(
      "The page needs no network: it can be mailed, printed and kept. Its only script is for the filter "
      "field; the page works without it.");
  app.callback([options] { write_report(*options); });
}

}  // namespace zeldb::cli
