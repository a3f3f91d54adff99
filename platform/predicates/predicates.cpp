// SPDX-License-Identifier: Apache-2.0
#include "platform/predicates.h"

#include "call/call.h"

using namespace zel_platform;

ZEL_PLATFORM_API int is_palomir_platform() {
  return run_call(__func__, 0, [] {
    const auto settings = platform_settings();
    const Json* const palomir = settings->find("palomir");
    if (palomir == nullptr || palomir->is_null()) return 0;
    const bool* const answer = palomir->as<bool>();
    if (answer == nullptr) throw ConfigError("palomir: not true or false");
    return *answer ? 1 : 0;
  });
}
