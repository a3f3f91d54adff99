// SPDX-License-Identifier: Apache-2.0
#include "call/call.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "config/config.h"
#include "config/file.h"
#include "platform/vrel_log.h"

namespace zel_platform {

void trace_call(const char* function, std::initializer_list<std::string> arguments, int status) {
  const char* path = secure_getenv("ZEL_PLATFORM_TRACE");
  if (path == nullptr || *path == '\0') return;
  std::string line = std::string(function) + "|";
  for (const std::string& argument : arguments) {
    if (line.back() != '|') line += ",";
    line += argument;
  }
  line += "|" + std::to_string(status) + "\n";
  const FileDescriptor file(
      open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK, S_IRUSR | S_IWUSR));
  [[maybe_unused]] const ssize_t written = write(file.get(), line.data(), line.size());
}

void log_failure(const char* function, const std::exception& error) noexcept {
  std::string path;
  try {
    if (dynamic_cast<const ConfigError*>(&error) != nullptr) path = config_path("platform.json");
  } catch (const std::bad_alloc&) {
    path.clear();
  }
  vrel_log::logErr("%s: %s", path.empty() ? function : path.c_str(), error.what());
}

}  // namespace zel_platform
