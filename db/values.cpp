// SPDX-License-Identifier: Apache-2.0
#include "db/values.h"

#include "platform/vrel_log.h"
#include "zeldb/status.h"

namespace zeldb {

void ContentValues::put(std::span<const Field> fields, const void* record, EmptyText empty) {
  for (const Field& field : fields) {
    const auto* const text = reinterpret_cast<const char*>(bytes_of(field, record));
    if (field.kind != Kind::Text) {
      const uint64_t value = number_of(field, record);
      if (field.size == sizeof(uint64_t)) {
        zel_db_content_put_uint64(values_, field.column, value);
      } else if (field.kind == Kind::Signed) {
        zel_db_content_put_int(values_, field.column, static_cast<int32_t>(value));
      } else {
        zel_db_content_put_uint(values_, field.column, static_cast<uint32_t>(value));
      }
    } else if (text[0] != '\0' || empty == EmptyText::AsText) {
      zel_db_content_put_text(values_, field.column, text);
    } else if (empty == EmptyText::AsNull) {
      zel_db_content_put_null(values_, field.column);
    }
  }
}

int no_memory(const char* function) {
  vrel_log::logErr("%s, ZEL_DB_STATUS_NO_MEMORY", function);
  return ZEL_DB_STATUS_NO_MEMORY;
}

}  // namespace zeldb
