// SPDX-License-Identifier: Apache-2.0
#ifndef DB_OWNERS_H
#define DB_OWNERS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <type_traits>
#include <utility>

#include "db/row.h"
#include "platform/zel_db.h"
#include "zeldb/status.h"

namespace zeldb {

class Result {
 public:
  Result() = default;
  Result(const Result&) = delete;
  Result(Result&& other) noexcept : result_(std::exchange(other.result_, nullptr)) {}
  Result& operator=(const Result&) = delete;
  Result& operator=(Result&&) = delete;
  ~Result() { free(); }

  zel_db_result_t** out() { return &result_; }
  zel_db_result_t* get() const { return result_; }
  explicit operator bool() const { return result_ != nullptr; }

  int step() { return zel_db_result_step(result_); }
  // Nothing if the next row is ready, or else the status of the step.
  std::optional<int> no_row() {
    const int status = step();
    return status != ZELDB_ROW ? std::optional(status) : std::nullopt;
  }
  bool next() { return result_ != nullptr && step() == ZELDB_ROW; }
  unsigned row_count() { return zel_db_result_row_count(result_); }
  int reset() { return zel_db_result_reset(result_); }
  Row row() const { return Row(result_); }
  void free() {
    if (result_ != nullptr) zel_db_free_result(std::exchange(result_, nullptr));
  }

 private:
  zel_db_result_t* result_ = nullptr;
};

// A connection that is opened for one call and closed on every path.
class Connection {
 public:
  explicit Connection(const char* database) : handle_(zel_db_open(kServer, "root", "", database, 0)) {}
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    if (handle_ != nullptr) zel_db_close(handle_);
  }

  explicit operator bool() const { return handle_ != nullptr; }
  _zel_db_handle_t* get() const { return handle_; }
  int run(const std::string& statement) const { return run(statement, nullptr); }
  int run(const std::string& statement, Result& rows) const { return run(statement, rows.out()); }

 private:
  int run(const std::string& statement, zel_db_result_t** rows) const {
    return zel_db_raw_query(handle_, statement.c_str(), static_cast<int>(statement.size()), rows);
  }

  static constexpr const char* kServer = "localhost";
  _zel_db_handle_t* handle_;
};

class PropertyDatabase : public Connection {
 public:
  PropertyDatabase() : Connection("propertiesdb") {}
};

// An array on its way to a caller, who releases it with free(). Its records are zeroed, so that none hands
// out what the heap held before. Each is zeroed just before its first use: if all were zeroed at once, the
// cache would have lost a record by the time it is filled. A large array comes zeroed from the system, and
// its unused part takes no memory.
template <typename T>
class MallocArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  // False if memory is short.
  bool allocate(size_t count) {
    if (count > PTRDIFF_MAX / sizeof(T)) return false;
    const bool is_large = count * sizeof(T) >= kMapped;
    const size_t size = std::max<size_t>(count, 1);
    items_.reset(static_cast<T*>(is_large ? std::calloc(size, sizeof(T)) : std::malloc(size * sizeof(T))));
    count_ = items_ != nullptr ? count : 0;
    zeroed_ = is_large ? count_ : 0;
    return items_ != nullptr;
  }
  T& operator[](size_t index) {
    if (index >= zeroed_) zero_until(index + 1);
    return items_.get()[index];
  }
  T* get() {
    zero_until(count_);
    return items_.get();
  }
  T* release() {
    zero_until(count_);
    return items_.release();
  }

 private:
  // The C library maps memory for arrays from this size on (M_MMAP_THRESHOLD).
  static constexpr size_t kMapped = sizeof(long) == 4 ? size_t{512} << 10 : size_t{32} << 20;

  struct Free {
    void operator()(T* items) const { std::free(items); }
  };

  void zero_until(size_t end) {
    if (end > zeroed_)
      std::memset(static_cast<void*>(items_.get() + zeroed_), 0, (end - zeroed_) * sizeof(T));
    zeroed_ = std::max(zeroed_, end);
  }

  std::unique_ptr<T, Free> items_;
  size_t count_ = 0;
  size_t zeroed_ = 0;  // number of zeroed records, from the first
};

// A list that another function fills for the use of its caller.
template <typename List>
class LocalList {
 public:
  LocalList() = default;
  LocalList(const LocalList&) = delete;
  LocalList& operator=(const LocalList&) = delete;
  ~LocalList() { std::free(list_.Items); }

  List* out() { return &list_; }
  auto count() const { return list_.Count; }
  auto items() const { return std::span(list_.Items, list_.Count); }

  template <typename Unwanted>
  void drop(Unwanted unwanted) {
    auto* const end = std::remove_if(list_.Items, list_.Items + list_.Count, unwanted);
    list_.Count = static_cast<decltype(list_.Count)>(end - list_.Items);
  }

 private:
  List list_ = {};
};

}  // namespace zeldb

#endif
