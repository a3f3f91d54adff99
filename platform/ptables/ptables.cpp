// SPDX-License-Identifier: Apache-2.0
//
// The platform tables, which are one word of platform.json: platform_flags.
#include "platform/ptables.h"

#include <memory>

#include "call/call.h"

using namespace zel_platform;

namespace {

constexpr int kDone = 0;
constexpr int kFailed = -1;

}  // namespace

ZEL_PLATFORM_API int ptables_from_ram(void** tables) {
  return run_call(__func__, kFailed, [&] {
    if (tables == nullptr) return kFailed;
    auto platform = std::make_unique<ptables_platform>();
    platform->Flags = word_member(*platform_settings(), "platform_flags").value_or(0);
    *tables = platform.release();
    return kDone;
  });
}

ZEL_PLATFORM_API int ptables_lookup_platform_direct(void* tables, void* platform) {
  return run_call(__func__, kFailed, [&] {
    if (tables == nullptr || platform == nullptr) return kFailed;
    *static_cast<ptables_platform*>(platform) = *static_cast<const ptables_platform*>(tables);
    return kDone;
  });
}

ZEL_PLATFORM_API void ptables_free(void* tables) {
  run_call(__func__, kFailed, [&] {
    delete static_cast<ptables_platform*>(tables);
    return kDone;
  });
}
