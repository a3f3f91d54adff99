// SPDX-License-Identifier: Apache-2.0
#ifndef DB_SYSLOG_INFO_H
#define DB_SYSLOG_INFO_H

namespace zeldb {

// One line to syslog as user.info, cut at 1023 characters.
void syslog_info(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace zeldb

#endif
