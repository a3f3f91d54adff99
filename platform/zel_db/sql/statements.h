// SPDX-License-Identifier: Apache-2.0
//
// From a call's parts to the statement that an engine prepares.
#ifndef ZEL_DB_SQL_STATEMENTS_H
#define ZEL_DB_SQL_STATEMENTS_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "zel_db/small_vector.h"
#include "zel_db/sql/facts.h"
#include "zel_db/value.h"

namespace zel_db {

struct Dialect;

// Identifies a statement in the cache. Its text is put together only when it has to be prepared.
struct StatementKey {
  enum class Form : uint8_t { Text, Query, Insert, Update, Look };

  Form form = Form::Text;
  std::string_view table;
  std::string_view columns;  // of an insert or update, each followed by a comma
  std::string_view text;     // the whole template, or that of the where text
  uint64_t hash = 0;
};

// A caller's own statement.
StatementKey text_key(std::string_view statement);
// A select whose rows come in the order of their ids.
StatementKey query_key(std::string_view statement, uint64_t hash);
StatementKey insert_key(std::string_view table, std::string_view columns);
// All rows where the where text is empty.
StatementKey update_key(std::string_view table, std::string_view columns, std::string_view where);
// A select that tells whether the condition of an update of one row holds: one row with 1 or 0, none if there
// is no row with that id.
StatementKey look_key(const StatementKey& update);
// Its values, of those of the update's condition.
void append_look_values(std::span<const Value> condition, SmallVector<Value, 64>& values);

// A query of all rows; of all columns where none is named.
std::string select_text(std::string_view table, std::span<const char* const> columns);

struct StatementText {
  std::string sql;
  Facts facts;
};
StatementText statement_text(const StatementKey& key, const Dialect& dialect);

}  // namespace zel_db

#endif
