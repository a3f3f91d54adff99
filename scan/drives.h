// SPDX-License-Identifier: Apache-2.0
//
// SATA, SAS and NVMe drives. Removable, virtual and networked block devices are no drives of the machine.
#ifndef SCAN_DRIVES_H
#define SCAN_DRIVES_H

#include "scan/machine.h"
#include "scan/pci_functions.h"
#include "scan/rows.h"

namespace zeldb::scan {

// If functions is empty because they could not be read, drives have none.
void read_drives(const Machine& machine, const Functions* functions, Findings& findings);

// "960GB", "3.84TB": in decimal units.
std::string capacity_text(uint64_t bytes);

}  // namespace zeldb::scan

#endif
