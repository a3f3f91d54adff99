// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_STATUS_H
#define ZEL_DB_STATUS_H

namespace zel_db {

// 1, 6, 11 and 30 to 33 mean something to the callers above and are never used here.
enum Status : int {
  kOk = 0,
  kSqlError = 2,
  kInvalidArgument = 3,
  kNoMemory = 4,
  kBusy = 5,
  kNullValue = 7,
  kNotConvertible = 8,
  kRow = 9,
  kNoMoreRows = 10,
  kNoSuchColumn = 12,
  kConstraint = 13,
  kConnectionLost = 14,
  kReadOnly = 15,
};

const char* status_text(int status);

}  // namespace zel_db

#endif
