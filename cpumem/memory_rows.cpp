// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "db/field.h"
#include "db/filter.h"
#include "db/owners.h"
#include "db/values.h"
#include "zeldb/cpumem.h"

using namespace zeldb;

namespace {

using R = _ZELDB_Memory;

constexpr FieldTable kNumbers{ZELDB_FIELD(R, SlotNo),     ZELDB_FIELD(R, TotalWidth),
                              ZELDB_FIELD(R, DataWidth),  ZELDB_FIELD(R, MemSize),
                              ZELDB_FIELD(R, FormFactor), ZELDB_FIELD(R, MemType),
                              ZELDB_FIELD(R, TypeDetail), ZELDB_FIELD(R, MaxSpeed),
                              ZELDB_FIELD(R, ClockSpeed), ZELDB_FIELD(R, Attributes)};
constexpr FieldTable kTexts{ZELDB_FIELD(R, DevLocator),   ZELDB_FIELD(R, BankLocator),
                            ZELDB_FIELD(R, Manufacturer), ZELDB_FIELD(R, SerialNo),
                            ZELDB_FIELD(R, AssetTag),     ZELDB_FIELD(R, PartNo)};

// The caller's text may fill its field to the last byte.
void put_text(ContentValues& values, const Field& field, const R* memory) {
  char text[sizeof(R::DevLocator) + 1] = {};
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
  values.insert("Memory", &row);
  return ZELDB_OK;
}

int zeldb_hbm_memory_cleanup(_zel_db_handle_t* handle) {
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  const Filter<128> statement("delete from Memory where DevLocator like \"%%HbmIo%%\";");
  Result result;
  return zel_db_raw_query(handle, statement, Filter<128>::capacity(), result.out());
}
