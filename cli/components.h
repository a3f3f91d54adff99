// SPDX-License-Identifier: Apache-2.0
//
// Devices whose firmware PLDM reports and updates.
#ifndef CLI_COMPONENTS_H
#define CLI_COMPONENTS_H

#include <cstdint>
#include <vector>

#include "zeldb/firmware.h"

namespace zeldb::cli {

constexpr uint32_t kUpdateWaits = 2;  // a status

std::vector<_ZELDB_PldmFirmware> read_components();

// Whether its last update failed.
bool has_failed(const _ZELDB_PldmFirmware& component);
// Whether an update waits for its activation.
bool waits(const _ZELDB_PldmFirmware& component);

}  // namespace zeldb::cli

#endif
