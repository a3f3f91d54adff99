// SPDX-License-Identifier: Apache-2.0
#include "cli/answer.h"

#include <cerrno>
#include <cstdio>

#include "cli/command.h"

namespace zeldb::cli {

void show_answer(const std::string& command, int trouble, const std::function<void()>& show) {
  try {
    show();
  } catch (const Failure& failure) {
    if (failure.status == 0) throw;
    throw Failure(failure.what(), trouble);
  } catch (const WrongUse& wrong) {
    throw Failure(command + ": " + wrong.what() + " (try zeldb " + command + " --help)", trouble);
  } catch (const std::exception& error) {
    throw Failure(command + ": " + error.what(), trouble);
  }
  // The program reports the reason at its end, as for every command.
  const bool is_lost = std::fflush(stdout) != 0 || std::ferror(stdout) != 0;
  if (is_lost && errno != EPIPE) throw Failure("", trouble);
}

}  // namespace zeldb::cli
