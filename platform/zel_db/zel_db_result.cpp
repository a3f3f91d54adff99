// SPDX-License-Identifier: Apache-2.0
//
// The exported accessors of a result.
#include <algorithm>
#include <cstring>

#include "zel_db/c_face.h"
#include "zel_db/result.h"

using namespace zel_db;  // NOLINT(google-build-using-namespace): exported C functions stand outside

namespace {

template <class Number>
int read_number(const Result* result, int column, Number* out) {
  if (result == nullptr || out == nullptr) return kInvalidArgument;
  uint64_t bits = 0;
  const int status = result->number(column, &bits);
  if (status == kOk) *out = static_cast<Number>(bits);
  return status;
}

int read_text(const Result* result, int column, char* buffer, unsigned capacity) {
  if (buffer == nullptr || capacity == 0) return kInvalidArgument;
  *buffer = '\0';
  if (result == nullptr) return kInvalidArgument;
  Result::Scratch scratch;
  std::string_view text;
  const int status = result->bytes(column, scratch, &text);
  if (status != kOk) return status;
  const size_t length = std::min<size_t>(text.size(), capacity - 1);
  std::memcpy(buffer, text.data(), length);
  buffer[length] = '\0';
  return kOk;
}

int read_bytes(const Result* result, int column, void* buffer, unsigned* size) {
  if (result == nullptr || size == nullptr || (buffer == nullptr && *size != 0)) return kInvalidArgument;
  Result::Scratch scratch;
  std::string_view bytes;
  const int status = result->bytes(column, scratch, &bytes);
  if (status != kOk) return status;
  *size = static_cast<unsigned>(std::min<size_t>(bytes.size(), *size));
  std::copy_n(bytes.data(), *size, static_cast<char*>(buffer));
  return kOk;
}

int index_of(const Result* result, const char* column) {
  return result != nullptr && column != nullptr ? result->find(column) : -1;
}

}  // namespace

int zel_db_result_step(zel_db_result_t* result) {
  return result != nullptr ? result->step() : static_cast<int>(kInvalidArgument);
}

unsigned zel_db_result_row_count(zel_db_result_t* result) {
  return result != nullptr ? result->row_count() : 0;
}

int zel_db_result_reset(zel_db_result_t* result) {
  if (result == nullptr) return kInvalidArgument;
  result->rewind();
  return kOk;
}

int zel_db_result_column_int(zel_db_result_t* result, int column, int32_t* out) {
  return read_number(result, column, out);
}

int zel_db_result_column_uint(zel_db_result_t* result, int column, uint32_t* out) {
  return read_number(result, column, out);
}

int zel_db_result_column_uint64(zel_db_result_t* result, int column, uint64_t* out) {
  return read_number(result, column, out);
}

int zel_db_result_column_int64(zel_db_result_t* result, int column, int64_t* out) {
  return read_number(result, column, out);
}

int zel_db_result_column_short_uint(zel_db_result_t* result, int column, uint16_t* out) {
  return read_number(result, column, out);
}

int zel_db_result_column_uchar(zel_db_result_t* result, int column, uint8_t* out) {
  return read_number(result, column, out);
}

int zel_db_result_column_text(zel_db_result_t* result, int column, char* buffer, unsigned capacity) {
  return read_text(result, column, buffer, capacity);
}

int zel_db_result_column_blob(zel_db_result_t* result, int column, void* buffer, unsigned* size) {
  return read_bytes(result, column, buffer, size);
}

int zel_db_result_column_bytes(zel_db_result_t* result, int column, void* buffer, unsigned* size) {
  return read_bytes(result, column, buffer, size);
}

int zel_db_result_column_is_null(zel_db_result_t* result, int column) {
  Result::Scratch scratch;
  std::string_view bytes;
  return static_cast<int>(result == nullptr || result->bytes(column, scratch, &bytes) != kOk);
}

void zel_db_free_result(zel_db_result_t* result) {
  delete result;
}

int extract_uint_column_from_result(zel_db_result_t* result, const char* column, uint32_t* out) {
  return read_number(result, index_of(result, column), out);
}

int extract_uint64_column_from_result(zel_db_result_t* result, const char* column, uint64_t* out) {
  return read_number(result, index_of(result, column), out);
}

int extract_str_column_from_result(zel_db_result_t* result, const char* column, char* buffer,
                                   unsigned capacity) {
  return read_text(result, index_of(result, column), buffer, capacity);
}
