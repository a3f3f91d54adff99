// SPDX-License-Identifier: Apache-2.0
#include "zel_db/status.h"

namespace zel_db {

const char* status_text(int status) {
  switch (status) {
    case kOk:
      return "success";
    case kSqlError:
      return "SQL error";
    case kInvalidArgument:
      return "invalid argument";
    case kNoMemory:
      return "out of memory";
    case kBusy:
      return "database is busy";
    case kNullValue:
      return "value is NULL";
    case kNotConvertible:
      return "value is not convertible";
    case kRow:
      return "row available";
    case kNoMoreRows:
      return "no more rows";
    case kNoSuchColumn:
      return "no such column";
    case kConstraint:
      return "constraint violated";
    case kConnectionLost:
      return "connection lost";
    case kReadOnly:
      return "database may only be read";
    default:
      return "unknown status";
  }
}

}  // namespace zel_db
