// SPDX-License-Identifier: Apache-2.0
//
// For a build without libpci.
#include "scan/pci_functions.h"

namespace zeldb::scan {

bool can_read_functions() {
  return false;
}

Functions read_functions(const Machine& /*machine*/, const PciQuestion& /*question*/, Findings& findings) {
  findings.troubles.emplace_back("PCI functions: this build has no libpci");
  return {};
}

}  // namespace zeldb::scan
