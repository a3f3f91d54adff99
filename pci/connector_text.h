// SPDX-License-Identifier: Apache-2.0
#ifndef PCI_CONNECTOR_TEXT_H
#define PCI_CONNECTOR_TEXT_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "db/code_text.h"

namespace zeldb {

// The connector layout codes of adapters and of physical ports agree on the sockets and on the vendor's own
// connectors. They differ between and above these.
inline constexpr CodeText kSocketConnectors[] = {
    {2, "RS232"},
    {3, "BNC"},
    {4, "RJ11"},
    {5, "RJ45"},
    {6, "DB9"},
    {7, "Slot"},
    {8, "SCSI High Density"},
    {9, "SCSI Low Density"},
    {10, "Ribbon"},
    {11, "AUI"},
    {12, "Fiber SC"},
    {13, "Fiber ST"},
    {14, "FDDI-MIC"},
    {15, "Fiber-RTMJ"},
};

inline constexpr uint32_t kConnectorPciExpress = 18;
inline constexpr uint32_t kConnectorOnboard = 0x8004;

inline constexpr CodeText kMakerConnectors[] = {
    {0x8000, "Quillan Mezzanine Connector"}, {0x8001, "Quillan Mid-Mezzanine Connector"},
    {0x8002, "Corvexa CFFh Connector"},      {0x8003, "Corvexa CIOv Connector"},
    {kConnectorOnboard, "Onboard"},
};

// Joins the parts into one table, in order.
template <size_t... N>
constexpr auto joined(const CodeText (&... parts)[N]) {
  std::array<CodeText, (N + ...)> table{};
  size_t next = 0;
  const auto append = [&](const auto& part) {
    for (const CodeText& entry : part) table[next++] = entry;
  };
  (append(parts), ...);
  return table;
}

inline constexpr size_t kCodeTextSize = 65;

// The text of an adapter's connector layout code.
const char* pci_connector_type_text(uint32_t code);

}  // namespace zeldb

#endif
