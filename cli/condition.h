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

// Throws WrongUse for a column in the condition that the table lacks, and for what the database does not
// understand. The columns of the listing supply the name that was meant.
void require_condition(const std::string& condition, const char* table, std::span<const Column> known);

// Calls read; a failure names the part of the condition that caused it.
template <typename Read>
auto read_where(const std::string& condition, const char* table, std::span<const Column> known, Read read) {
  try {
    return read();
  } catch (const Failure&) {
    require_condition(condition, table, known);
    throw;
  }
}

}  // namespace zeldb::cli

#endif
