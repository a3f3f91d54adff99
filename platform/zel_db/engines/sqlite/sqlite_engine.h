// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_SQLITE_ENGINE_H
#define ZEL_DB_SQLITE_ENGINE_H

#include "zel_db/engine.h"

namespace zel_db {

const Engine& sqlite_engine();

}  // namespace zel_db

#endif
