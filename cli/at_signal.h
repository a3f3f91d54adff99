// SPDX-License-Identifier: Apache-2.0
//
// Undoes changes when a signal ends the process: removes files, turns the echo of a terminal on again.
#ifndef CLI_AT_SIGNAL_H
#define CLI_AT_SIGNAL_H

#include <csignal>
#include <string>
#include <vector>

namespace zeldb::cli {

// Delays signals that end the process until its destructor.
class SignalsBlocked {
 public:
  SignalsBlocked();
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked();

 private:
  sigset_t before_;
};

class AtSignal {
 public:
  AtSignal(const AtSignal&) = delete;
  AtSignal& operator=(const AtSignal&) = delete;
  virtual ~AtSignal() = default;

 protected:
  AtSignal() = default;
  // Called at the end of the constructor and at the beginning of the destructor, because a signal may come at
  // any time.
  void watch();
  void unwatch();
  // Runs in a signal handler and calls only async-signal-safe functions.
  virtual void undo() const noexcept = 0;

 private:
  static void end(int signal);
  static AtSignal* last_;
  AtSignal* previous_ = nullptr;
};

// Removes files and folders, in this order, in its destructor or when a signal ends the process. Missing ones
// are ignored.
class Removal final : AtSignal {
 public:
  explicit Removal(std::vector<std::string> paths) : paths_(std::move(paths)) { watch(); }
  Removal(const Removal&) = delete;
  Removal& operator=(const Removal&) = delete;
  ~Removal() override {
    const SignalsBlocked blocked;
    unwatch();
    Removal::undo();
  }

 private:
  void undo() const noexcept override;
  std::vector<std::string> paths_;
};

}  // namespace zeldb::cli

#endif
