// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_APART_H
#define CLI_APART_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

namespace zeldb::cli {

// A process that runs a function and ends. Signals that end this process do not reach it: whoever starts it
// ends it.
struct Apart {
  pid_t child;
  int pipe;  // to read from
};
Apart start_apart(const std::function<void(int to)>& run);
// False when it cannot be written, or nobody reads any more.
bool send(int to, std::string_view text);

// The result of make, or the text of its exception, in a form that made_of understands.
std::string reply_of(const std::function<std::string()>& make);
// The result of make. Throws a Failure with the text of its exception, or if the reply is not whole.
std::string made_of(std::string reply);

// Runs make in a process of its own, because the library opens one inventory per process and remembers some
// of it. Throws as made_of does.
std::string made_apart(const std::function<std::string()>& make);

}  // namespace zeldb::cli

#endif
