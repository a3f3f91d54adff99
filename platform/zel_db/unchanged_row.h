// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_UNCHANGED_ROW_H
#define ZEL_DB_UNCHANGED_ROW_H

#include <cstdint>
#include <span>

#include "zel_db/session.h"
#include "zel_db/sql/statements.h"

namespace zel_db {

enum class Look : uint8_t { Unchanged, Unknown, Failed };

// Looks before an update of one row whose condition is that a column differs: Unchanged if it is certain that
// the update would change nothing. condition holds the values of the update's condition, the id first. Not
// for a transaction whose reads do not see what is there now.
Look look_at_row(Session& session, const StatementKey& update, std::span<const Value> condition);

}  // namespace zel_db

#endif
