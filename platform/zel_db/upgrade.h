// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_UPGRADE_H
#define ZEL_DB_UPGRADE_H

#include <string>

#include "zel_db/engine.h"

namespace zel_db {

// Brings the tables that a database has to the schema of today; those that it lacks are left to its
// definitions. Columns are added; where an engine cannot add a check to a table, the table is made anew with
// its rows, their ids, the next id, and whatever columns, indexes and triggers others have given it. Throws
// Failure, which names the row, for a text that is longer than its column.
void upgrade_tables(Connection& connection, const std::string& database, const Dialect& dialect);

}  // namespace zel_db

#endif
