// SPDX-License-Identifier: Apache-2.0
#ifndef DB_VALUES_H
#define DB_VALUES_H

#include <cstdint>
#include <span>

#include "db/field.h"
#include "platform/zel_db.h"

namespace zeldb {

enum class EmptyText { AsNull, AsText, LeftOut };

// The values of a row to write, released on every path; false if they could not be allocated. A put that
// fails for want of memory is remembered, and the row, which would lack that column, is not written. Other
// values that the database refuses show when it gets the row.
class ContentValues {
 public:
  // function is the name in the log if memory is short; null logs nothing.
  explicit ContentValues(_zel_db_handle_t* handle, const char* function = nullptr)
      : handle_(handle), function_(function), values_(zel_db_get_content_values(handle)) {}
  ContentValues(const ContentValues&) = delete;
  ContentValues& operator=(const ContentValues&) = delete;
  ~ContentValues() {
    if (values_ == nullptr) return;
    clear();
    zel_db_free_content_values(values_);
  }

  explicit operator bool() const { return values_ != nullptr; }
  zel_db_content_values_t* get() const { return values_; }
  // False if a value since the last clear is missing.
  bool is_complete() const { return complete_; }

  void clear() {
    zel_db_content_clear(values_);
    complete_ = true;
  }

  // Puts one column per field, in order; empty says what becomes of an empty text. The texts of the record
  // must be terminated.
  void put(std::span<const Field> fields, const void* record, EmptyText empty);

  void put_text(const char* column, const char* value) {
    note(zel_db_content_put_text(values_, column, value));
  }
  void put_null(const char* column) { note(zel_db_content_put_null(values_, column)); }
  void put_int(const char* column, int32_t value) { note(zel_db_content_put_int(values_, column, value)); }
  void put_uint(const char* column, uint32_t value) { note(zel_db_content_put_uint(values_, column, value)); }
  void put_uint64(const char* column, uint64_t value) {
    note(zel_db_content_put_uint64(values_, column, value));
  }
  void put_uint16(const char* column, uint16_t value) {
    note(zel_db_content_put_short_uint(values_, column, value));
  }
  void put_uint8(const char* column, uint8_t value) {
    note(zel_db_content_put_uchar(values_, column, value));
  }

  // Sends nothing and returns no_memory() if a value is missing. id may be null.
  int insert(const char* table, int64_t* id) const;
  int update(const char* table, const char* where) const;

  // Logs that memory for the values was short, and returns the status for it.
  int no_memory() const;

 private:
  void note(int status);

  _zel_db_handle_t* handle_;
  const char* function_;
  zel_db_content_values_t* values_;
  bool complete_ = true;
};

}  // namespace zeldb

#endif
