// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_REDFISH_PCIE_H
#define CLI_REDFISH_PCIE_H

#include "cli/redfish/machine.h"
#include "cli/redfish/tree.h"

namespace zeldb::cli::redfish {

constexpr uint8_t kInSlot = 1;  // a location

// The slot of a function, without links.
Json slot_of(const Machine& machine, const _ZELDB_PCI_Generic_Info& function);

// The PCIe link of an adapter, which several resources show.
Json interface_of(const Machine& machine, const _ZELDB_PCI_Generic_Info& function);

}  // namespace zeldb::cli::redfish

#endif
