// SPDX-License-Identifier: Apache-2.0
#include "zel_db/run_once.h"

namespace zel_db {

void run_once(Connection& connection, const std::string& sql, Result* rows) {
  int status = kOk;
  const auto statement = connection.prepare(sql, {}, Use::Once, &status);
  if (statement != nullptr) status = statement->run({}, rows, nullptr);
  if (status != kOk) throw Failure(status, connection.message());
}

TextRows rows_of(Connection& connection, const std::string& select) {
  Result result;
  run_once(connection, select, &result);
  TextRows rows;
  while (result.step() == kRow) {
    std::vector<std::string>& row = rows.emplace_back();
    Result::Scratch scratch;
    std::string_view text;
    for (int i = 0, status = kOk; (status = result.bytes(i, scratch, &text)) != kNoSuchColumn; ++i) {
      row.emplace_back(status == kOk ? text : std::string_view());
    }
  }
  return rows;
}

}  // namespace zel_db
