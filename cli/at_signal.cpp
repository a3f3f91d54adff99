// SPDX-License-Identifier: Apache-2.0
#include "cli/at_signal.h"

#include <unistd.h>

namespace zeldb::cli {

namespace {

constexpr int kEnding[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

}  // namespace

SignalsBlocked::SignalsBlocked() {
  sigset_t ending;
  sigemptyset(&ending);
  for (const int signal : kEnding) sigaddset(&ending, signal);
  sigprocmask(SIG_BLOCK, &ending, &before_);
}

SignalsBlocked::~SignalsBlocked() {
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

AtSignal* AtSignal::last_ = nullptr;

void AtSignal::watch() {
  const SignalsBlocked blocked;
  // A signal that the caller ignores, as nohup does, stays ignored.
  for (const int signal : kEnding) {
    if (std::signal(signal, end) == SIG_IGN) std::signal(signal, SIG_IGN);
  }
  previous_ = last_;
  last_ = this;
}

// They may be destroyed in any order.
void AtSignal::unwatch() {
  const SignalsBlocked blocked;
  AtSignal** place = &last_;
  while (*place != this) place = &(*place)->previous_;
  *place = previous_;
}

void AtSignal::end(int signal) {
  for (const AtSignal* each = last_; each != nullptr; each = each->previous_) each->undo();
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

void Removal::undo() const noexcept {
  for (const std::string& path : paths_) {
    if (unlink(path.c_str()) != 0) rmdir(path.c_str());
  }
}

}  // namespace zeldb::cli
