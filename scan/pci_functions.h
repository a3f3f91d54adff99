// SPDX-License-Identifier: Apache-2.0
//
// PCI functions of all domains, by libpci.
#ifndef SCAN_PCI_FUNCTIONS_H
#define SCAN_PCI_FUNCTIONS_H

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "scan/machine.h"
#include "scan/rows.h"
#include "scan/smbios.h"

namespace zeldb::scan {

struct Address {
  unsigned segment = 0;
  unsigned bus = 0;
  unsigned device = 0;
  unsigned function = 0;
  friend bool operator<(const Address& one, const Address& other) {
    return std::tie(one.segment, one.bus, one.device, one.function) <
           std::tie(other.segment, other.bus, other.device, other.function);
  }
  friend bool operator==(const Address& one, const Address& other) = default;
};
std::string text_of(const Address& address);
// The address that a text such as "0000:17:00.1" gives.
std::optional<Address> address_of(std::string_view text);
// The last function that a path in sys/devices leads through.
std::optional<Address> function_on_path(const std::string& path);

// The place of a function. On the board it has no slot number, because no source gives one.
struct Placement {
  unsigned location = 0;
  std::optional<unsigned> slot;
  Value designation, type, width, hotplug;
};

struct Function {
  unsigned key;
  Placement placement;
};
using Functions = std::map<Address, Function>;

std::optional<uint64_t> adapter_key(const Placement& placement);

// Reads the read-only part of a device's vital product data. Takes any bytes; nothing if the data are damaged
// or their checksum is wrong.
struct Vpd {
  std::string name, part, serial, maker;
};
std::optional<Vpd> decode_vpd(std::string_view bytes);

struct PciQuestion {
  std::string dump;                   // a file with the output of lspci -x; empty: the machine
  std::vector<Slot> slots;            // of the SMBIOS table
  bool hides_slots = false;           // there is such a table, but it cannot be read
  std::map<Address, Placement> last;  // where functions were at the last scan, for what hides its slots
};

// Also returns the functions, because other sources refer to them.
Functions read_functions(const Machine& machine, const PciQuestion& question, Findings& findings);

// Whether this build has libpci.
bool can_read_functions();

}  // namespace zeldb::scan

#endif
