// SPDX-License-Identifier: Apache-2.0
#include <memory>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/file.h"
#include "cli/parts.h"
#include "cli/snapshot.h"

namespace zeldb::cli {

namespace {

struct Options {
  std::string file;
  std::string from;
  bool replace = false;
};

void write_baseline(const Options& options) {
  write_output(options.file, options.replace ? IfExists::Replace : IfExists::Refuse, [&] {
    if (!options.from.empty()) use_snapshot(options.from);
    return as_baseline(read_parts());
  });
}

}  // namespace

void setup_baseline(CLI::App& app) {
  auto options = std::make_shared<Options>();
  require(add_text(app, "FILE", options->file, "",
                   "The file to write, readable by its owner only; - is standard output"));
  add_flag(app, "--force", options->replace, "Replace the file if it exists");
  add_snapshot(app, options->from);
  set_action(
      app, [options] { write_baseline(*options); },
      "zeldb diff FILE shows how these parts have changed since.");
}

}  // namespace zeldb::cli
