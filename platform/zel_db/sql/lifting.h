// SPDX-License-Identifier: Apache-2.0
//
// Literal lifting. Callers paste their values into the where text. One pass takes the literals out again and
// binds them, which settles three things at once:
// "..." is a text to the callers and to a server, but to SQLite it is first of all the column of that name: a
// value "Status" or "Rowid" would compare a column with itself, in silence. Backslashes and bytes above 0x7F
// reach the engine as they are, whatever its session thinks of them. And what remains, the template, is the
// same for every row, so that the statement is prepared once.
// It lifts texts, and decimal numbers after =, < or >, signed or not, if they are whole tokens without
// leading zeros. Elsewhere a number may be syntax (GROUP BY 1, LIMIT 5) or part of an expression whose
// meaning would change. Comments are left out: what SQLite takes for one, a server may not (5--1, /*! */).
#ifndef ZEL_DB_SQL_LIFTING_H
#define ZEL_DB_SQL_LIFTING_H

#include <span>
#include <string_view>

#include "platform/zel_db.h"
#include "zel_db/small_vector.h"
#include "zel_db/status.h"
#include "zel_db/value.h"

namespace zel_db {

using Parameters = std::span<const _zel_db_param_t>;

// The values of a statement, in the order of its placeholders. Texts point into the statement that they were
// lifted from; a text with a doubled quote points into unquoted.
struct Values {
  SmallVector<Value, 64> list;
  SmallVector<char, 64> unquoted;

  std::span<const Value> all() const { return {list.begin(), list.size()}; }
  void clear() {
    list.clear();
    unquoted.clear();
  }
};

enum class Literals : uint8_t {
  Lift,
  Keep,  // definitions take no placeholders
};

struct LiftOutcome {
  int status = kOk;
  const char* reason = "";  // of a failure, for the log
  bool ended = false;       // the text ended its statement with ";"
};

using SqlText = SmallVector<char, 1024>;

// Appends the template of text to sql and its values to values. A "?" takes the next of the caller's
// parameters. A trailing ";" is dropped. Call it once for a set of values: unquoted must not grow
// under the values of an earlier text.
LiftOutcome lift_literals(std::string_view text, Parameters parameters, Literals literals, SqlText& sql,
                          Values& values);

// The values for a text that has placeholders alone, as many as there are parameters. False if one is of an
// unknown type.
bool append_parameters(Parameters parameters, Values& values);

}  // namespace zel_db

#endif
