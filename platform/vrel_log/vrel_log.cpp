// SPDX-License-Identifier: Apache-2.0
#include "platform/vrel_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

namespace {

// A change filter of the settings table has 8 KB and is logged as it is.
constexpr size_t kLongestMessage = 9216;

struct Level {
  std::string_view name;
  int priority;
};
constexpr Level kDebug{"debug", LOG_DEBUG};
constexpr Level kInfo{"info", LOG_INFO};
constexpr Level kWarning{"warning", LOG_WARNING};
constexpr Level kError{"error", LOG_ERR};

// The environment is looked at for each message: a library is not told when its process changes it.
int lowest_priority() {
  const char* wanted = secure_getenv("VREL_LOG_LEVEL");
  for (const Level& level : {kDebug, kInfo, kWarning, kError}) {
    if (wanted != nullptr && level.name == wanted) return level.priority;
  }
  return kInfo.priority;
}

bool write_once(int fd, std::string_view line) {
  ssize_t written = 0;
  do {
    written = write(fd, line.data(), line.size());
  } while (written < 0 && errno == EINTR);
  return written >= 0;
}

bool append_to_file(const char* path, std::string_view line) {
  // A pipe in the file's place must not keep the process waiting for its reader.
  const int fd =
      open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, S_IRUSR | S_IWUSR);
  if (fd < 0) return false;
  const bool written = write_once(fd, line);
  close(fd);
  return written;
}

// A message that its own sink refuses still reaches syslog.
void emit(int priority, std::string_view line) {
  const char* sink = secure_getenv("VREL_LOG");
  if (sink != nullptr && std::strcmp(sink, "stderr") == 0) {
    if (write_once(STDERR_FILENO, line)) return;
  } else if (sink != nullptr && *sink != '\0') {
    if (append_to_file(sink, line)) return;
  }
  syslog(LOG_USER | priority, "%.*s", static_cast<int>(line.size() - 1), line.data());
}

__attribute__((format(printf, 2, 0))) void log(const Level& level, const char* format, va_list args) {
  if (level.priority > lowest_priority()) return;
  const int caller_errno = errno;

  char line[sizeof "warning: " + kLongestMessage + 1];
  char* text = std::copy(level.name.begin(), level.name.end(), line);
  *text++ = ':';
  *text++ = ' ';
  const int wanted = vsnprintf(text, kLongestMessage + 1, format, args);
  char* end = text + std::min(static_cast<size_t>(std::max(wanted, 0)), kLongestMessage);

  const auto breaks_line = [](char c) { return c == '\n' || c == '\r'; };
  while (end != text && breaks_line(end[-1])) --end;
  std::replace_if(text, end, breaks_line, ' ');
  *end++ = '\n';
  emit(level.priority, {line, static_cast<size_t>(end - line)});
  errno = caller_errno;
}

}  // namespace

namespace vrel_log {

#define VREL_LOG_DEFINE(function, level)                                  \
  [[gnu::visibility("default")]] void function(const char* format, ...) { \
    va_list args;                                                         \
    va_start(args, format);                                               \
    log(level, format, args);                                             \
    va_end(args);                                                         \
  }
VREL_LOG_DEFINE(logDbg, kDebug)
VREL_LOG_DEFINE(logInfo, kInfo)
VREL_LOG_DEFINE(logWarn, kWarning)
VREL_LOG_DEFINE(logErr, kError)
#undef VREL_LOG_DEFINE

}  // namespace vrel_log
