// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_ARENA_H
#define ZEL_DB_ARENA_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace zel_db {

// Memory that is released as a whole. The first block is part of the object, so that the result of a keyed
// read costs one allocation.
class Arena {
 public:
  Arena() : next_(first_), end_(first_ + sizeof first_) {}
  ~Arena() = default;
  Arena(const Arena&) = delete;
  Arena& operator=(const Arena&) = delete;

  // Aligned for an int64_t.
  void* allocate(size_t size) {
    const size_t skipped = -reinterpret_cast<uintptr_t>(next_) % kAlignment;
    if (static_cast<size_t>(end_ - next_) < skipped || size > static_cast<size_t>(end_ - next_) - skipped) {
      grow(size);  // to an aligned place
    } else {
      next_ += skipped;
    }
    return allocate_bytes(size);
  }

  char* allocate_bytes(size_t size) {
    if (size > static_cast<size_t>(end_ - next_)) grow(size);
    char* place = next_;
    next_ += size;
    return place;
  }

 private:
  static constexpr size_t kAlignment = alignof(int64_t);
  static constexpr size_t kLargestBlock = size_t{256} * 1024;

  void grow(size_t size);

  char* next_;
  char* end_;
  size_t block_ = size_t{4} * 1024;
  std::vector<std::unique_ptr<char[]>> blocks_;
  alignas(kAlignment) char first_[768];
};

}  // namespace zel_db

#endif
