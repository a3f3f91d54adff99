// SPDX-License-Identifier: Apache-2.0
//
// SQL conditions from the command line.
#ifndef CLI_CONDITION_H
#define CLI_CONDITION_H

#include <span>
#include <string>

#include "cli/column.h"
#include "cli/command.h"

namespace zeldb::cli {

// Throws WrongUse for a column in the condition that the table lacks. The columns of the listing supply the
// name that was meant.
void require_columns(const std::string& condition, const char* table, std::span<const Column> known);

// Reads what the condition selects; a failure names the column that is to blame for it.
template <typename Read>
auto read_where(const std::string& condition, const char* table, std::span<const Column> known, Read read) {
  try {
    return read();
  } catch (const Failure&) {
    require_columns(condition, table, known);
    throw;
  }
}

}  // namespace zeldb::cli

#endif
