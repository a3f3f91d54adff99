// SPDX-License-Identifier: Apache-2.0
#ifndef DB_ROW_H
#define DB_ROW_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "db/field.h"
#include "platform/zel_db.h"

namespace zeldb {

// Typed reads of the row that the last step made ready. A read that returns a status other than 0 leaves its
// output alone, except that a text is then empty.
class Row {
 public:
  explicit Row(zel_db_result_t* result) : result_(result) {}

  int read(int column, int32_t& value) const { return zel_db_result_column_int(result_, column, &value); }
  int read(int column, uint32_t& value) const { return zel_db_result_column_uint(result_, column, &value); }
  int read(int column, int64_t& value) const { return zel_db_result_column_int64(result_, column, &value); }
  int read(int column, uint64_t& value) const { return zel_db_result_column_uint64(result_, column, &value); }
  int read(int column, uint16_t& value) const {
    return zel_db_result_column_short_uint(result_, column, &value);
  }
  int read(int column, uint8_t& value) const { return zel_db_result_column_uchar(result_, column, &value); }

  // The value truncated to T, or the fallback if it cannot be read.
  template <typename T = uint32_t>
  T number(int column, T fallback = 0) const {
    uint32_t value = 0;
    return read(column, value) == 0 ? static_cast<T>(value) : fallback;
  }

  // The text is cut to the buffer and always terminated; it is empty if it cannot be read.
  int text(int column, void* buffer, size_t capacity) const;
  template <typename Byte, size_t N>
  int text(int column, Byte (&buffer)[N]) const {
    static_assert(sizeof(Byte) == 1);
    const int status = text(column, static_cast<void*>(buffer), N);
    buffer[N - 1] = 0;  // a controller's library need not terminate it
    return status;
  }

  // Copies the bytes, cut to the buffer, and zeros the rest. Returns their number, 0 if they cannot be read.
  template <size_t N>
  unsigned blob(int column, uint8_t (&buffer)[N]) const {
    return blob(column, buffer, N);
  }
  unsigned blob(int column, uint8_t* buffer, unsigned capacity) const;

  bool is_null(int column) const { return zel_db_result_column_is_null(result_, column) != 0; }

  // A code that its column holds as text: decimal, octal or hexadecimal as in C.
  int read_code(int column, uint32_t& code) const;
  uint32_t code(int column, uint32_t fallback = 0) const {
    uint32_t value = 0;
    return read_code(column, value) == 0 ? value : fallback;
  }

  // Reads the columns from the first on, in the order of the fields.
  void fill(std::span<const Field> fields, void* record, int column = 0) const;
  // The same by the names of the columns, for a query of all columns. A missing column counts as unreadable,
  // and codes are not supported.
  void fill_by_name(std::span<const Field> fields, void* record) const;

 private:
  zel_db_result_t* result_;
};

}  // namespace zeldb

#endif
