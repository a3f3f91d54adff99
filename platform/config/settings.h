// SPDX-License-Identifier: Apache-2.0
//
// platform.json: what kind of controller this is. The file is optional, as is each of its keys.
#ifndef ZEL_PLATFORM_CONFIG_SETTINGS_H
#define ZEL_PLATFORM_CONFIG_SETTINGS_H

#include <memory>
#include <optional>

#include "config/config.h"

namespace zel_platform {

// The file as it is now; an empty object when it is missing or broken. A broken file is logged once.
std::shared_ptr<const Json> platform_settings();

// Counts a call of the function and tells the status that an entry of "fail" wants for it. The caller then
// returns that status and does nothing else.
std::optional<int> injected_failure(const char* function);

}  // namespace zel_platform

#endif
