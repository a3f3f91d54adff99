// SPDX-License-Identifier: Apache-2.0
#include "cli/command.h"

namespace zeldb::cli {

std::vector<Command> commands() {
  return {
#define COMMAND(NAME, WORD, HELP, GROUP) {WORD, HELP, setup_##NAME, GROUP},
#include "cli/commands.def"
#undef COMMAND
  };
}

}  // namespace zeldb::cli
