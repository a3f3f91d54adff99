// SPDX-License-Identifier: Apache-2.0
//
// Constants that the vendor of a controller sets when the product is built.
#ifndef DB_PRODUCT_H
#define DB_PRODUCT_H

#include <cstdint>

namespace zeldb {

// The PCI subsystem vendor id of the vendor's own storage controllers. No device has the default, 0xFFFF.
inline constexpr uint16_t kMakerSubVendorId = ZELDB_MAKER_SUBVENDOR_ID;

}  // namespace zeldb

#endif
