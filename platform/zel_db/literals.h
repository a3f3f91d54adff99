// SPDX-License-Identifier: Apache-2.0
//
// Literal lifting. Callers paste their values into the where text. One scan takes the literals out again and
// binds them, which settles three things at once:
// "..." is a text to the callers and to a server, but to SQLite it is first of all the column of that name: a
// value "Status" or "Rowid" would compare a column with itself, in silence. Backslashes and bytes above 0x7F
// reach the engine as they are, whatever its session thinks of them. And what remains, the template, is the
// same for every row, so that the statement is prepared once.
// Lifted are quoted texts, and decimal numbers, also negative ones, that follow =, < or > and are a token of
// their own; elsewhere a number may be syntax (GROUP BY 1, LIMIT 5) or part of an expression whose meaning
// would change.
#ifndef ZEL_DB_LITERALS_H
#define ZEL_DB_LITERALS_H

#include <span>
#include <string_view>

#include "platform/zel_db.h"
#include "zel_db/small_vector.h"
#include "zel_db/status.h"
#include "zel_db/value.h"

namespace zel_db {

using Parameters = std::span<const _zel_db_param_t>;

// The values of a statement, in the order of its placeholders. They point into the scanned text, those with a
// doubled quote into unquoted.
struct Values {
  SmallVector<Value, 64> list;
  SmallVector<char, 64> unquoted;

  std::span<const Value> all() const { return {list.begin(), list.size()}; }
  void clear() {
    list.clear();
    unquoted.clear();
  }
};

struct LiftOutcome {
  int status = kOk;
  const char* reason = "";  // of a failure, for the log
  bool ended = false;       // the text ended its statement with ";"
};

using SqlText = SmallVector<char, 1024>;

// Appends the template of text to sql and its values to values. A "?" takes the next of the caller's
// parameters. Of a trailing ";" nothing remains. With lift false literals stay as they are: definitions take
// no placeholders. One text per set of values: unquoted must not grow under the values of an earlier one.
LiftOutcome lift_literals(std::string_view text, Parameters parameters, bool lift, SqlText& sql,
                          Values& values);

// Whether placeholders are allowed wherever this statement may have a literal.
bool takes_placeholders(std::string_view statement);

}  // namespace zel_db

#endif
