// SPDX-License-Identifier: Apache-2.0
#ifndef STORAGE_DECIMAL_H
#define STORAGE_DECIMAL_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace zeldb {

// The decimal number that a text begins with, or 0. A number out of range becomes the nearest one in range,
// so that all targets agree.
inline int32_t decimal(const char* text) {
  using Limits = std::numeric_limits<int32_t>;
  return static_cast<int32_t>(
      std::clamp<long long>(std::strtoll(text, nullptr, 10), Limits::min(), Limits::max()));
}

}  // namespace zeldb

#endif
