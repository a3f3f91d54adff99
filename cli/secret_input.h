// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_SECRET_INPUT_H
#define CLI_SECRET_INPUT_H

#include <string>

namespace zeldb::cli {

// The next line of standard input, without its end; a terminal is asked, and does not show what is typed.
// what is what the value is for. Throws Failure at the end of the input.
std::string read_value(const std::string& what);

}  // namespace zeldb::cli

#endif
