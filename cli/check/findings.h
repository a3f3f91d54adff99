// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_CHECK_FINDINGS_H
#define CLI_CHECK_FINDINGS_H

#include <vector>

#include "cli/check/policy.h"

namespace zeldb::cli::checks {

// A problem that a rule has found. Texts that are too long are cut.
struct Fault {
  checks::Severity level;
  char Severity[9];
  char Kind[17];
  char Place[97];
  char Finding[257];
};

// Worst first; otherwise in the order of the rules. Throws Failure when a part of the inventory, or the
// policy's baseline, cannot be read.
std::vector<Fault> findings(const Policy& policy);

}  // namespace zeldb::cli::checks

#endif
