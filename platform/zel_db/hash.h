// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_HASH_H
#define ZEL_DB_HASH_H

#include <cstdint>
#include <cstring>
#include <string_view>

namespace zel_db {

inline uint64_t mix(uint64_t hash, uint64_t word) {
  hash = (hash ^ word) * 0x9E3779B97F4A7C15U;
  return hash ^ (hash >> 32U);
}

inline uint64_t load_word(const char* p) {
  uint64_t word = 0;
  std::memcpy(&word, p, sizeof word);
  return word;
}

// The up to 8 bytes at p, without a call for copying a few of them.
inline uint64_t load_short(const char* p, size_t size) {
  uint64_t word = 0;
  for (size_t i = 0; i < size; ++i) word = word << 8U | static_cast<unsigned char>(p[i]);
  return word;
}

// Templates are a kilobyte long and hashed for each call: four sums of eight bytes each go side by side, so
// that none waits for another, and the last bytes are taken once more rather than one by one.
inline uint64_t hash_of(std::string_view text, uint64_t seed = 0) {
  const char* p = text.data();
  const size_t size = text.size();
  uint64_t hash = mix(seed, size);
  if (size < 8) return mix(hash, load_short(p, size));
  size_t i = 0;
  if (size >= 64) {
    uint64_t sums[4] = {hash, ~hash, hash + size, hash - size};
    for (; i + 32 < size; i += 32) {
      for (size_t lane = 0; lane < 4; ++lane) sums[lane] = mix(sums[lane], load_word(p + i + 8 * lane));
    }
    hash = mix(mix(sums[0], sums[1]), mix(sums[2], sums[3]));
  }
  for (; i + 8 < size; i += 8) hash = mix(hash, load_word(p + i));
  return mix(hash, load_word(p + size - 8));
}

// Tells most names apart by their ends.
inline uint64_t hash_of_name(std::string_view name) {
  const size_t size = name.size();
  if (size < 8) return mix(size, load_short(name.data(), size));
  return mix(load_word(name.data()) + size, load_word(name.data() + size - 8));
}

}  // namespace zel_db

#endif
