// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_STATEMENTS_H
#define ZEL_DB_STATEMENTS_H

#include <string>

#include "zel_db/engine.h"
#include "zel_db/statement_cache.h"

namespace zel_db {

StatementKey text_key(std::string_view statement);
StatementKey insert_key(std::string_view table, std::string_view columns);
// where is the template of the where text, empty for all rows.
StatementKey update_key(std::string_view table, std::string_view columns, std::string_view where);

// The text of the statement, in scratch when it has to be put together.
std::string_view statement_text(const StatementKey& key, const Dialect& dialect, std::string& scratch);

}  // namespace zel_db

#endif
