// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_SMALL_VECTOR_H
#define ZEL_DB_SMALL_VECTOR_H

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>
#include <type_traits>

namespace zel_db {

// A sequence of plain data whose first elements are part of the object: the texts of an ordinary call need no
// allocation, and appending only copies.
template <class T, size_t N>
class SmallVector {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  SmallVector() = default;
  ~SmallVector() = default;
  SmallVector(const SmallVector&) = delete;
  SmallVector& operator=(const SmallVector&) = delete;

  T* begin() { return data_; }
  T* end() { return data_ + size_; }
  const T* begin() const { return data_; }
  const T* end() const { return data_ + size_; }
  T& operator[](size_t index) { return data_[index]; }
  const T& operator[](size_t index) const { return data_[index]; }
  T& back() { return data_[size_ - 1]; }
  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  void clear() { size_ = 0; }

  // Makes room for count more elements.
  void reserve_more(size_t count) {
    if (count > capacity_ - size_) grow(count);
  }
  void push_back(const T& value) {
    reserve_more(1);
    data_[size_++] = value;
  }
  void append(const T* values, size_t count) {
    reserve_more(count);
    if (count != 0) std::memcpy(data_ + size_, values, count * sizeof(T));
    size_ += count;
  }
  void append(std::string_view text) requires std::is_same_v<T, char> { append(text.data(), text.size()); }
  std::string_view view(size_t start = 0) const requires std::is_same_v<T, char> {
    return {data_ + start, size_ - start};
  }

 private:
  void grow(size_t count) {
    const size_t capacity = std::max(2 * capacity_, size_ + count);
    std::unique_ptr<T[]> larger(new T[capacity]);  // make_unique would clear it
    std::memcpy(static_cast<void*>(larger.get()), data_, size_ * sizeof(T));
    heap_ = std::move(larger);
    data_ = heap_.get();
    capacity_ = capacity;
  }

  T* data_ = first_;
  size_t size_ = 0;
  size_t capacity_ = N;
  std::unique_ptr<T[]> heap_;
  T first_[N];
};

}  // namespace zel_db

#endif
