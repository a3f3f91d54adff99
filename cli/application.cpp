// SPDX-License-Identifier: Apache-2.0
#include "cli/application.h"

#include <CLI/CLI.hpp>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "cli/command.h"
#include "cli/similar.h"
#include "cli/terminal.h"

namespace zeldb::cli {

namespace {

int complain(int status, const std::string& text) {
  cli::complain(text);
  return status;
}

bool is_option(const std::string& word) {
  return word.starts_with("-") && word != "-";
}

// A suggestion for the first option that the command does not know.
std::string suggestion(const CLI::App& command) {
  std::vector<std::string> known;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) known.push_back("--" + name);
  }
  const std::vector<std::string> extra = command.remaining();
  const auto wrong = std::ranges::find_if(extra, is_option);
  return wrong != extra.end() ? did_you_mean(wrong->substr(0, wrong->find('=')), known) : "";
}

// Reports a usage error in one line that names the command; the report of the parser's library has several.
int complain_of_usage(const CLI::App& app, const std::string& error) {
  const auto chosen = app.get_subcommands();
  if (!chosen.empty()) {
    const std::string& name = chosen.front()->get_name();
    return complain(kUsage,
                    name + ": " + error + suggestion(*chosen.front()) + " (try zeldb " + name + " --help)");
  }
  const auto extra = app.remaining();
  const bool is_word = !extra.empty() && !is_option(extra.front());
  std::vector<std::string> names;
  for (const Command& command : commands()) names.emplace_back(command.name);
  const std::string why = is_word ? extra.front() + ": no such command" + did_you_mean(extra.front(), names)
                                  : "usage: " + error + suggestion(app);
  return complain(kUsage, why + " (try zeldb --help)");
}

// Leaves out which options exclude each other, which is said elsewhere.
class Help : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override {
    const std::string type = option->get_type_name();
    const std::string value = option->get_default_str();
    return (type.empty() ? "" : " " + type) + (value.empty() ? "" : " [" + value + "]");
  }
};

// Options that most commands have may also stand before the command.
constexpr struct {
  std::string_view name;
  bool has_value;
} kEarly[] = {{"--from", true}, {"--output", true}, {"--sort", true},  {"--json", false},
              {"--raw", false}, {"--wide", false},  {"--mask", false}, {"--no-headings", false}};

// The words in the order that the parser wants: from the last to the first.
std::vector<std::string> in_order(int argc, char** argv) {
  std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
  auto command = words.begin();
  while (command != words.end()) {
    const size_t length = std::min(command->find('='), command->size());
    const auto* const early = std::ranges::find(kEarly, std::string_view(*command).substr(0, length),
                                                [](const auto& entry) { return entry.name; });
    if (early == std::end(kEarly)) break;
    const bool takes_next = early->has_value && length == command->size();
    command += std::min<std::ptrdiff_t>(takes_next ? 2 : 1, words.end() - command);
  }
  if (command == words.end()) return {};  // no command
  if (!is_option(*command)) std::rotate(words.begin(), command, command + 1);
  std::ranges::reverse(words);
  return words;
}

int parse_and_run(int argc, char** argv) {
  CLI::App app{"Keeps and shows the hardware inventory of a management controller.", "zeldb"};
  app.set_version_flag("--version", "zeldb " ZELDB_VERSION, "Print the version and exit");
  app.require_subcommand(0, 1);
  app.footer("--from and the options of output may also stand before the command.");
  app.formatter(std::make_shared<Help>());
  for (const Command& command : commands()) {
    command.setup(*app.add_subcommand(command.name, command.help)->group(command.group));
  }
  try {
    app.parse(in_order(argc, argv));
    return app.get_subcommands().empty() ? complain(kUsage, "usage: a command is required (try zeldb --help)")
                                         : kDone;
  } catch (const CLI::Success& request) {
    return app.exit(request);  // prints the help text or the version
  } catch (const CLI::ParseError& error) {
    return complain_of_usage(app, error.what());
  } catch (const WrongUse& error) {
    return complain_of_usage(app, error.what());
  }
}

// A reader that has closed the pipe is no failure; any other loss of output is one.
int flush_output() {
  errno = 0;
  const bool flushed = std::fflush(stdout) == 0;
  const int reason = errno;
  if (flushed && std::ferror(stdout) == 0 && std::cout.good()) return kDone;
  pollfd output{.fd = STDOUT_FILENO, .events = POLLOUT, .revents = 0};
  if (poll(&output, 1, 0) == 1 && (output.revents & POLLERR) != 0) return kDone;
  return complain(kFailed,
                  std::string("standard output: ") + (flushed ? "write error" : std::strerror(reason)));
}

}  // namespace

int run(int argc, char** argv) {
  // A failed write is reported; it does not end the process by a signal.
  for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
  std::setlocale(LC_CTYPE, "");  // which characters a table may have; nothing is translated
  int status = kFailed;
  try {
    status = parse_and_run(argc, argv);
  } catch (const Failure& failure) {
    status = *failure.what() != '\0' ? complain(failure.status, failure.what()) : failure.status;
  } catch (const std::exception& error) {
    status = complain(kFailed, std::string("internal error: ") + error.what());
  }
  const int flushed = flush_output();
  return status == kDone ? flushed : status;
}

}  // namespace zeldb::cli
