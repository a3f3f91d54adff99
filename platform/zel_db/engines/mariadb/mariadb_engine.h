// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_MARIADB_ENGINE_H
#define ZEL_DB_MARIADB_ENGINE_H

#include "zel_db/engine.h"

namespace zel_db {

const Engine& mariadb_engine();

}  // namespace zel_db

#endif
