// SPDX-License-Identifier: Apache-2.0
#include "platform/vrel_log.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace {

std::string syslogs;

// The lines that the work writes to the log file.
template <class Work>
std::string logged(Work work) {
  const std::string path = testing::TempDir() + "vrel_log_test." + std::to_string(getpid());
  setenv("VREL_LOG", path.c_str(), 1);
  work();
  std::ifstream file(path);
  std::filesystem::remove(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(VrelLog, OneLinePerMessage) {
  const std::string longest(9216, 'x');
  const std::pair<std::string, std::string> cases[] = {{"", ""},
                                                       {"ended\n\r\n", "ended"},
                                                       {"two\nlines\n", "two lines"},
                                                       {"%n", "%n"},
                                                       {longest + "\n", longest},
                                                       {longest + "x\n", longest},
                                                       {std::string(100000, 'x'), longest}};
  for (const auto& [message, line] : cases) {
    errno = EACCES;
    EXPECT_EQ(logged([&text = message] { vrel_log::logErr("%s", text.c_str()); }), "error: " + line + "\n");
    EXPECT_EQ(errno, EACCES);
  }
}

TEST(VrelLog, LevelsAndSinks) {
  const std::pair<const char*, const char*> cases[] = {
      {"loud", "info: x\nwarning: x\nerror: x\n"},
      {"warning", "warning: x\nerror: x\n"},
      {"debug", "debug: x\ninfo: x\nwarning: x\nerror: x\n"}};
  const auto log_all = [] {
    for (auto* log : {vrel_log::logDbg, vrel_log::logInfo, vrel_log::logWarn, vrel_log::logErr})
      log("%s", "x");
  };
  for (const auto& [level, expected] : cases) {
    setenv("VREL_LOG_LEVEL", level, 1);
    EXPECT_EQ(logged(log_all), expected) << level;
  }
  testing::internal::CaptureStderr();
  setenv("VREL_LOG", "stderr", 1);
  vrel_log::logErr("to %s", "stderr");
  EXPECT_EQ(testing::internal::GetCapturedStderr() + syslogs, "error: to stderr\n");

  unsetenv("VREL_LOG");
  log_all();
  setenv("VREL_LOG", "/nonexistent/log", 1);
  vrel_log::logErr("kept %%n\n");
  // Nobody reads the pipe.
  const std::string pipe = testing::TempDir() + "vrel_log_pipe." + std::to_string(getpid());
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  setenv("VREL_LOG", pipe.c_str(), 1);
  vrel_log::logErr("also kept");
  std::filesystem::remove(pipe);
  EXPECT_EQ(syslogs,
            "15 debug: x|14 info: x|12 warning: x|11 error: x|11 error: kept %n|11 error: also kept|");
}

}  // namespace

// Stand before the C library's; which of the two is called depends on the build type.
#define SYSLOG(function, ...)                                                                             \
  extern "C" __attribute__((visibility("default"))) void function(__VA_ARGS__, const char* format, ...) { \
    char text[256];                                                                                       \
    va_list args;                                                                                         \
    va_start(args, format);                                                                               \
    vsnprintf(text, sizeof text, format, args); /* NOLINT(clang-analyzer-valist.Uninitialized) */         \
    va_end(args);                                                                                         \
    syslogs += std::to_string(priority) + " " + text + "|";                                               \
  }
SYSLOG(syslog, int priority)
SYSLOG(__syslog_chk, int priority, int /*flag*/)
