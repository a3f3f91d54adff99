// SPDX-License-Identifier: Apache-2.0
//
// bios.json, checked and ready to be handed out.
#ifndef ZEL_PLATFORM_CMR_BIOS_H
#define ZEL_PLATFORM_CMR_BIOS_H

#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "config/config.h"
#include "platform/cmr.h"

namespace zel_platform {

struct BiosCollection {
  char* name;  // may be null
  std::vector<cmr_bios_attribute> attributes;
};

struct BiosValue {
  std::optional<std::string> pending;
  std::optional<std::string> current;
};

struct Bios {
  std::vector<BiosCollection> collections;
  // By id: the collection's name, ".", the attribute's name. Of equal ids the first in the file counts.
  std::map<std::string, BiosValue, std::less<>> values;
  std::deque<std::string> texts;  // what the records point to: stays in place
};

using PendingValues = std::map<std::string, std::string, std::less<>>;

// Both throw a ConfigError that names the place in the file.
Bios read_bios(const Json& json);
void set_pending(Json& json, PendingValues pending);

}  // namespace zel_platform

#endif
