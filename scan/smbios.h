// SPDX-License-Identifier: Apache-2.0
//
// The SMBIOS table: firmware, processors with their caches, memory modules and slots. Structures may have the
// length of any version; fields after the end of one are not known.
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
  std::optional<uint32_t> segment, bus, device;  // of the device in it
  std::optional<uint16_t> number;
  std::string designation;
  std::optional<uint32_t> type, width;
  std::optional<bool> hotplug;
};

struct Smbios {
  std::vector<Row> rows;
  std::vector<Slot> slots;
};

// Takes any bytes: a damaged structure ends the table.
Smbios decode_smbios(std::string_view table);

struct SmbiosTable {
  std::optional<std::string> bytes;
  std::optional<std::string> trouble;  // there is a table, but it cannot be read
};
SmbiosTable read_smbios(const Machine& machine);

// Processors as the kernel lists them, for machines without an SMBIOS table.
std::vector<Row> read_processors(const Machine& machine);

}  // namespace zeldb::scan

#endif
