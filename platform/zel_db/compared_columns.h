// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_COMPARED_COLUMNS_H
#define ZEL_DB_COMPARED_COLUMNS_H

#include <string_view>
#include <vector>

namespace zel_db {

// For each placeholder of a statement, whether it is surely a column of numbers that it is compared with.
std::vector<bool> compares_numbers(std::string_view sql);

}  // namespace zel_db

#endif
