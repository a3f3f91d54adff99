// SPDX-License-Identifier: Apache-2.0
//
// The common shapes of a read. Which statuses end a walk well is known here and nowhere else.
#ifndef DB_READ_H
#define DB_READ_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <type_traits>

#include "db/field.h"
#include "db/owners.h"
#include "platform/zel_db.h"
#include "platform/zel_db_reads.h"
#include "zeldb/status.h"

namespace zeldb {

inline _zel_db_handle_t* inventory() {
  return get_dmdb_handle(0, nullptr, 0);
}

inline _zel_db_param_t bound(uint32_t value) {
  return {.Type = 3, .Reserved = 0, .Count = 1, .Value = value};
}
inline _zel_db_param_t bound(int32_t value) {
  return {.Type = 2, .Reserved = 0, .Count = 1, .Value = static_cast<uint64_t>(int64_t{value})};
}

// The reads of a list that asks about each of its rows are one transaction where the platform offers that.
class Reads {
 public:
  explicit Reads(_zel_db_handle_t* handle)
      : handle_(is_offered() && zel_db_begin_reads(handle) == ZELDB_OK ? handle : nullptr) {}
  Reads(const Reads&) = delete;
  Reads& operator=(const Reads&) = delete;
  ~Reads() {
    if (handle_ != nullptr) zel_db_end_reads(handle_);
  }

 private:
  static bool is_offered() { return zel_db_begin_reads != nullptr && zel_db_end_reads != nullptr; }

  _zel_db_handle_t* const handle_;
};

struct Select {
  const char* table;
  std::span<const char* const> columns;
  const char* where = nullptr;
  std::span<const _zel_db_param_t> params = {};
  const char* order = nullptr;
};

int query(_zel_db_handle_t* handle, const Select& select, Result& result);

// Whether a walk over rows ended because there are no more, or because the caller wants no more.
constexpr bool ended_well(int status) {
  return status == ZELDB_ROW || status == ZELDB_NO_MORE_ROWS;
}

// Hands at most so many rows to take, which may return a status to end the walk. Returns nothing if the walk
// ended well, or else the status that ended it.
template <typename Take>
std::optional<int> walk(Result& result, size_t most, Take take) {
  int status = ZELDB_OK;
  for (size_t taken = 0; (status = result.step()) == ZELDB_ROW && taken < most; ++taken) {
    if constexpr (std::is_void_v<decltype(take(result.row()))>) {
      take(result.row());
    } else if (const std::optional<int> ended = take(result.row())) {
      return ended;
    }
  }
  return ended_well(status) ? std::nullopt : std::optional(status);
}

// The outcome of a read of one row. A step may answer 0 without a row, so the status alone does not tell.
struct OneRow {
  int status;
  bool found;
};

// Reads one row. read takes it and returns nothing, or the status to return; without a row the status is that
// of the step.
template <typename Read>
OneRow look_for_one(_zel_db_handle_t* handle, const Select& select, Read read) {
  Result result;
  int status = query(handle, select, result);
  if (status != ZELDB_OK) return {status, false};
  if (!result) return {ZELDB_NO_MORE_ROWS, false};
  status = result.step();
  if (status != ZELDB_ROW) return {status, false};
  if constexpr (std::is_void_v<decltype(read(result.row()))>) {
    read(result.row());
    return {ZELDB_OK, true};
  } else {
    return {read(result.row()), true};
  }
}

template <typename Read>
int read_one(_zel_db_handle_t* handle, const Select& select, Read read) {
  return look_for_one(handle, select, read).status;
}

enum class Next { Keep, Skip };

// The fate of the rows read before a step failed.
enum class OnError { Discard, PublishAndFail, PublishAndSucceed };

struct ListRules {
  bool zero_first = true;  // zero the list before the query; otherwise a failed query leaves it as it was
  OnError on_error = OnError::Discard;
  bool skipped_rows_count = false;  // skipped rows use up the row count as kept ones do
  bool empty_is_not_found = false;  // if no item was kept, return the status of the last step and no array
  bool zero_ends_well = false;      // a step that answers 0 ends the rows as ZELDB_NO_MORE_ROWS does
};

template <typename List>
using ListArray = MallocArray<std::remove_pointer_t<decltype(List::Items)>>;

// Makes room for as many rows as the result counts, none for 0. False if memory is short.
template <typename T>
bool make_room(Result& result, MallocArray<T>& items) {
  const unsigned rows = result.row_count();
  return rows == 0 || items.allocate(rows);
}

// Collects the rows of a result in items, which has room for them, and hands that array to the list. take
// fills an item and keeps or skips it. Rows past the row count are left out. The list is set at the end or
// not at all, and Items stays as it is if no row was counted. A narrow Index wraps, and with it positions and
// count.
template <typename Index = uint32_t, typename List, typename Take>
int collect_into(ListArray<List>& items, Result& result, List* list, Take take, ListRules rules = {}) {
  const unsigned rows = result.row_count();
  Index count = 0;
  unsigned skipped = 0;
  int status = ZELDB_OK;
  while ((status = result.step()) == ZELDB_ROW && count + skipped < rows) {
    if (take(result.row(), items[count]) == Next::Keep) {
      ++count;
    } else if (rules.skipped_rows_count) {
      ++skipped;
    }
  }
  const bool failed = !ended_well(status) && !(rules.zero_ends_well && status == ZELDB_OK);
  if (failed && rules.on_error == OnError::Discard) return status;
  if (count == 0 && rules.empty_is_not_found) return status;
  list->Count = count;
  if (rows > 0) list->Items = items.release();
  return failed && rules.on_error == OnError::PublishAndFail ? status : ZELDB_OK;
}

template <typename Index = uint32_t, typename List, typename Take>
int collect(Result& result, List* list, Take take, ListRules rules = {}) {
  ListArray<List> items;
  if (!make_room(result, items)) return ZEL_DB_STATUS_NO_MEMORY;
  return collect_into<Index>(items, result, list, take, rules);
}

template <typename List, typename Take>
int read_list(_zel_db_handle_t* handle, List* list, const Select& select, Take take, ListRules rules = {}) {
  if (rules.zero_first) *list = {};
  Result result;
  const int status = query(handle, select, result);
  if (status != ZELDB_OK) return status;
  if (result) return collect(result, list, take, rules);
  list->Count = 0;
  return rules.empty_is_not_found ? ZELDB_NO_MORE_ROWS : ZELDB_OK;
}

// Reads every row as a record of these fields.
template <typename List, size_t N>
int read_list(_zel_db_handle_t* handle, List* list, const Select& select, const FieldTable<N>& table) {
  using Item = std::remove_pointer_t<decltype(list->Items)>;
  return read_list(handle, list, select, [&table](const Row& row, Item& record) {
    row.fill(table.fields, &record);
    return Next::Keep;
  });
}

}  // namespace zeldb

#endif
