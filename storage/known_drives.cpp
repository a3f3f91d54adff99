// SPDX-License-Identifier: Apache-2.0
#include "storage/known_drives.h"

#include <atomic>

#include "db/read.h"

namespace zeldb {

namespace {

constexpr ProductData kOwnTable = {"DiskHardwareInfo", "InterfaceTypeId", 5};
constexpr ProductData kSharedTable = {"VPDs", "HardwareTypeId", 2};

constexpr int kNotAsked = 255;
// Whether there is an own table. Two that remember at a time may take each other's answer or its end: either
// table makes a valid condition.
std::atomic<int> own_table{kNotAsked};

int ask() {
  using Statement = Filter<128>;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return 0;
  const Statement count("select count(*) from %s;", kOwnTable.table);
  Result result;
  return zel_db_raw_query(handle, count, Statement::capacity(), result.out()) == ZELDB_OK ? 1 : 0;
}

}  // namespace

ProductData product_data() {
  int own = own_table.load(std::memory_order_relaxed);
  if (own == kNotAsked) own = ask();
  return own != 0 ? kOwnTable : kSharedTable;
}

Filter<128> not_known(const char* serial_column, const ProductData& known) {
  return Filter<128>("(%s NOT IN (SELECT %s FROM %s WHERE %s=%d AND %s IS NOT NULL))", serial_column,
                     serial_column, known.table, known.column, known.value, serial_column);
}

RememberedProductData::RememberedProductData() {
  own_table.store(ask(), std::memory_order_relaxed);
}

RememberedProductData::~RememberedProductData() {
  own_table.store(kNotAsked, std::memory_order_relaxed);
}

}  // namespace zeldb
