// SPDX-License-Identifier: Apache-2.0
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
  app.footer("The databases are those of ZEL_DB_URL. What exists already stays as it is.");
  app.callback(create_databases);
}

}  // namespace zeldb::cli
