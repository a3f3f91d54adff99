// SPDX-License-Identifier: Apache-2.0
//
// What the maker of a controller settles when the product is built.
#ifndef DB_PRODUCT_H
#define DB_PRODUCT_H

#include <cstdint>

namespace zeldb {

// The PCI subsystem vendor id of the maker's own controllers; no device has the default, 0xFFFF.
inline constexpr uint16_t kMakerSubVendorId = ZELDB_MAKER_SUBVENDOR_ID;

}  // namespace zeldb

#endif
