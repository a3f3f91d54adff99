// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_SLOTS_H
#define CLI_SLOTS_H

#include <cstdint>
#include <vector>

namespace zeldb::cli {

// One slot, joined from several lists of the library.
struct SlotRow {
  uint8_t Location;
  uint16_t SlotNo;
  uint32_t PCIKey;  // 0 without an adapter
  uint32_t FunKey;  // of the first function
  char Address[17];
  char CardName[129];
  char SerialNo[33];
  char FirmwareVersion[33];
  uint8_t HealthStatus;
  uint32_t Functions;  // how many; 0: there is no key
  uint32_t Ports;
  uint32_t PortsUp;
};

// The slots by location and number; unknown values are 0 or empty. Read once in a run.
std::vector<SlotRow> read_slots();

}  // namespace zeldb::cli

#endif
