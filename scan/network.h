// SPDX-License-Identifier: Apache-2.0
//
// Network interfaces of PCI functions. Virtual ones, and those of other buses, have no place in the tables.
#ifndef SCAN_NETWORK_H
#define SCAN_NETWORK_H

#include "scan/machine.h"
#include "scan/pci_functions.h"
#include "scan/rows.h"

namespace zeldb::scan {

void read_network(const Machine& machine, const Functions& functions, Findings& findings);

}  // namespace zeldb::scan

#endif
