// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_TERMINAL_H
#define CLI_TERMINAL_H

#include <cstddef>
#include <string>

namespace zeldb::cli {

// Properties of standard output.
struct Terminal {
  size_t width = 0;  // 0: lines may be of any width
  bool has_colour = false;
};

Terminal terminal();
// Whether the locale has more than ASCII.
bool prints_utf8();

// Writes a message to standard error, as one line whatever bytes the text holds.
void complain(const std::string& text);

}  // namespace zeldb::cli

#endif
