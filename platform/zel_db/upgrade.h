// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_UPGRADE_H
#define ZEL_DB_UPGRADE_H

#include <string>

#include "zel_db/engine.h"

namespace zel_db {

// Brings the existing tables of a database to today's schema; definitions() creates missing ones afterwards.
// Missing columns are added. If an engine cannot add a check to a table, the table is rebuilt: it keeps its
// rows, their ids, the next id, and the columns, indexes and triggers that others have added. A text that is
// longer than its column is a Failure that names its row.
void upgrade_tables(Connection& connection, const std::string& database, const Dialect& dialect);

}  // namespace zel_db

#endif
