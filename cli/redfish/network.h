// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_REDFISH_NETWORK_H
#define CLI_REDFISH_NETWORK_H

#include <cstddef>
#include <cstdint>

#include "cli/redfish/tree.h"

namespace zeldb::cli::redfish {

enum Technology : uint16_t { kEthernet = 2, kInfiniBand = 3, kFibreChannel = 4 };

// Sizes of addresses, in bytes.
constexpr size_t kMacAddress = 6;
constexpr size_t kWorldWideName = 8;

constexpr const char* kTechnologyNote = "2 `Ethernet`, 3 `InfiniBand`, 4 `FibreChannel`; others null";
Json technology_of(uint16_t technology);

}  // namespace zeldb::cli::redfish

#endif
