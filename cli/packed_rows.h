// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_PACKED_ROWS_H
#define CLI_PACKED_ROWS_H

#include <string>
#include <string_view>
#include <vector>

#include "cli/column.h"

namespace zeldb::cli {

// Rows in the form in which one process passes them to another.
std::string packed(const std::vector<Row>& rows);
// Adds first in front of each row. Throws std::runtime_error for a text of another form.
std::vector<Row> unpacked(std::string_view text, const Row& first = {});

}  // namespace zeldb::cli

#endif
