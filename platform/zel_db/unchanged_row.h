// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_UNCHANGED_ROW_H
#define ZEL_DB_UNCHANGED_ROW_H

#include <span>

#include "zel_db/session.h"
#include "zel_db/sql/statements.h"

namespace zel_db {

// Looks before an update of one row whose condition is that a column differs: true if it is certain that the
// update would change nothing. condition holds the values of the update's condition, the id first.
bool row_is_unchanged(Session& session, const StatementKey& update, std::span<const Value> condition);

}  // namespace zel_db

#endif
