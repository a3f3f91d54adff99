// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>

#include "cli/apart.h"
#include "cli/arguments.h"
#include "cli/at_signal.h"
#include "cli/command.h"
#include "cli/library.h"
#include "cli/terminal.h"
#include "cli/watch/changes.h"
#include "cli/watch/pulse.h"

namespace zeldb::cli {

namespace {

struct Options {
  Number every;
  std::string command;
  bool as_json = false;
  bool masked = false;
};

std::string now() {
  char text[32] = "";
  const std::time_t time = std::time(nullptr);
  std::tm utc{};
  gmtime_r(&time, &utc);
  std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%SZ", &utc);
  return text;
}

// The signals that end the watch, as a file to wait for.
class Signals {
 public:
  Signals() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) sigaddset(&ending, signal);
    file_ = signalfd(-1, &ending, SFD_CLOEXEC);
    if (file_ < 0) throw Failure("watch: no signals can be waited for");
  }
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;
  ~Signals() { close(file_); }
  int file() const { return file_; }
  // Reads the signal, which then no longer ends the process.
  void take() const {
    signalfd_siginfo signal{};
    if (::read(file_, &signal, sizeof(signal)) < 0) throw Failure("watch: signal lost");
  }

 private:
  SignalsBlocked blocked_;
  int file_ = -1;
};

// Runs a command of the shell with a line as its input, and waits for it.
void run_command(const std::string& command, const std::string& line) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw Failure("watch: no pipe to " + command);
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_DFL);
    dup2(ends[0], STDIN_FILENO);
    execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    _exit(127);
  }
  close(ends[0]);
  if (child > 0) send(ends[1], line);  // which it need not read
  close(ends[1]);
  int status = -1;
  while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  if (status != 0) complain("watch: " + command + ": has failed");
}

class Watcher {
 public:
  explicit Watcher(const Options& options) : options_(options), state_(read()) {}

  void run() {
    const watch::Pulse pulse(std::chrono::seconds(options_.every.value_or(1)));
    while (true) {
      pollfd files[] = {{signals_.file(), POLLIN, 0}, {pulse.pipe(), POLLIN, 0}};
      const int found = poll(files, std::size(files), needs_retry_ ? 1000 : -1);
      if (files[0].revents != 0) return signals_.take();
      if (found > 0 && files[1].revents != 0 && !hear(pulse)) throw Failure("watch: nobody looks any more");
      if (found == 0) look();
      if (std::ferror(stdout) != 0) return;  // told at the end of the program
    }
  }

 private:
  watch::State read() { return watch::read_state(options_.masked ? &mask_ : nullptr); }

  bool hear(const watch::Pulse& pulse) {
    char letters[64];
    const ssize_t size = ::read(pulse.pipe(), letters, sizeof(letters));
    if (size <= 0) return false;
    if (letters[size - 1] == watch::Pulse::kLost)
      trouble("the databases cannot be reached, waiting for them");
    else
      look();
    return true;
  }

  void look() {
    needs_retry_ = false;
    try {
      watch::State now_there = read();
      for (const watch::Change& change : watch::changes(state_, now_there)) tell(change);
      state_ = std::move(now_there);
      trouble_.clear();
    } catch (const Failure& failure) {
      needs_retry_ = true;
      trouble(failure.what());
    }
  }

  void tell(const watch::Change& change) const {
    const std::string time = now();
    const std::string json = as_json_line(change, time);
    std::fputs(options_.as_json ? json.c_str() : as_line(change, time).c_str(), stdout);
    std::fflush(stdout);
    if (!options_.command.empty()) run_command(options_.command, json);
  }

  // Reports the trouble once, however long it lasts.
  void trouble(const std::string& why) {
    if (why != trouble_) complain("watch: " + why);
    trouble_ = why;
  }

  const Signals signals_;
  const Options& options_;
  Mask mask_;
  watch::State state_;
  std::string trouble_;
  bool needs_retry_ = false;
};

void watch_inventory(const Options& options) {
  if (options.every == 0) throw WrongUse("--every: is at least 1");
  made_apart([] {
    require_inventory("watch");
    return std::string();
  });
  Watcher(options).run();
}

}  // namespace

void setup_watch(CLI::App& app) {
  auto options = std::make_shared<Options>();
  add_number(app, "--every", options->every, "SECONDS", "Time between two looks for changes [1]");
  add_text(app, "--exec", options->command, "COMMAND",
           "A command of the shell to run for each change, with the change as a line of JSON on its standard "
           "input");
  add_flag(app, "--json", options->as_json, "A JSON object a line");
  add_flag(app, "--mask", options->masked, kMaskHelp);
  set_action(
      app, [options] { watch_inventory(*options); },
      "Prints a line for each row that was added to, removed from or changed in the listings slots, "
      "processors, memory, ports, gpus, disks, backplanes, firmware, embedded and pending. Temperatures and "
      "the load of ports are left out. The tables are read only after a write, which the version of a SQLite "
      "file or the counters of a server show. A SQLite file that is replaced is noticed, too. A JSON object "
      "has time, change, listing, place and, for a change, columns: {\"KEY\": {\"was\": ..., \"is\": ...}}. "
      "If "
      "a server goes away, the command reports that on standard error and waits for it. SIGTERM, SIGINT, "
      "SIGQUIT and SIGHUP end the watch with exit status 0.");
}

}  // namespace zeldb::cli
