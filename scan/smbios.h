// SPDX-License-Identifier: Apache-2.0
//
// The SMBIOS table: firmware, processors with their caches, memory modules and slots. Structures may have the
// length of any version; what one does not reach is not told.
#ifndef SCAN_SMBIOS_H
#define SCAN_SMBIOS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "scan/machine.h"
#include "scan/rows.h"

namespace zeldb::scan {

struct Slot {
  std::optional<uint32_t> segment, bus, device;  // of what is in it
  std::optional<uint16_t> number;
  std::string designation;
  std::optional<uint32_t> type, width;
  std::optional<bool> hotplug;
};

struct Smbios {
  std::vector<Row> rows;
  std::vector<Slot> slots;
};

// Any bytes: what is damaged ends the table.
Smbios decode_smbios(std::string_view table);

struct SmbiosTable {
  std::optional<std::string> bytes;
  std::optional<std::string> trouble;  // there is a table, but it cannot be read
};
SmbiosTable read_smbios(const Machine& machine);

// For machines without such a table: what the kernel tells of its processors.
std::vector<Row> read_processors(const Machine& machine);

}  // namespace zeldb::scan

#endif
