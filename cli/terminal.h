// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_TERMINAL_H
#define CLI_TERMINAL_H

#include <cstddef>
#include <string>

namespace zeldb::cli {

// What standard output is.
struct Terminal {
  size_t width = 0;  // 0: lines may be of any width
  bool has_colour = false;
};

Terminal terminal();
// Whether the locale has more than ASCII.
bool prints_utf8();

// Says on standard error what is wrong: one line whatever the text holds, since arguments and files may have
// any bytes.
void complain(const std::string& text);

}  // namespace zeldb::cli

#endif
