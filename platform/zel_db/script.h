// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_SCRIPT_H
#define ZEL_DB_SCRIPT_H

#include <string_view>
#include <vector>

namespace zel_db {

// The statements of a script, split at ";" outside quotes and comments, without what is blank or comment
// before them. Nothing else is no statement; behind a quote or comment that is not closed all is one.
std::vector<std::string_view> split_statements(std::string_view script);

}  // namespace zel_db

#endif
