// SPDX-License-Identifier: Apache-2.0
//
// All sources together.
#ifndef SCAN_SCAN_H
#define SCAN_SCAN_H

#include <map>
#include <set>
#include <string>

#include "scan/machine.h"
#include "scan/pci_functions.h"
#include "scan/rows.h"

namespace zeldb::scan {

struct Question {
  std::string root = "/";
  std::string pci_dump;
  std::set<std::string> only;  // none: all sources
};

// before: where functions were found by the last scan.
Findings find(const Question& question, const std::map<Address, Placement>& before);

}  // namespace zeldb::scan

#endif
