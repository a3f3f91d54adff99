// SPDX-License-Identifier: Apache-2.0
#include "db/syslog_info.h"

#include <syslog.h>

#include <cstdarg>
#include <cstdio>

namespace zeldb {

void syslog_info(const char* format, ...) {
  char line[1024];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof(line), format, arguments);
  va_end(arguments);
  syslog(LOG_USER | LOG_INFO, "%s", line);
}

}  // namespace zeldb
