// SPDX-License-Identifier: Apache-2.0
#include "storage/known_drives.h"

#include <atomic>

#include "db/read.h"
#include "db/tables.h"

namespace zeldb {

namespace {

constexpr ProductData kDiskHardware = {tables::kDiskHardware, "InterfaceTypeId", 5};
constexpr ProductData kVpds = {tables::kVpds, "HardwareTypeId", 2};

constexpr int kNotAsked = 255;
// Whether DiskHardwareInfo exists. If two threads remember at the same time, one may use or end the answer of
// the other; either table makes a valid condition.
std::atomic<int> has_disk_hardware{kNotAsked};

int ask() {
  using Statement = Filter<128>;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return 0;
  const Statement count("select count(*) from %s;", kDiskHardware.table);
  Result result;
  return zel_db_raw_query(handle, count, Statement::capacity(), result.out()) == ZELDB_OK ? 1 : 0;
}

}  // namespace

ProductData product_data() {
  int own = has_disk_hardware.load(std::memory_order_relaxed);
  if (own == kNotAsked) own = ask();
  return own != 0 ? kDiskHardware : kVpds;
}

Filter<128> not_known(const char* serial_column, const ProductData& known) {
  return Filter<128>("(%s NOT IN (SELECT %s FROM %s WHERE %s=%d AND %s IS NOT NULL))", serial_column,
                     serial_column, known.table, known.column, known.value, serial_column);
}

RememberedProductData::RememberedProductData() {
  has_disk_hardware.store(ask(), std::memory_order_relaxed);
}

RememberedProductData::~RememberedProductData() {
  has_disk_hardware.store(kNotAsked, std::memory_order_relaxed);
}

}  // namespace zeldb
