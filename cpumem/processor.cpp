// SPDX-License-Identifier: Apache-2.0
#include "cpumem/read_by_name.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "zeldb/cpumem.h"

using namespace zeldb;

namespace {

using Processor = _ZELDB_Processor;

constexpr auto kFields = field_table(
    ZELDB_FIELD(Processor, _id), ZELDB_FIELD(Processor, ProcId), ZELDB_FIELD(Processor, ProcType),
    ZELDB_FIELD(Processor, Family), ZELDB_FIELD(Processor, Socket), ZELDB_FIELD(Processor, Manufacturer),
    ZELDB_FIELD(Processor, Version), ZELDB_FIELD(Processor, Voltage), ZELDB_FIELD(Processor, ExtClock),
    ZELDB_FIELD(Processor, MaxSpeed), ZELDB_FIELD(Processor, CurSpeed), ZELDB_FIELD(Processor, Status),
    ZELDB_FIELD(Processor, Upgrade), ZELDB_FIELD(Processor, SerialNo), ZELDB_FIELD(Processor, AssetTag),
    ZELDB_FIELD(Processor, PartNo), ZELDB_FIELD(Processor, CoreCount), ZELDB_FIELD(Processor, CoreEnabled),
    ZELDB_FIELD(Processor, ThreadCount), ZELDB_FIELD(Processor, Characteristics),
    ZELDB_FIELD(Processor, L1CacheMaxSize), ZELDB_FIELD(Processor, L1CacheInstalled),
    ZELDB_FIELD(Processor, L1CacheType), ZELDB_FIELD(Processor, L1CacheConfig),
    ZELDB_FIELD(Processor, L2CacheMaxSize), ZELDB_FIELD(Processor, L2CacheInstalled),
    ZELDB_FIELD(Processor, L2CacheType), ZELDB_FIELD(Processor, L2CacheConfig),
    ZELDB_FIELD(Processor, L3CacheMaxSize), ZELDB_FIELD(Processor, L3CacheInstalled),
    ZELDB_FIELD(Processor, L3CacheType), ZELDB_FIELD(Processor, L3CacheConfig),
    ZELDB_FIELD(Processor, NodeIndex));

}  // namespace

int zeldb_get_processor(_ZELDB_Processor* processor) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (processor == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<64> filter("_id=?");
  return read_by_name(handle, tables::kProcessors, filter, bound(processor->_id), kFields.fields, processor);
}
