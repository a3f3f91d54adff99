// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string>

#include "cli/command.h"
#include "platform/zel_db_admin.h"

namespace zeldb::cli {

namespace {

struct Options {
  std::vector<std::string> files;
  std::string database = "dmdb";
  bool replaces = false;
};

// A part of the message of both engines.
bool is_there_already(const std::string& error) {
  return error.find("UNIQUE constraint failed") != std::string::npos ||
         error.find("Duplicate entry") != std::string::npos;
}

void load(const Options& options) {
  if (options.replaces) {
    // Checked first: a mistyped name must not cost the rows.
    for (const std::string& file : options.files) {
      if (access(file.c_str(), R_OK) != 0) throw Failure("cannot read " + file + ": " + std::strerror(errno));
    }
    char error[1024] = {};
    if (zel_db_clear(nullptr, options.database.c_str(), error, sizeof(error)) != 0) throw Failure(error);
  }
  for (const std::string& file : options.files) {
    char error[1024] = {};
    if (zel_db_load(nullptr, options.database.c_str(), file.c_str(), error, sizeof(error)) != 0) {
      const std::string why = error;
      throw Failure(is_there_already(why)
                        ? why + " (this row is in the database already; --replace takes all rows out first)"
                        : why);
    }
  }
}

}  // namespace

void setup_load(CLI::App& app) {
  auto options = std::make_shared<Options>();
  app.add_option("FILE", options->files, "SQL statements, each ended by a semicolon")
      ->type_name("")
      ->required();
  app.add_option("--database", options->database, "The database to run them in")
      ->check(CLI::IsMember({"dmdb", "propertiesdb"}))
      ->capture_default_str();
  app.add_flag("--replace", options->replaces, "Delete all rows of the database first");
  app.footer(
      "Files are run in the order given. The first statement that fails ends the command; earlier "
      "statements keep their effect.");
  app.callback([options] { load(*options); });
}

}  // namespace zeldb::cli
