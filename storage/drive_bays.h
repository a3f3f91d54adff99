// SPDX-License-Identifier: Apache-2.0
//
// What the property store tells about bays.
#ifndef STORAGE_DRIVE_BAYS_H
#define STORAGE_DRIVE_BAYS_H

#include <cstdint>
#include <vector>

#include "zeldb/storage.h"

namespace zeldb {

enum class BayMode { Edsff, AnyNvme };

// The numbers of the backplane bays of a kind. A status; without the property store there are none.
int read_drive_bays(BayMode mode, std::vector<uint8_t>& bays);

// The PCIe slot that an M.2 or 7 mm bay is wired to. The output stays as it was for other places, and when
// no slot is recorded.
int zeldb_get_nvme_pcie_slots(uint32_t location, uint32_t baySlot, uint8_t* pcieSlot);

// The form factor of a backplane bay. The property store is asked once per process.
_AimDiskFormFactor form_factor_of_bay(uint32_t bay);

}  // namespace zeldb

#endif
