// SPDX-License-Identifier: Apache-2.0
//
// Bays as the property store describes them.
#ifndef STORAGE_DRIVE_BAYS_H
#define STORAGE_DRIVE_BAYS_H

#include <cstdint>
#include <vector>

#include "zeldb/storage.h"

namespace zeldb {

enum class BayMode { Edsff, AnyNvme };

// Reads the numbers of the backplane bays of a kind. Returns a status; there are none without the property
// store.
int read_drive_bays(BayMode mode, std::vector<uint8_t>& bays);

// The PCIe slots that the M.2 bays, or the 7 mm bays, are wired to.
class BayWiring {
 public:
  // Asks the property store.
  explicit BayWiring(uint32_t location);

  // Sets the slot of one bay, or leaves it alone if none is recorded. Writes a line to syslog.
  void find_slot(uint32_t bay, uint8_t& slot) const;

 private:
  uint32_t location_;
  int status_ = ZELDB_NO_HANDLE;
  bool asked_ = false;
  uint8_t slots_[128] = {};  // by bay, from the second byte on
  unsigned size_ = 0;
};

// The form factor of a backplane bay. The property store is asked once per process.
_AimDiskFormFactor form_factor_of_bay(uint32_t bay);

}  // namespace zeldb

#endif
