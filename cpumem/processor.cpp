// SPDX-License-Identifier: Apache-2.0
#include "cpumem/read_by_name.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "zeldb/cpumem.h"

using namespace zeldb;

namespace {

using R = _ZELDB_Processor;

constexpr FieldTable kFields{ZELDB_FIELD(R, _id),
                             ZELDB_FIELD(R, ProcId),
                             ZELDB_FIELD(R, ProcType),
                             ZELDB_FIELD(R, Family),
                             ZELDB_FIELD(R, Socket),
                             ZELDB_FIELD(R, Manufacturer),
                             ZELDB_FIELD(R, Version),
                             ZELDB_FIELD(R, Voltage),
                             ZELDB_FIELD(R, ExtClock),
                             ZELDB_FIELD(R, MaxSpeed),
                             ZELDB_FIELD(R, CurSpeed),
                             ZELDB_FIELD(R, Status),
                             ZELDB_FIELD(R, Upgrade),
                             ZELDB_FIELD(R, SerialNo),
                             ZELDB_FIELD(R, AssetTag),
                             ZELDB_FIELD(R, PartNo),
                             ZELDB_FIELD(R, CoreCount),
                             ZELDB_FIELD(R, CoreEnabled),
                             ZELDB_FIELD(R, ThreadCount),
                             ZELDB_FIELD(R, Characteristics),
                             ZELDB_FIELD(R, L1CacheMaxSize),
                             ZELDB_FIELD(R, L1CacheInstalled),
                             ZELDB_FIELD(R, L1CacheType),
                             ZELDB_FIELD(R, L1CacheConfig),
                             ZELDB_FIELD(R, L2CacheMaxSize),
                             ZELDB_FIELD(R, L2CacheInstalled),
                             ZELDB_FIELD(R, L2CacheType),
                             ZELDB_FIELD(R, L2CacheConfig),
                             ZELDB_FIELD(R, L3CacheMaxSize),
                             ZELDB_FIELD(R, L3CacheInstalled),
                             ZELDB_FIELD(R, L3CacheType),
                             ZELDB_FIELD(R, L3CacheConfig),
                             ZELDB_FIELD(R, NodeIndex)};

}  // namespace

int zeldb_get_processor(_ZELDB_Processor* processor) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (processor == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<64> filter("%s=?", "_id");
  return read_by_name(handle, "Processor", filter, bound(processor->_id), kFields.fields, processor);
}
