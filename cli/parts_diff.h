// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_PARTS_DIFF_H
#define CLI_PARTS_DIFF_H

#include <vector>

#include "cli/parts.h"

namespace zeldb::cli {

// A change of one part. Texts that are too long are cut.
struct Difference {
  char Change[9];
  char Kind[17];
  char Place[97];
  char PartNo[65];
  char SerialNo[65];
  char PreviousSerialNo[65];
  char Detail[257];
  char Name[129];
};

// Both lists are sorted by comes_before. The changes come in the order of the parts:
//   added, removed
//   moved     a part with the same serial number in another place
//   replaced  another serial number; if one of the two is not known, another address, model or part number
//   shrank    the same part with less memory, capacity, cores or bays
//   changed   the same part with other firmware, or anything else that is known of both and differs
// A part on an adapter that was added, removed or replaced itself is not listed.
std::vector<Difference> differences(const std::vector<Part>& before, const std::vector<Part>& now);

}  // namespace zeldb::cli

#endif
