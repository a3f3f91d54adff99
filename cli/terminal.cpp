// SPDX-License-Identifier: Apache-2.0
#include "cli/terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "cli/text.h"

namespace zeldb::cli {

namespace {

std::string variable(const char* name) {
  const char* const text = std::getenv(name);
  return text != nullptr ? text : "";
}

// A limit for the width, because memory is needed for each character of a line.
constexpr long kWidest = 4096;

size_t terminal_width() {
  long width = std::strtol(variable("COLUMNS").c_str(), nullptr, 10);
  winsize size = {};
  if (width <= 0 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0) width = size.ws_col;
  return static_cast<size_t>(std::clamp(width, 0L, kWidest));
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

void complain(const std::string& text) {
  const Escape escape = prints_utf8() ? Escape::Terminal : Escape::Ascii;
  std::fprintf(stderr, "zeldb: %s\n", printable(text, escape).c_str());
}

}  // namespace zeldb::cli
