// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_FIRMWARE_ROWS_H
#define CLI_FIRMWARE_ROWS_H

#include <string>
#include <vector>

#include "zeldb/firmware.h"

namespace zeldb::cli {

// Firmware of anything. A device in no slot or bay has these numbers.
constexpr uint8_t kNoLocation = 0xFF;
constexpr uint16_t kNoSlot = 0xFFFF;
struct FirmwareRow {
  char Kind[10];
  char SoftwareID[65];
  _ZELDB_PldmFirmware Component;  // other parts fill the members that apply
};

FirmwareRow firmware_of_component(const _ZELDB_PldmFirmware& component);
// Reads the firmware of components, adapters, drives, the controller's own devices and memory modules.
std::vector<FirmwareRow> read_all_firmware();

}  // namespace zeldb::cli

#endif
