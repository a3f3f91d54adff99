// SPDX-License-Identifier: Apache-2.0
#ifndef STORAGE_PLACE_H
#define STORAGE_PLACE_H

#include <cstdint>

#include "db/code_text.h"
#include "platform/predicates.h"

namespace zeldb {

enum Place : uint32_t { kInSlot = 1, kInBay = 2, kInM2Bay = 3, kIn7mmBay = 4 };

enum DriveType : int { kSata = 1, kSas = 2, kNvme = 3, kM2Sata = 4, kM2Nvme = 5, k7mmSata = 6, k7mmNvme = 7 };

// The text of a place up to its number; null for an unknown kind.
constexpr const char* place_name(uint32_t kind) {
  constexpr CodeText kNames[] = {
      {kInSlot, "Slot "}, {kInBay, "Bay "}, {kInM2Bay, "M.2 Bay"}, {kIn7mmBay, "7MM Bay"}};
  static_assert(is_code_table(kNames));
  return text_of(kNames, kind, nullptr);
}

// The type of the NVMe drives in a kind of place, 0 for an unknown kind.
constexpr int nvme_type_in(uint32_t kind) {
  switch (kind) {
    case kInSlot:
    case kInBay:
      return kNvme;
    case kInM2Bay:
      return kM2Nvme;
    case kIn7mmBay:
      return k7mmNvme;
    default:
      return 0;
  }
}

// The second carrier of a palomir machine counts its M.2 bays from 0 again.
inline uint32_t m2_number(uint32_t number) {
  return number > 3 && is_palomir_platform() != 0 ? number - 4 : number;
}

}  // namespace zeldb

#endif
