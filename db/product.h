// SPDX-License-Identifier: Apache-2.0
//
// What the maker of a controller settles when the product is built.
#ifndef DB_PRODUCT_H
#define DB_PRODUCT_H

#include <cstdint>

// The build sets it; no device has this one.
#ifndef ZELDB_MAKER_SUBVENDOR_ID
#define ZELDB_MAKER_SUBVENDOR_ID 0xFFFF
#endif

namespace zeldb {

// The PCI subsystem vendor id of controllers on the maker's own boards.
inline constexpr uint16_t kMakerSubVendorId = ZELDB_MAKER_SUBVENDOR_ID;

}  // namespace zeldb

#endif
