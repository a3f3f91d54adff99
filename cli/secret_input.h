// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_SECRET_INPUT_H
#define CLI_SECRET_INPUT_H

#include <string>

namespace zeldb::cli {

// The next line of standard input, without its end. A terminal gets a prompt and shows no echo; what names
// the value in the prompt. Throws Failure at the end of the input.
std::string read_value(const std::string& what);

}  // namespace zeldb::cli

#endif
