// SPDX-License-Identifier: Apache-2.0
//
// Codes in the tables that more than one family looks for.
#ifndef DB_CODES_H
#define DB_CODES_H

#include <cstring>

#include "db/filter.h"
#include "db/product.h"

namespace zeldb {

inline constexpr int kIntel = 0x8086;

// PCI classes.
inline constexpr int kRaidController = 0x010400;
inline constexpr int kNvmeController = 0x010802;

// HardwareTypeId of a PCI function: its HardwareId is the function key.
inline constexpr int kPciFunction = 3;

// Selects the functions that are the vendor's own storage controllers.
inline Filter<128> own_controllers() {
  static constexpr int kVendor = 0x1B4B, kDevice = 0x9230, kOtherDevice = 0x2241;
  return Filter<128>("VendorId=%d AND SubVendorId=%d AND (DeviceId=%d OR DeviceId=%d)", kVendor,
                     kMakerSubVendorId, kDevice, kOtherDevice);
}

// The path in the property store of the product data of the GPUs in slots.
inline constexpr const char* kGpuSlots = "/ac/ovrc/dm/planar/0/gpu_pci_slot";

// Whether such a text is missing in a table.
inline bool is_missing(const char* text) {
  return text[0] == '\0' || std::strcmp(text, "N/A") == 0;
}

}  // namespace zeldb

#endif
