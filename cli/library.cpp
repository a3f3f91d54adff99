// SPDX-License-Identifier: Apache-2.0
#include "cli/library.h"

#include <cstdlib>

#include "cli/command.h"
#include "zeldb/cpumem.h"
#include "zeldb/storage.h"

namespace zeldb::cli {

namespace {

std::string reason(int status) {
  switch (status) {
    case ZELDB_NO_HANDLE:
      return "the database cannot be reached";
    case ZELDB_FAILED:
    case ZELDB_NO_MORE_ROWS:
    case ZELDB_NO_MATCH:
      return "not found";
    case ZELDB_INVALID_ARGUMENT:
      return "invalid argument";
    case ZEL_DB_STATUS_NO_MEMORY:
      return "out of memory";
    case ZELDB_PARSE_IN_PROGRESS:
      return "the parser is running, try again later";
    default:
      return "the database answers with status " + std::to_string(status) + " (see the log)";
  }
}

}  // namespace

void check(int status, const std::string& what) {
  if (status != ZELDB_OK) throw Failure(what + ": " + reason(status));
}

bool is_absence(int status) {
  return status == ZELDB_FAILED || status == ZELDB_NO_MORE_ROWS || status == ZELDB_NO_MATCH;
}

bool check_found(int status, const std::string& what) {
  if (is_absence(status)) return false;
  check(status, what);
  return true;
}

void fail_not_found(const std::string& what) {
  check(ZELDB_NO_MATCH, what);
  std::abort();
}

void require_inventory(const std::string& what) {
  // Looks at the handle before it looks at its argument, and asks the database nothing.
  if (zeldb_get_processor_list(nullptr) == ZELDB_NO_HANDLE) check(ZELDB_NO_HANDLE, what);
}

void require_properties(const std::string& what) {
  uint8_t type = 0;
  check(zeldb_get_mvl_ctrl_type(&type, 0), what);
}

}  // namespace zeldb::cli
