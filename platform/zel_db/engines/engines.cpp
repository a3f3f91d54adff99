// SPDX-License-Identifier: Apache-2.0
#include "zel_db/engine.h"
#include "zel_db/engines/mariadb/mariadb_engine.h"
#include "zel_db/engines/sqlite/sqlite_engine.h"

namespace zel_db {

const Engine* engine_for(DatabaseUrl::Scheme scheme) {
  return scheme == DatabaseUrl::Scheme::Sqlite ? &sqlite_engine() : &mariadb_engine();
}

}  // namespace zel_db
