// SPDX-License-Identifier: Apache-2.0
//
// Facts about a statement that the rest of the library needs. They are read from the template once, when the
// statement is prepared, and kept with it.
#ifndef ZEL_DB_SQL_FACTS_H
#define ZEL_DB_SQL_FACTS_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace zel_db {

enum class Verb : uint8_t { Select, Insert, Update, Delete, Replace, With, Values, Other };

// How the rows of a query come in the order of their ids.
enum class RowOrder : uint8_t {
  Fixed,     // they cannot: groups, a limit, a table without ids
  Asked,     // the caller asks for another order, which leaves that of equal rows open
  Open,      // nothing says so: an engine may start with an index, a list of values or a sub-select
  Natural,   // by themselves, but not every engine's planner is bound to it
  Distinct,  // by themselves as long as no index is read instead of the table
};

struct Facts {
  // From the first character to one past the last.
  struct Span {
    size_t begin;
    size_t end;
  };

  Verb verb = Verb::Other;
  bool has_sub_select = false;
  // For each placeholder, whether it is certainly compared with a column of numbers.
  std::vector<bool> meets_number;
  // Numbers that are spelled out and compared with a column of texts.
  std::vector<Span> beside_texts;
  // Of a query, and where the name of its table ends.
  RowOrder order = RowOrder::Fixed;
  size_t table_end = 0;
  // Of an update, whether its condition is "_id=? AND (comparisons of columns with placeholders)".
  bool is_of_one_row = false;
};

Facts facts_of(std::string_view sql);

// Of a template or of a caller's text.
Verb verb_of(std::string_view sql);

// Whether placeholders are allowed wherever such a statement may have a literal.
inline bool takes_placeholders(Verb verb) {
  return verb != Verb::Other;
}

}  // namespace zel_db

#endif
