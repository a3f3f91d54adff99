// SPDX-License-Identifier: Apache-2.0
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
  bool masked = false;
  bool replace = false;
};

void write_export(const Options& options) {
  NewFile file(options.file, options.replace ? IfExists::Replace : IfExists::Refuse);
  if (!options.from.empty()) use_snapshot(options.from);
  write_snapshot(file.temporary_path(), options.file, options.masked);
  file.commit();
}

}  // namespace

void setup_export(CLI::App& app) {
  auto options = std::make_shared<Options>();
  require(add_text(app, "FILE", options->file, "", "The file to write, readable by its owner only"));
  add_flag(app, "--mask", options->masked, kMaskHelp);
  add_flag(app, "--force", options->replace, "Replace the file if it exists");
  add_snapshot(app, options->from);
  set_action(
      app, [options] { write_export(*options); },
      "The file holds both databases and the files of the platform folder (ZEL_PLATFORM_DIR), in one "
      "SQLite database. Every other command reads it with --from. It never contains secrets among the "
      "settings (see zeldb pending --help). Look at it before you give it away: --mask keeps the "
      "columns that zeldb columns --unmasked lists, and in messages of firmware it replaces only "
      "addresses and values that stand in other columns.");
}

}  // namespace zeldb::cli
