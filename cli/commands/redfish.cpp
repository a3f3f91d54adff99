// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/redfish/resource.h"
#include "cli/snapshot.h"

namespace zeldb::cli {

namespace {

struct Options {
  std::string folder;
  std::string from;
  bool replace = false;
  bool masked = false;
  bool document = false;
};

void run(const Options& options) {
  if (options.document) {
    std::fputs(redfish::document().c_str(), stdout);
    return;
  }
  if (options.folder.empty()) throw WrongUse("FOLDER is required");
  if (!options.from.empty()) use_snapshot(options.from);
  Mask mask;
  const redfish::Machine machine = redfish::read_machine(options.masked ? &mask : nullptr);
  redfish::tree_of(machine).write(options.folder, options.replace);
}

}  // namespace

void setup_redfish(CLI::App& app) {
  auto options = std::make_shared<Options>();
  add_text(app, "FOLDER", options->folder, "",
           "The folder to write the tree to, as redfish/v1/.../index.json; it is created if it is missing");
  add_flag(app, "--force", options->replace, "Replace the tree if it exists");
  add_flag(app, "--mask", options->masked, kMaskHelp);
  add_snapshot(app, options->from);
  add_flag(app, "--document", options->document,
           "Print the column of each property, without writing the tree");
  set_action(
      app, [options] { run(*options); },
      "Any web server that returns index.json for a folder can serve the tree, as can the DMTF's mockup "
      "servers. Nothing is written if a link has no target.");
}

}  // namespace zeldb::cli
