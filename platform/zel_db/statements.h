// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_STATEMENTS_H
#define ZEL_DB_STATEMENTS_H

#include <string>

#include "zel_db/engine.h"
#include "zel_db/statement_cache.h"

namespace zel_db {

StatementKey text_key(std::string_view statement);
// table_end: where the name of its table ends.
StatementKey query_key(std::string_view statement, size_t table_end);
StatementKey insert_key(std::string_view table, std::string_view columns);
// Whether the row with an id matches a condition: a row with 1, or with 0, or none. The id is the last of its
// values.
StatementKey question_key(std::string_view table, std::string_view where);
// Whether the where text can be asked so: "_id=? AND (condition)", where the id comes first.
bool can_be_asked(std::string_view table, std::string_view where);
// The update of the rows that the question is about; all rows where its text is empty.
StatementKey update_key(const StatementKey& question, std::string_view columns);

// The text of the statement, in scratch when it has to be put together.
std::string_view statement_text(const StatementKey& key, const Dialect& dialect, std::string& scratch);

}  // namespace zel_db

#endif
