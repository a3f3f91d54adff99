// SPDX-License-Identifier: Apache-2.0
//
// The configuration of the adapter inventory: aim_config.json, an object of numbers that the first set
// creates.
#include "platform/aim_config.h"

#include "call/call.h"

using namespace zel_platform;

namespace {

constexpr const char* kFile = "aim_config.json";
constexpr int kDelivered = 1;
constexpr int kNotStored = 0;
constexpr int kDone = 0;
constexpr int kFailed = -1;

}  // namespace

ZEL_PLATFORM_API int aim_config_get_int(const char* key, int* value) {
  const auto body = [&] {
    if (key == nullptr || value == nullptr) return kNotStored;
    std::optional<uint32_t> stored;
    read_config(kFile, IfMissing::Empty, [&](const Json& json) { stored = word_member(json, key); });
    if (!stored) return kNotStored;
    *value = static_cast<int>(*stored);
    return kDelivered;
  };
  return run_call(__func__, kNotStored, body, key);
}

ZEL_PLATFORM_API int aim_config_set_int(const char* key, int value, int flags) {
  const auto body = [&] {
    if (key == nullptr) return kFailed;
    const bool stored =
        update_config(kFile, IfMissing::Empty, [&](Json& json) { json.member(key) = Json(int64_t{value}); });
    return stored ? kDone : kFailed;
  };
  return run_call(__func__, kFailed, body, key, value, flags);
}
