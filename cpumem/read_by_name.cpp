// SPDX-License-Identifier: Apache-2.0
#include "cpumem/read_by_name.h"

namespace zeldb {

int read_by_name(_zel_db_handle_t* handle, const char* table, const char* where, const _zel_db_param_t& param,
                 std::span<const Field> fields, void* record) {
  Result result;
  const int status =
      query(handle, {.table = table, .columns = {}, .where = where, .params = {&param, 1}}, result);
  if (status != ZELDB_OK) return status;
  if (!result.next()) return ZELDB_FAILED;
  result.row().fill_by_name(fields, record);
  return ZELDB_OK;
}

}  // namespace zeldb
