// SPDX-License-Identifier: Apache-2.0
#include "cli/application.h"

#include <CLI/CLI.hpp>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <string>

#include "cli/command.h"

namespace zeldb::cli {

namespace {

int complain(int status, const std::string& text) {
  std::fprintf(stderr, "zeldb: %s\n", text.c_str());
  return status;
}

// One line, unlike the library's own report, and with the command that it is about.
int complain_of_usage(const CLI::App& app, const std::string& error) {
  const auto chosen = app.get_subcommands();
  if (!chosen.empty()) {
    const std::string& name = chosen.front()->get_name();
    return complain(kUsage, name + ": " + error + " (try zeldb " + name + " --help)");
  }
  const auto extra = app.remaining();
  const bool is_word = !extra.empty() && extra.front().rfind('-', 0) != 0;
  const std::string why = is_word ? extra.front() + ": no such command" : "usage: " + error;
  return complain(kUsage, why + " (try zeldb --help)");
}

// Without what is said elsewhere: which options exclude each other.
class Help : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override {
    const std::string type = option->get_type_name();
    const std::string value = option->get_default_str();
    return (type.empty() ? "" : " " + type) + (value.empty() ? "" : " [" + value + "]");
  }
};

int parse_and_run(int argc, char** argv) {
  CLI::App app{"Keeps and shows the hardware inventory of a management controller.", "zeldb"};
  app.set_version_flag("--version", "zeldb " ZELDB_VERSION, "Print the version and exit");
  app.require_subcommand(0, 1);
  app.formatter(std::make_shared<Help>());
  for (const Command& command : commands()) {
    command.setup(*app.add_subcommand(command.name, command.help)->group(command.group));
  }
  try {
    app.parse(argc, argv);
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

// A reader that went away has had enough; any other loss of output is a failure.
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
  // A write that fails for these reasons is told like any other.
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
