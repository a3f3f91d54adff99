// SPDX-License-Identifier: Apache-2.0
#include "storage/property.h"

#include <cstring>

#include "storage/decimal.h"

namespace zeldb {

Property::Property(const Row& row) {
  std::memset(name, 0, sizeof(name));
  row.text(0, name);
  size = row.blob(1, value);
}

int Property::number() const {
  return decimal(name + strnlen(name, kNumberAt));
}

}  // namespace zeldb
