// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_PACKED_ROWS_H
#define CLI_PACKED_ROWS_H

#include <string>
#include <string_view>
#include <vector>

#include "cli/column.h"

namespace zeldb::cli {

// Rows as one process hands them to another.
std::string packed(const std::vector<Row>& rows);
// With one more value in front of each. Throws std::runtime_error for a text that is no such rows.
std::vector<Row> unpacked(std::string_view text, const Value& first);

}  // namespace zeldb::cli

#endif
