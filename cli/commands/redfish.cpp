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
           "Where to write the tree, as redfish/v1/.../index.json; it is made if it is missing");
  add_flag(app, "--force", options->replace, "Replace the tree that is there");
  add_flag(app, "--mask", options->masked, kMaskHelp);
  add_text(app, "--from", options->from, "FILE", "Read a file that zeldb export has written");
  add_flag(app, "--document", options->document,
           "Print which property comes from which column, and write nothing");
  set_action(
      app, [options] { run(*options); },
      "Any web server that gives index.json for a folder serves the tree, and so do the DMTF's mockup "
      "servers. Nothing is written when a link of it would lead nowhere.");
}

}  // namespace zeldb::cli
