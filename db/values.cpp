// SPDX-License-Identifier: Apache-2.0
#include "db/values.h"

#include "platform/vrel_log.h"
#include "zeldb/status.h"

namespace zeldb {

void ContentValues::note(int status) {
  if (status == ZEL_DB_STATUS_NO_MEMORY) complete_ = false;
}

void ContentValues::put(std::span<const Field> fields, const void* record, EmptyText empty) {
  for (const Field& field : fields) {
    const auto* const text = reinterpret_cast<const char*>(bytes_of(field, record));
    if (field.kind != Kind::Text) {
      const uint64_t value = number_of(field, record);
      if (field.size == sizeof(uint64_t)) {
        put_uint64(field.column, value);
      } else if (field.kind == Kind::Signed) {
        put_int(field.column, static_cast<int32_t>(value));
      } else {
        put_uint(field.column, static_cast<uint32_t>(value));
      }
    } else if (text[0] != '\0' || empty == EmptyText::AsText) {
      put_text(field.column, text);
    } else if (empty == EmptyText::AsNull) {
      put_null(field.column);
    }
  }
}

int ContentValues::insert(const char* table, int64_t* id) const {
  return complete_ ? zel_db_insert(handle_, table, values_, 0, id) : no_memory();
}

int ContentValues::update(const char* table, const char* where) const {
  return complete_ ? zel_db_update(handle_, table, values_, where, nullptr, 0, nullptr) : no_memory();
}

int ContentValues::no_memory() const {
  if (function_ != nullptr) vrel_log::logErr("%s, ZEL_DB_STATUS_NO_MEMORY", function_);
  return ZEL_DB_STATUS_NO_MEMORY;
}

}  // namespace zeldb
