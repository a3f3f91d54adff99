// SPDX-License-Identifier: Apache-2.0
#ifndef STORAGE_KNOWN_DRIVES_H
#define STORAGE_KNOWN_DRIVES_H

#include "db/filter.h"

namespace zeldb {

// The table with the product data of drives, and the column and value that select drives in it. Controllers
// keep these data in DiskHardwareInfo or, if they do not have that table, in VPDs.
struct ProductData {
  const char* table;
  const char* column;
  int value;
};

// Asks the database which table it is, unless a RememberedProductData already did.
ProductData product_data();

// A condition that leaves out drives whose serial number the product data has.
Filter<128> not_known(const char* serial_column, const ProductData& known);

// Asks the database once. product_data answers the same to every thread until the end of this object.
class RememberedProductData {
 public:
  RememberedProductData();
  RememberedProductData(const RememberedProductData&) = delete;
  RememberedProductData& operator=(const RememberedProductData&) = delete;
  ~RememberedProductData();
};

}  // namespace zeldb

#endif
