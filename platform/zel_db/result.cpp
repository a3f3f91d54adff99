// SPDX-License-Identifier: Apache-2.0
#include "zel_db/result.h"

#include <charconv>
#include <cmath>
#include <optional>

#include "zel_db/sql/tokens.h"

namespace zel_db {
namespace {

// The bits of a decimal number, its fraction cut off. Servers deliver sums as "4.0000".
std::optional<uint64_t> parse_decimal(std::string_view text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  const char* const end = text.data() + text.size();
  uint64_t magnitude = 0;
  auto [p, failure] = std::from_chars(text.data(), end, magnitude);
  if (failure != std::errc()) return std::nullopt;
  if (p < end && *p == '.') {
    do {
      ++p;
    } while (p < end && is_digit(*p));
  }
  if (p != end) return std::nullopt;
  if (!negative) return magnitude;
  if (magnitude > uint64_t{1} << 63U) return std::nullopt;
  return ~magnitude + 1;
}

std::optional<uint64_t> cut_to_integer(double value) {
  constexpr double kTwoTo63 = 9223372036854775808.0;
  const double whole = std::trunc(value);
  if (whole >= -kTwoTo63 && whole < kTwoTo63) return static_cast<uint64_t>(static_cast<int64_t>(whole));
  if (whole >= kTwoTo63 && whole < 2 * kTwoTo63) return static_cast<uint64_t>(whole);
  return std::nullopt;
}

template <class Number>
std::string_view decimal(Number value, zel_db_result_t::Scratch& scratch) {
  const auto [end, failure] = std::to_chars(scratch.text, scratch.text + sizeof scratch.text, value);
  return {scratch.text, failure == std::errc() ? static_cast<size_t>(end - scratch.text) : 0};
}

}  // namespace

}  // namespace zel_db

using namespace zel_db;  // NOLINT(google-build-using-namespace): the C tag stands outside the namespace

void zel_db_result_t::begin_row() {
  const size_t size = sizeof(Row) + width_ * (sizeof(Cell) + sizeof(CellType));
  Row* row = new (arena_.allocate(size)) Row{nullptr, width_};
  (filled_ != nullptr ? filled_->next : first_) = row;
  filled_ = row;
  ++row_count_;
}

int zel_db_result_t::step() {
  if (state_ != State::AtEnd) {
    current_ = state_ == State::BeforeFirst ? first_ : current_->next;
    state_ = current_ != nullptr ? State::OnRow : State::AtEnd;
  }
  return state_ == State::OnRow ? kRow : kNoMoreRows;
}

int zel_db_result_t::find(const char* name) const {
  for (size_t i = 0; i < width_; ++i) {
    if ((*names_)[i] == name) return static_cast<int>(i);
  }
  return -1;
}

int zel_db_result_t::convert(const Cell& cell, CellType type, uint64_t* bits) {
  std::optional<uint64_t> value;
  if (type == CellType::Real) value = cut_to_integer(cell.real);
  if (type == CellType::Text) value = parse_decimal(bytes_of(cell));
  if (!value) return kNotConvertible;
  *bits = *value;
  return kOk;
}

std::string_view zel_db_result_t::text_of(const Cell& cell, CellType type, Scratch& scratch) {
  if (type == CellType::Real) return decimal(cell.real, scratch);
  if (type == CellType::Unsigned) return decimal(static_cast<uint64_t>(cell.integer), scratch);
  return decimal(cell.integer, scratch);
}
