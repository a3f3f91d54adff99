// SPDX-License-Identifier: Apache-2.0
//
// Stands before functions of the C library and of the log whose effect a test wants to see or to choose.
#ifndef TESTS_SUPPORT_LIBC_SHIM_H
#define TESTS_SUPPORT_LIBC_SHIM_H

#include <dlfcn.h>
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
  // The nth allocation of the code under test and, if so, all that follow; 0: none. Returns how many there
  // were since the last time.
  static int fail_allocations(int nth, bool and_after = false);

  void reset();

 private:
  bool own_folder_ = false;
};

LibcShim& libc();

// Says whose code runs on this thread while it lives: the code of the test and its shims, or the code under
// test.
class Side {
 public:
  explicit Side(bool under_test);
  Side(const Side&) = delete;
  Side& operator=(const Side&) = delete;
  ~Side();
  // Whether the code before the last Side was the code under test.
  static bool was_under_test();

 private:
  bool before_;
};
auto under_test(auto function) {
  const Side theirs(true);
  return function();
}

// Calls the function that the one of this name hides.
template <typename R, typename... A>
auto next(R (* /*type*/)(A...), void* hidden) {
  return [hidden](A... arguments) {
    const Side theirs(true);
    return reinterpret_cast<R (*)(A...)>(hidden)(arguments...);
  };
}
#define ZELDB_NEXT(name) ::zeldb_test::next(&(name), dlsym(RTLD_NEXT, #name))

}  // namespace zeldb_test

#endif
