// SPDX-License-Identifier: Apache-2.0
//
// What a command is. Each stands in a file of its own in commands/, defines one setup function, and is listed
// in commands.cpp; the rest of the program knows no command by name.
#ifndef CLI_COMMAND_H
#define CLI_COMMAND_H

#include <CLI/CLI.hpp>

#include <stdexcept>
#include <vector>

namespace zeldb::cli {

// Ends the command with exit status 1; the text is "what: why", one line.
struct Failure : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Command {
  const char* name;
  const char* help;
  // Adds the command's options and its callback. The callback writes data to standard output, nothing else,
  // and throws Failure.
  void (*setup)(CLI::App& app);
};

// In the order of the help text.
std::vector<Command> commands();

void setup_init(CLI::App& app);
void setup_load(CLI::App& app);

}  // namespace zeldb::cli

#endif
