// SPDX-License-Identifier: Apache-2.0
//
// What a command is. Each stands in a file of its own in commands/, defines one setup function, and is listed
// in commands.cpp; the rest of the program knows no command by name.
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
  const char* group;  // under which the help text lists it
};

// In the order of the help text.
std::vector<Command> commands();

void setup_init(CLI::App& app);
void setup_load(CLI::App& app);
void setup_export(CLI::App& app);

void setup_slots(CLI::App& app);
void setup_processors(CLI::App& app);
void setup_memory(CLI::App& app);
void setup_functions(CLI::App& app);
void setup_adapters(CLI::App& app);
void setup_ports(CLI::App& app);
void setup_gpus(CLI::App& app);
void setup_vpd(CLI::App& app);
void setup_cards(CLI::App& app);
void setup_firmware(CLI::App& app);
void setup_embedded(CLI::App& app);
void setup_disks(CLI::App& app);
void setup_backplanes(CLI::App& app);
void setup_platform(CLI::App& app);
void setup_baseline(CLI::App& app);
void setup_diff(CLI::App& app);
void setup_report(CLI::App& app);
void setup_settings(CLI::App& app);
void setup_pending(CLI::App& app);
void setup_dpu_log(CLI::App& app);
void setup_retimer(CLI::App& app);
void setup_decode_vpd(CLI::App& app);
void setup_columns(CLI::App& app);
void setup_schema(CLI::App& app);

}  // namespace zeldb::cli

#endif
