// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_APART_H
#define CLI_APART_H

#include <sys/types.h>

#include <functional>
#include <string>

namespace zeldb::cli {

// A process that runs a function and ends. Signals that end this process do not reach it: whoever starts it
// ends it.
struct Apart {
  pid_t child;
  int pipe;  // to read from
};
Apart start_apart(const std::function<void(int to)>& run);
// False when nobody reads any more.
bool send(int to, const std::string& text);

// What make returns, in a process of its own, since the library opens one inventory per process and remembers
// some of it. Throws a Failure with the text of what make throws.
std::string made_apart(const std::function<std::string()>& make);

}  // namespace zeldb::cli

#endif
