// SPDX-License-Identifier: Apache-2.0
#include "cli/arguments.h"
#include "cli/command.h"
#include "platform/zel_db_admin.h"

namespace zeldb::cli {

namespace {

void create_databases() {
  char error[1024] = {};
  if (zel_db_create(nullptr, error, sizeof(error)) != 0) throw Failure(error);
}

}  // namespace

void setup_init(CLI::App& app) {
  set_action(app, create_databases,
             "The databases are those of ZEL_DB_URL. Existing ones keep their rows; older tables are brought "
             "to the present schema.");
}

}  // namespace zeldb::cli
