// SPDX-License-Identifier: Apache-2.0
#include "cli/library.h"

#include <cstdlib>

#include "cli/command.h"
#ifdef ZELDB_CLI_ADMIN
#include "platform/zel_db_admin.h"
#endif
#include "zeldb/cpumem.h"
#include "zeldb/storage.h"

namespace zeldb::cli {

namespace {

// The fault of the databases in one line; empty if there is none.
std::string what_is_wrong() {
#ifdef ZELDB_CLI_ADMIN
  char line[1024] = "";
  for (const char* database : {"dmdb", "propertiesdb"}) {
    if (zel_db_check(nullptr, database, line, sizeof(line)) != 0) return line;
  }
#endif
  return "";
}

std::string reason(int status) {
  std::string wrong;
  switch (status) {
    case ZELDB_NO_HANDLE:
      wrong = what_is_wrong();
      return !wrong.empty() ? wrong : "the database cannot be reached";
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
      wrong = what_is_wrong();
      return !wrong.empty() ? wrong
                            : "the database answers with status " + std::to_string(status) + " (see the log)";
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
  // The function checks the handle before its argument and does not query the database.
  if (zeldb_get_processor_list(nullptr) == ZELDB_NO_HANDLE) check(ZELDB_NO_HANDLE, what);
}

void require_properties(const std::string& what) {
  uint8_t type = 0;
  check(zeldb_get_mvl_ctrl_type(&type, 0), what);
}

}  // namespace zeldb::cli
