// SPDX-License-Identifier: Apache-2.0
#ifndef STORAGE_PROPERTY_H
#define STORAGE_PROPERTY_H

#include <cstdint>

#include "db/read.h"
#include "db/tables.h"

namespace zeldb {

// One row of the property database. The value's first byte tells its type.
struct Property {
  explicit Property(const Row& row);

  uint8_t byte() const { return value[1]; }
  // The number in the name of a numbered device, "/dc/ovrc/dm/disks/.../<N>/...", or 0 if the name ends
  // before it.
  int number() const;

  static constexpr unsigned kNumberAt = 22;
  char name[128];
  uint8_t value[128];
  unsigned size;
};

// Selects properties, for Property to read.
inline Select properties_where(const char* where) {
  static constexpr const char* kColumns[] = {"propName", "propValue"};
  return {.table = tables::kProperties, .columns = kColumns, .where = where};
}

}  // namespace zeldb

#endif
