// SPDX-License-Identifier: Apache-2.0
#include "cli/terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace zeldb::cli {

namespace {

std::string variable(const char* name) {
  const char* const text = std::getenv(name);
  return text != nullptr ? text : "";
}

size_t terminal_width() {
  const long asked_for = std::strtol(variable("COLUMNS").c_str(), nullptr, 10);
  if (asked_for > 0) return static_cast<size_t>(asked_for);
  winsize size = {};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

}  // namespace

Terminal terminal() {
  if (isatty(STDOUT_FILENO) == 0) return {};
  return {.width = terminal_width(),
          .has_colour = variable("NO_COLOR").empty() && variable("TERM") != "dumb"};
}

bool prints_utf8() {
  return std::string(nl_langinfo(CODESET)) == "UTF-8";
}

}  // namespace zeldb::cli
