// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_TERMINAL_H
#define CLI_TERMINAL_H

#include <cstddef>

namespace zeldb::cli {

// What standard output is.
struct Terminal {
  size_t width = 0;  // 0: lines may be of any width
  bool has_colour = false;
};

Terminal terminal();
// Whether the locale has more than ASCII.
bool prints_utf8();

}  // namespace zeldb::cli

#endif
