// SPDX-License-Identifier: Apache-2.0
#ifndef STORAGE_KNOWN_DRIVES_H
#define STORAGE_KNOWN_DRIVES_H

#include "db/filter.h"

namespace zeldb {

// The table with the product data of drives, and what selects drives in it: DiskHardwareInfo on controllers
// that have it, VPDs on the others.
struct ProductData {
  const char* table;
  const char* column;
  int value;
};

// Asks the database which it is, unless a RememberedProductData has.
ProductData product_data();

// A condition that leaves out drives whose serial number the product data has.
Filter<128> not_known(const char* serial_column, const ProductData& known);

// While it lives, every thread is answered as the database was when it began.
class RememberedProductData {
 public:
  RememberedProductData();
  RememberedProductData(const RememberedProductData&) = delete;
  RememberedProductData& operator=(const RememberedProductData&) = delete;
  ~RememberedProductData();
};

}  // namespace zeldb

#endif
