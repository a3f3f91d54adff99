// SPDX-License-Identifier: Apache-2.0
//
// Each command has a file in commands/, which defines one setup function, and a line in commands.def. The
// rest of the program knows no command by name.
#ifndef CLI_COMMAND_H
#define CLI_COMMAND_H

#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace zeldb::cli {

// Exit statuses of the command.
enum Exit : int { kDone = 0, kFailed = 1, kUsage = 2 };

// Ends the command; the text is "what: why", one line, or empty where the exit status says it all.
struct Failure : std::runtime_error {
  explicit Failure(const std::string& text, int exit_status = kFailed)
      : std::runtime_error(text), status(exit_status) {}
  int status;
};

// Ends the command with exit status 2; the text is "what: why" or "what is wrong".
struct WrongUse : std::runtime_error {
  using std::runtime_error::runtime_error;
};

struct Command {
  const char* name;
  const char* help;
  // Adds the command's options and its callback. The callback writes data to standard output, nothing else,
  // and throws Failure or WrongUse.
  void (*setup)(CLI::App& app);
  const char* group;  // the heading in the help text
};

// In the order of the help text.
std::vector<Command> commands();

#define COMMAND(NAME, WORD, HELP, GROUP) void setup_##NAME(CLI::App& app);
#include "cli/commands.def"
#undef COMMAND

}  // namespace zeldb::cli

#endif
