// SPDX-License-Identifier: Apache-2.0
#include "cli/secret_input.h"

#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "cli/at_signal.h"
#include "cli/command.h"

namespace zeldb::cli {

namespace {

// Turns off the echo of a terminal for its lifetime.
class Unseen final : AtSignal {
 public:
  Unseen() {
    const SignalsBlocked blocked;
    is_terminal_ = tcgetattr(STDIN_FILENO, &before_) == 0;
    watch();
    if (!is_terminal_) return;
    termios quiet = before_;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &quiet);
  }
  Unseen(const Unseen&) = delete;
  Unseen& operator=(const Unseen&) = delete;
  ~Unseen() override {
    const SignalsBlocked blocked;
    unwatch();
    Unseen::undo();
  }

  bool is_terminal() const { return is_terminal_; }

 private:
  void undo() const noexcept override {
    if (is_terminal_) tcsetattr(STDIN_FILENO, TCSANOW, &before_);
  }
  termios before_{};
  bool is_terminal_ = false;
};

}  // namespace

std::string read_value(const std::string& what) {
  const Unseen unseen;
  if (unseen.is_terminal()) std::fprintf(stderr, "Value of %s: ", what.c_str());
  std::string value;
  const bool is_there = static_cast<bool>(std::getline(std::cin, value));
  if (unseen.is_terminal()) std::fputc('\n', stderr);
  if (!is_there) throw Failure(what + ": standard input has no value for it");
  if (value.find('\0') != std::string::npos) throw Failure(what + ": a value has no NUL");
  return value;
}

}  // namespace zeldb::cli
