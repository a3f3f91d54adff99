// SPDX-License-Identifier: Apache-2.0
//
// A result, complete before its query returns. An engine fills it in one pass: begin_row, then every cell.
#ifndef ZEL_DB_RESULT_H
#define ZEL_DB_RESULT_H

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zel_db/arena.h"
#include "zel_db/c_face.h"
#include "zel_db/status.h"

namespace zel_db {

// The order matters: types from Text on are bytes.
enum class CellType : uint8_t { Null, Integer, Unsigned, Real, Text, Blob };

// Bytes are preceded by their 32-bit number.
union Cell {
  int64_t integer;
  double real;
  const char* bytes;
};

using ColumnNames = std::shared_ptr<const std::vector<std::string>>;

}  // namespace zel_db

struct zel_db_result_t {
 public:
  using Cell = zel_db::Cell;
  using CellType = zel_db::CellType;

  zel_db_result_t() = default;
  ~zel_db_result_t() = default;
  zel_db_result_t(const zel_db_result_t&) = delete;
  zel_db_result_t& operator=(const zel_db_result_t&) = delete;

  // Names are shared with the statement that they belong to.
  void set_columns(const zel_db::ColumnNames& names) {
    names_ = names;
    width_ = names->size();
  }
  void begin_row();
  void put_null(size_t column) { filled_->types()[column] = CellType::Null; }
  void put_integer(size_t column, int64_t value) { put(column, CellType::Integer).integer = value; }
  void put_unsigned(size_t column, uint64_t value) {
    put(column, CellType::Unsigned).integer = static_cast<int64_t>(value);
  }
  void put_real(size_t column, double value) { put(column, CellType::Real).real = value; }
  // The place for size bytes, to be filled by the caller.
  char* put_bytes(size_t column, CellType type, size_t size) {
    const auto length = static_cast<uint32_t>(size);
    char* place = arena_.allocate_bytes(sizeof length + size);
    std::memcpy(place, &length, sizeof length);
    put(column, type).bytes = place;
    return place + sizeof length;
  }

  unsigned row_count() const { return row_count_; }
  int step();
  void rewind() { state_ = State::BeforeFirst; }

  // Columns of the current row. On failure the output stays as it is.
  int find(const char* name) const;  // -1: no such column
  int number(int column, uint64_t* bits) const {
    const Cell* cell = nullptr;
    CellType type{};
    const int status = locate(column, &cell, &type);
    if (status != zel_db::kOk) return status;
    if (type != CellType::Integer && type != CellType::Unsigned) return convert(*cell, type, bits);
    *bits = static_cast<uint64_t>(cell->integer);
    return zel_db::kOk;
  }
  // The bytes of any value but NULL; those of a number are its decimal text, in scratch.
  struct Scratch {
    char text[32];
  };
  int bytes(int column, Scratch& scratch, std::string_view* out) const {
    const Cell* cell = nullptr;
    CellType type{};
    const int status = locate(column, &cell, &type);
    if (status != zel_db::kOk) return status;
    *out = type >= CellType::Text ? bytes_of(*cell) : text_of(*cell, type, scratch);
    return zel_db::kOk;
  }

 private:
  enum class State : uint8_t { BeforeFirst, OnRow, AtEnd };

  // One allocation: the row, its cells, the types of its columns.
  struct Row {
    Row* next;
    size_t width;
    Cell* cells() { return reinterpret_cast<Cell*>(this + 1); }
    CellType* types() { return reinterpret_cast<CellType*>(cells() + width); }
  };
  static_assert(sizeof(Row) % alignof(Cell) == 0);

  Cell& put(size_t column, CellType type) {
    filled_->types()[column] = type;
    return filled_->cells()[column];
  }
  int locate(int column, const Cell** cell, CellType* type) const {
    if (state_ != State::OnRow) return zel_db::kInvalidArgument;
    if (static_cast<size_t>(column) >= width_) return zel_db::kNoSuchColumn;  // a negative one is huge
    *type = current_->types()[column];
    *cell = &current_->cells()[column];
    return *type == CellType::Null ? zel_db::kNullValue : zel_db::kOk;
  }
  static std::string_view bytes_of(const Cell& cell) {
    uint32_t length = 0;
    std::memcpy(&length, cell.bytes, sizeof length);
    return {cell.bytes + sizeof length, length};
  }
  static std::string_view text_of(const Cell& cell, CellType type, Scratch& scratch);
  static int convert(const Cell& cell, CellType type, uint64_t* bits);

  zel_db::ColumnNames names_;
  size_t width_ = 0;
  unsigned row_count_ = 0;
  State state_ = State::BeforeFirst;
  Row* first_ = nullptr;
  Row* filled_ = nullptr;  // the last one
  Row* current_ = nullptr;
  zel_db::Arena arena_;
};

namespace zel_db {
using Result = zel_db_result_t;
}

#endif
