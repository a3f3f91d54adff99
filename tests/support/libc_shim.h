// SPDX-License-Identifier: Apache-2.0
//
// Stands before functions of the C library and of the log whose effect a test wants to see or to choose.
#ifndef TESTS_SUPPORT_LIBC_SHIM_H
#define TESTS_SUPPORT_LIBC_SHIM_H

#include <sys/time.h>

#include <cstddef>
#include <deque>
#include <string>
#include <vector>

namespace zeldb_test {

struct LibcShim {
  std::vector<std::string> syslogs;  // "14 text"; not passed on, and without what the log itself sends there
  std::vector<std::string> logs;     // "info text", "warning text", "error text", as the caller gave it
  std::vector<std::string> debug_logs;  // "debug text"
  std::vector<unsigned> sleeps;         // seconds, not slept
  std::deque<timeval> times;            // what gettimeofday answers, the last for ever; empty: the real time
  std::string tmp{"/nonexistent"};      // takes the place of /tmp for marker files; empty: the real one

  // Creates the marker file /tmp/NAME, in a folder of the test's own.
  void mark(const std::string& name);

  // The nth allocation of at least so many bytes that the shared object asks malloc and its kin for yields
  // null. False where a sanitizer owns these functions.
  static bool fail_allocation(size_t at_least, int nth = 1, const char* object = "libzeldb.so");
  // Forgets the wish of fail_allocation; whether it was fulfilled.
  static bool allocation_failed();

  void reset();

 private:
  bool own_folder_ = false;
};

LibcShim& libc();

}  // namespace zeldb_test

#endif
