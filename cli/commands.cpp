// SPDX-License-Identifier: Apache-2.0
#include "cli/command.h"

namespace zeldb::cli {

std::vector<Command> commands() {
  return {
// A controller's own table-access library neither creates nor fills its databases.
#ifdef ZELDB_CLI_ADMIN
      {"init", "Create the databases and the tables that are missing in them", setup_init},
      {"load", "Run files of SQL statements in one of the databases", setup_load},
#endif
  };
}

}  // namespace zeldb::cli
