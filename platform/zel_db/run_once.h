// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_RUN_ONCE_H
#define ZEL_DB_RUN_ONCE_H

#include <stdexcept>
#include <string>
#include <vector>

#include "zel_db/engine.h"

namespace zel_db {

// Ends administrative work: a status, and a line for the operator.
struct Failure : std::runtime_error {
  Failure(int failed, const std::string& line) : std::runtime_error(line), status(failed) {}
  int status;
};

// Runs a statement without values. Throws Failure with the engine's words.
void run_once(Connection& connection, const std::string& sql, Result* rows = nullptr);

// The rows of a select as texts, NULL as an empty one.
using TextRows = std::vector<std::vector<std::string>>;
TextRows rows_of(Connection& connection, const std::string& select);

}  // namespace zel_db

#endif
