// SPDX-License-Identifier: Apache-2.0
#include "storage/capacity_text.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

namespace zeldb {

void format_capacity(char (&to)[17], uint64_t bytes, Gigabytes whole) {
  static constexpr char kTerabytes[] = "TB";
  const double gigabytes = static_cast<double>(bytes) / 1e9;
  if (gigabytes < 1001.0) {
    const double shown = whole == Gigabytes::Rounded ? std::nearbyint(gigabytes) : gigabytes;
    std::snprintf(to, sizeof(to), "%dGB", static_cast<int>(shown));
    return;
  }
  // printf would take the decimal point from the locale. Even 2^64 bytes fit.
  const auto number = std::to_chars(to, to + sizeof(to) - sizeof(kTerabytes), gigabytes / 1000.0,
                                    std::chars_format::fixed, 2);
  std::memcpy(number.ptr, kTerabytes, sizeof(kTerabytes));
}

}  // namespace zeldb
