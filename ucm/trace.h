// SPDX-License-Identifier: Apache-2.0
#ifndef UCM_TRACE_H
#define UCM_TRACE_H

// One line to syslog while the trace marker exists; nothing otherwise.
void ucm_parse_log(const char* format, ...) __attribute__((format(printf, 1, 2)));

#endif
