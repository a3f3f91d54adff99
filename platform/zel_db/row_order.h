// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_ROW_ORDER_H
#define ZEL_DB_ROW_ORDER_H

#include <string>
#include <string_view>

namespace zel_db {

struct Dialect;

// The query, put together in scratch so that its rows come in the order of their ids wherever the caller asks
// for no other. Engines would deliver them as an index, a list of values or a sub-select has them, and equal
// ones of an order as they please. table_end: where the table's name ends in sql.
std::string_view in_row_order(std::string_view sql, size_t table_end, const Dialect& dialect,
                              std::string& scratch);

}  // namespace zel_db

#endif
