// SPDX-License-Identifier: Apache-2.0
//
// What has to be undone when a signal ends the process: files to be removed, the echo of a terminal.
#ifndef CLI_AT_SIGNAL_H
#define CLI_AT_SIGNAL_H

#include <csignal>
#include <string>
#include <vector>

namespace zeldb::cli {

// Signals that end the process do so as soon as this goes.
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
  // A class is watched over from the end of its constructor to the beginning of its destructor: a signal may
  // come at any time.
  void watch();
  void unwatch();
  // Runs in a signal handler: calls nothing but what may be called there.
  virtual void undo() const noexcept = 0;

 private:
  static void end(int signal);
  static AtSignal* last_;
  AtSignal* previous_ = nullptr;
};

// Removes files and folders, in this order, when it goes or when a signal ends the process. Those that are
// not there do not matter.
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
