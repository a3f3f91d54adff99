// SPDX-License-Identifier: Apache-2.0
#include "zel_db/arena.h"

namespace zel_db {

void Arena::grow(size_t size) {
  const size_t block = std::max(block_, size);
  blocks_.push_back(std::unique_ptr<char[]>(new char[block]));  // make_unique would clear it
  next_ = blocks_.back().get();
  end_ = next_ + block;
  block_ = std::min(block_ * 2, kLargestBlock);
}

}  // namespace zel_db
