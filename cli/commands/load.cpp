// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>

#include <memory>
#include <string>

#include "cli/command.h"
#include "platform/zel_db_admin.h"

namespace zeldb::cli {

namespace {

struct Options {
  std::vector<std::string> files;
  std::string database = "dmdb";
};

void load(const Options& options) {
  for (const std::string& file : options.files) {
    char error[1024] = {};
    if (zel_db_load(nullptr, options.database.c_str(), file.c_str(), error, sizeof(error)) != 0) {
      throw Failure(error);
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
  app.footer(
      "Files are run in the order given. The first statement that fails ends the command; what ran before it "
      "stays.");
  app.callback([options] { load(*options); });
}

}  // namespace zeldb::cli
