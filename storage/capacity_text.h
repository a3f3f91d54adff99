// SPDX-License-Identifier: Apache-2.0
#ifndef STORAGE_CAPACITY_TEXT_H
#define STORAGE_CAPACITY_TEXT_H

#include <cstdint>

namespace zeldb {

enum class Gigabytes { CutOff, Rounded };

// "960GB", "3.84TB": decimal units, whole gigabytes below 1001 of them.
void format_capacity(char (&to)[17], uint64_t bytes, Gigabytes whole);

}  // namespace zeldb

#endif
