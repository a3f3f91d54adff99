// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "db/field.h"
#include "db/filter.h"
#include "db/owners.h"
#include "db/tables.h"
#include "db/values.h"
#include "zeldb/cpumem.h"

using namespace zeldb;

namespace {

using Module = _ZELDB_Memory;

constexpr auto kNumbers =
    field_table(ZELDB_FIELD(Module, SlotNo), ZELDB_FIELD(Module, TotalWidth), ZELDB_FIELD(Module, DataWidth),
                ZELDB_FIELD(Module, MemSize), ZELDB_FIELD(Module, FormFactor), ZELDB_FIELD(Module, MemType),
                ZELDB_FIELD(Module, TypeDetail), ZELDB_FIELD(Module, MaxSpeed),
                ZELDB_FIELD(Module, ClockSpeed), ZELDB_FIELD(Module, Attributes));
constexpr auto kTexts = field_table(ZELDB_FIELD(Module, DevLocator), ZELDB_FIELD(Module, BankLocator),
                                    ZELDB_FIELD(Module, Manufacturer), ZELDB_FIELD(Module, SerialNo),
                                    ZELDB_FIELD(Module, AssetTag), ZELDB_FIELD(Module, PartNo));

// The caller's text may fill its field to the last byte.
void put_text(ContentValues& values, const Field& field, const Module* memory) {
  char text[sizeof(Module::DevLocator) + 1] = {};
  std::memcpy(text, bytes_of(field, memory), field.size);
  values.put_text(field.column, text);
}

}  // namespace

int zeldb_insert_memory_info(_zel_db_handle_t* handle, const _ZELDB_Memory* memory) {
  if (memory == nullptr) return ZELDB_INVALID_ARGUMENT;
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  ContentValues values(handle);
  if (!values) return ZELDB_NO_HANDLE;
  values.put_uint64("ArrayId", memory->ArrayId);
  for (const Field& field : kNumbers.fields) {
    // Sizes from 2^31 on are stored negative and read back as they were.
    values.put_int(field.column, static_cast<int32_t>(number_of(field, memory)));
  }
  for (const Field& field : kTexts.fields) put_text(values, field, memory);
  if (!values.is_complete()) return ZELDB_NO_HANDLE;
  int64_t row = 0;
  values.insert(tables::kModules, &row);
  return ZELDB_OK;
}

int zeldb_hbm_memory_cleanup(_zel_db_handle_t* handle) {
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  const Filter<128> statement("delete from Memory where DevLocator like \"%%HbmIo%%\";");
  Result result;
  return zel_db_raw_query(handle, statement, Filter<128>::capacity(), result.out());
}
