// SPDX-License-Identifier: Apache-2.0
//
// A frame for the calls of the small interfaces: it injects the failures that platform.json asks for, records
// calls for tests, and lets no exception reach the caller.
//
// ZEL_PLATFORM_TRACE=FILE records each call as one line "function|arguments|status", so that a test can see
// the calls, their number and what was released.
#ifndef ZEL_PLATFORM_CALL_CALL_H
#define ZEL_PLATFORM_CALL_CALL_H

#include <concepts>
#include <exception>
#include <initializer_list>
#include <string>

#include "config/settings.h"

#define ZEL_PLATFORM_API [[gnu::visibility("default")]]

namespace zel_platform {

void trace_call(const char* function, std::initializer_list<std::string> arguments, int status);
void log_failure(const char* function, const std::exception& error) noexcept;

inline std::string shown(const char* text) {
  return text != nullptr ? text : "(null)";
}
inline std::string shown(std::integral auto number) {
  return std::to_string(number);
}

// failure: the status when body throws. A ConfigError is taken for one of platform.json.
template <class Body, class... Arguments>
int run_call(const char* function, int failure, Body body, Arguments... arguments) {
  try {
    const std::optional<int> injected = injected_failure(function);
    const int status = injected ? *injected : body();
    trace_call(function, {shown(arguments)...}, status);
    return status;
  } catch (const std::exception& error) {
    log_failure(function, error);
    return failure;
  }
}

}  // namespace zel_platform

#endif
