// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_ANSWER_H
#define CLI_ANSWER_H

#include <functional>
#include <string>

namespace zeldb::cli {

// For a command whose exit status is an answer. Whatever goes wrong, the loss of what it prints as well, ends
// with the status for that, which is none of the answers. A Failure with status 0 is passed on.
void show_answer(const std::string& command, int trouble, const std::function<void()>& show);

}  // namespace zeldb::cli

#endif
