// SPDX-License-Identifier: Apache-2.0
#include "db/read.h"

namespace zeldb {

int query(_zel_db_handle_t* handle, const Select& select, Result& result) {
  return zel_db_query(handle, select.table, select.columns.data(), static_cast<int>(select.columns.size()),
                      select.where, select.params.data(), static_cast<int>(select.params.size()),
                      select.order, result.out());
}

}  // namespace zeldb
