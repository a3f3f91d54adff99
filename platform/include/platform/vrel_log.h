// SPDX-License-Identifier: Apache-2.0
//
// The controller's log: one line per message, level first, to syslog; VREL_LOG=stderr or VREL_LOG=FILE
// redirects, VREL_LOG_LEVEL=debug|info|warning|error filters (default info). Messages are cut at 9 KB; a file
// that cannot be written falls back to syslog. A trailing line end of a message is dropped, never doubled.
#ifndef PLATFORM_VREL_LOG_H
#define PLATFORM_VREL_LOG_H

namespace vrel_log {

void logDbg(const char* format, ...) __attribute__((format(printf, 1, 2)));
void logInfo(const char* format, ...) __attribute__((format(printf, 1, 2)));
void logWarn(const char* format, ...) __attribute__((format(printf, 1, 2)));
void logErr(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace vrel_log

#endif
