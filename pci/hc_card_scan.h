// SPDX-License-Identifier: Apache-2.0
#ifndef PCI_HC_CARD_SCAN_H
#define PCI_HC_CARD_SCAN_H

#include <algorithm>
#include <cstdint>
#include <span>

#include "zeldb/pci.h"

namespace zeldb {

struct CardIds {
  uint16_t vendor, device, sub_vendor, sub_device;
};

// The first of the cards with these ids, or null.
inline const _ZELDB_HC_Card* find_card(std::span<const _ZELDB_HC_Card> cards, const CardIds& ids) {
  const auto card = std::ranges::find_if(cards, [&](const _ZELDB_HC_Card& row) {
    return row.VendorId == ids.vendor && row.DeviceId == ids.device && row.SubVendorId == ids.sub_vendor &&
           row.SubDeviceId == ids.sub_device;
  });
  return card != cards.end() ? &*card : nullptr;
}

}  // namespace zeldb

#endif
