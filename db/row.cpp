// SPDX-License-Identifier: Apache-2.0
#include "db/row.h"

#include <cstdlib>
#include <cstring>

namespace zeldb {

int Row::text(int column, void* buffer, size_t capacity) const {
  char* const text = static_cast<char*>(buffer);
  text[0] = '\0';
  return zel_db_result_column_text(result_, column, text, static_cast<unsigned>(capacity));
}

unsigned Row::blob(int column, uint8_t* buffer, unsigned capacity) const {
  std::memset(buffer, 0, capacity);
  unsigned size = capacity;
  return zel_db_result_column_blob(result_, column, buffer, &size) == 0 ? size : 0;
}

int Row::read_code(int column, uint32_t& code) const {
  char digits[7];  // "0x8003" is the longest
  const int status = text(column, digits);
  if (status == 0) code = static_cast<uint32_t>(std::strtoul(digits, nullptr, 0));
  return status;
}

void Row::fill(std::span<const Field> fields, void* record, int column) const {
  for (const Field& field : fields) {
    if (field.kind == Kind::Text) {
      text(column, bytes_of(field, record), field.size);
    } else if (field.kind == Kind::Code) {
      set_number(field, record, code(column, field.fallback));
    } else if (field.size == sizeof(uint64_t)) {
      uint64_t value = field.fallback;
      read(column, value);
      set_number(field, record, value);
    } else {
      set_number(field, record, number(column, field.fallback));
    }
    ++column;
  }
}

void Row::fill_by_name(std::span<const Field> fields, void* record) const {
  for (const Field& field : fields) {
    if (field.kind == Kind::Text) {
      char* const text = reinterpret_cast<char*>(bytes_of(field, record));
      text[0] = '\0';
      extract_str_column_from_result(result_, field.column, text, field.size);
    } else if (field.size == sizeof(uint64_t)) {
      uint64_t value = field.fallback;
      extract_uint64_column_from_result(result_, field.column, &value);
      set_number(field, record, value);
    } else {
      uint32_t value = field.fallback;
      extract_uint_column_from_result(result_, field.column, &value);
      set_number(field, record, value);
    }
  }
}

}  // namespace zeldb
