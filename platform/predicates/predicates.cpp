// SPDX-License-Identifier: Apache-2.0
#include "platform/predicates.h"

#include "call/call.h"

using namespace zel_platform;

ZEL_PLATFORM_API int is_palomir_platform() {
  return run_call(__func__, 0, [] {
    const auto settings = platform_settings();
    const auto palomir = settings->find("palomir");
    if (palomir == settings->end() || palomir->is_null()) return 0;
    if (!palomir->is_boolean()) throw ConfigError("palomir: not true or false");
    return palomir->get<bool>() ? 1 : 0;
  });
}
