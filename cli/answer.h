// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_ANSWER_H
#define CLI_ANSWER_H

#include <functional>
#include <string>

namespace zeldb::cli {

// For a command whose exit status is an answer. Any failure, also the loss of its output, gives a status that
// is none of the answers. A Failure with status 0 is passed on.
void show_answer(const std::string& command, int trouble, const std::function<void()>& show);

}  // namespace zeldb::cli

#endif
