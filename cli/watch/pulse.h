// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_WATCH_PULSE_H
#define CLI_WATCH_PULSE_H

#include <chrono>

#include "cli/apart.h"

namespace zeldb::cli::watch {

// A process that asks the databases whether anything was written, which costs them next to nothing: it
// compares the file of SQLite and its data version, or counters of the server. It is a process of its own
// because the command forks, and connections do not survive a fork.
class Pulse {
 public:
  explicit Pulse(std::chrono::milliseconds every);
  Pulse(const Pulse&) = delete;
  Pulse& operator=(const Pulse&) = delete;
  ~Pulse();

  // Gives one of the letters below at a time.
  int pipe() const { return apart_.pipe; }

  static constexpr char kChanged = 'C';  // something was written, or may have been
  static constexpr char kLost = 'L';  // the databases cannot be reached; kChanged follows when they can again

 private:
  Apart apart_;
};

}  // namespace zeldb::cli::watch

#endif
