// SPDX-License-Identifier: Apache-2.0
#include "cli/report/report.h"

#include <CLI/CLI.hpp>

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
  bool replace = false;
  bool masked = false;
};

void write_report(const Options& options) {
  write_output(options.file, options.replace ? IfExists::Replace : IfExists::Refuse, [&] {
    if (!options.from.empty()) use_snapshot(options.from);
    return as_html(read_report(options.masked));
  });
}

}  // namespace

void setup_report(CLI::App& app) {
  auto options = std::make_shared<Options>();
  require(add_text(app, "FILE", options->file, "",
                   "The page to write, readable for its owner alone; - is standard output"));
  add_flag(app, "--force", options->replace, "Replace the file if it exists");
  add_flag(app, "--mask", options->masked, kMaskHelp);
  add_text(app, "--from", options->from, "FILE", "Read a file that zeldb export has written");
  app.footer("The page needs no network and runs no script: it can be mailed, printed and kept.");
  app.callback([options] { write_report(*options); });
}

}  // namespace zeldb::cli
