// SPDX-License-Identifier: Apache-2.0
#ifndef CPUMEM_READ_BY_NAME_H
#define CPUMEM_READ_BY_NAME_H

#include <span>

#include "db/field.h"
#include "db/read.h"

namespace zeldb {

// Reads the first row of a select of all columns as a record of these fields. Without a row the status is
// ZELDB_FAILED, whatever the step answered, and the record stays as it was.
int read_by_name(_zel_db_handle_t* handle, const char* table, const char* where, const _zel_db_param_t& param,
                 std::span<const Field> fields, void* record);

}  // namespace zeldb

#endif
