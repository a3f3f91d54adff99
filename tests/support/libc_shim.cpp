// SPDX-License-Identifier: Apache-2.0
#undef _FORTIFY_SOURCE  // its inline syslog would stand in the way of the one below
#include "tests/support/libc_shim.h"

#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string_view>
#include <utility>

#include "platform/vrel_log.h"

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
#define ZELDB_SHIM_ALLOCATIONS 1
#else
#define ZELDB_SHIM_ALLOCATIONS 0
#endif

namespace zeldb_test {
namespace {

std::mutex mutex;
thread_local bool inside_log = false;
thread_local bool is_under_test = false;
thread_local bool caller_is_under_test = false;

// The allocations that fail.
struct {
  std::atomic<int> nth = 0;
  std::atomic<int> seen = 0;
  std::atomic<bool> and_after = false;
  std::atomic<bool> under_test = false;
  std::atomic<size_t> at_least = 0;
  std::atomic<const char*> object = nullptr;
} failing;

std::string formatted(const char* format, va_list arguments) {
  char* text = nullptr;
  const int length = vasprintf(&text, format, arguments);
  std::string result(text, static_cast<size_t>(length));
  free(text);
  return result;
}

void add_line(std::vector<std::string>& lines, const std::string& kind, const std::string& text) {
  const std::lock_guard lock(mutex);
  lines.push_back(kind + " " + text);
}

void log_line(std::vector<std::string>& lines, const char* level, const char* symbol,
              const std::string& text) {
  add_line(lines, level, text);
  inside_log = true;
  if (void* next = dlsym(RTLD_NEXT, symbol); next != nullptr) {
    const Side theirs(true);
    reinterpret_cast<decltype(&vrel_log::logErr)>(next)("%s", text.c_str());
  }
  inside_log = false;
}

// Calls with the path where a marker file of the system's temporary folder is to be looked for; other paths
// stay.
template <typename Call>
int with_mapped(const char* path, Call call) {
  constexpr std::array<std::string_view, 4> kMarkers = {"/tmp/slowucm", "/tmp/enable_ucm_parse_log)",
                                                        "/tmp/dp.ucmparsing", "/tmp/.rt_upd_state"};
  const Side ours(false);
  if (libc().tmp.empty() || std::ranges::find(kMarkers, path) == kMarkers.end()) return call(path);
  return call((libc().tmp + std::strrchr(path, '/')).c_str());
}

[[maybe_unused]] bool allocation_fails(size_t size, void* caller) {
  if (failing.nth == 0 || size < failing.at_least || (failing.under_test && !is_under_test)) return false;
  Dl_info where{};
  if (!failing.under_test &&
      (dladdr(caller, &where) == 0 || std::strstr(where.dli_fname, failing.object) == nullptr)) {
    return false;
  }
  const int seen = ++failing.seen;
  return seen == failing.nth || (failing.and_after && seen > failing.nth);
}

}  // namespace

LibcShim& libc() {
  static auto* instance = new LibcShim;
  return *instance;
}

void LibcShim::mark(const std::string& name) {
  if (!own_folder_) {
    tmp = std::filesystem::temp_directory_path() / "zeldb-XXXXXX";
    own_folder_ = mkdtemp(tmp.data()) != nullptr;
  }
  std::ofstream(tmp + "/" + name).flush();
}

bool LibcShim::fail_allocation(size_t at_least, int nth, const char* object) {
  fail_allocations(nth);
  failing.under_test = false;
  failing.at_least = at_least;
  failing.object = object;
  return ZELDB_SHIM_ALLOCATIONS != 0;
}

bool LibcShim::allocation_failed() {
  const int nth = failing.nth.exchange(0);
  return failing.seen >= nth;
}

int LibcShim::fail_allocations(int nth, bool and_after) {
  failing.nth = 0;
  failing.at_least = 0;
  failing.under_test = true;
  failing.and_after = and_after;
  const int seen = failing.seen.exchange(0);
  failing.nth = nth;
  return seen;
}

Side::Side(bool under_test) : before_(std::exchange(is_under_test, under_test)) {
  caller_is_under_test = before_;
}

bool Side::was_under_test() {
  return caller_is_under_test;
}

Side::~Side() {
  is_under_test = before_;
}

void LibcShim::reset() {
  fail_allocations(0);
  if (own_folder_) std::filesystem::remove_all(tmp);
  *this = LibcShim();
}

}  // namespace zeldb_test

using namespace zeldb_test;  // NOLINT(google-build-using-namespace): the functions below are global by nature

#pragma GCC visibility push(default)
#define ZELDB_SHIM_FORMATTED(statement)                  \
  const Side ours(false);                                \
  va_list arguments;                                     \
  va_start(arguments, format);                           \
  const std::string text = formatted(format, arguments); \
  va_end(arguments);                                     \
  statement

#define ZELDB_SHIM_LOG(function, lines, level, symbol)                 \
  void function(const char* format, ...) {                             \
    ZELDB_SHIM_FORMATTED(log_line(libc().lines, level, symbol, text)); \
  }
namespace vrel_log {
ZELDB_SHIM_LOG(logDbg, debug_logs, "debug", "_ZN8vrel_log6logDbgEPKcz")
ZELDB_SHIM_LOG(logInfo, logs, "info", "_ZN8vrel_log7logInfoEPKcz")
ZELDB_SHIM_LOG(logWarn, logs, "warning", "_ZN8vrel_log7logWarnEPKcz")
ZELDB_SHIM_LOG(logErr, logs, "error", "_ZN8vrel_log6logErrEPKcz")
}  // namespace vrel_log

#define ZELDB_SHIM_SYSLOG(function, ...)                                                             \
  void function(__VA_ARGS__, const char* format, ...) {                                              \
    ZELDB_SHIM_FORMATTED(if (!inside_log) add_line(libc().syslogs, std::to_string(priority), text)); \
  }
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the names are the system's own
extern "C" {
ZELDB_SHIM_SYSLOG(syslog, int priority)
ZELDB_SHIM_SYSLOG(__syslog_chk, int priority, int /*flag*/)

unsigned sleep(unsigned seconds) {
  const Side ours(false);
  const std::lock_guard lock(mutex);
  libc().sleeps.push_back(seconds);
  return 0;
}

int gettimeofday(timeval* now, void* zone) noexcept {
  const std::lock_guard lock(mutex);
  auto& times = libc().times;
  if (times.empty()) return ZELDB_NEXT(gettimeofday)(now, zone);
  *now = times.front();
  if (times.size() > 1) times.pop_front();
  return 0;
}

int access(const char* path, int mode) noexcept {
  return with_mapped(path, [=](const char* at) { return ZELDB_NEXT(access)(at, mode); });
}

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): va_start of this function is not understood.
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return with_mapped(path, [=](const char* at) {
    return reinterpret_cast<decltype(&::open)>(dlsym(RTLD_NEXT, "open"))(at, flags, mode);
  });
}

// A fortified program calls this instead.
int __open_2(const char* path, int flags) {
  return open(path, flags, 0);
}
int __open64_2(const char* path, int flags) {
  return open(path, flags, 0);
}

#if ZELDB_SHIM_ALLOCATIONS
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* memory, size_t size);

void* malloc(size_t size) noexcept {
  return allocation_fails(size, __builtin_return_address(0)) ? nullptr : __libc_malloc(size);
}

void* calloc(size_t count, size_t size) noexcept {
  return allocation_fails(count * size, __builtin_return_address(0)) ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* memory, size_t size) noexcept {
  return allocation_fails(size, __builtin_return_address(0)) ? nullptr : __libc_realloc(memory, size);
}
#endif

}  // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
#pragma GCC visibility pop
