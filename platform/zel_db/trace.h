// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_TRACE_H
#define ZEL_DB_TRACE_H

#include <string>
#include <string_view>

#include "zel_db/sql/lifting.h"

namespace zel_db {

// One call in the caller's own words.
struct Call {
  std::string_view operation;
  std::string_view table;
  std::string columns;
  std::string_view where;
  Parameters parameters;
  std::string_view order;
};

// The file that ZEL_DB_TRACE names: one line per call, op|table|columns|where|parameters|order|status. Lines
// of several threads and processes do not mix.
class Trace {
 public:
  // Null when no trace is asked for. Looked up when a handle is opened; lives as long as the process.
  static const Trace* current();

  explicit Trace(std::string path);
  void write(const Call& call, int status) const;

 private:
  std::string path_;
  int fd_;
};

}  // namespace zel_db

#endif
