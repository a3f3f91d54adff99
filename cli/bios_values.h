// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_BIOS_VALUES_H
#define CLI_BIOS_VALUES_H

#include <vector>

#include "zeldb/ucm.h"

namespace zeldb::cli {

// Asks the BIOS-configuration service for the values that the inventory lacks: a lite run of the parser
// empties them. False, and a warning, when the service cannot be asked and a setting has no value at all.
bool complete_values(std::vector<PCISetting_info>& settings);

}  // namespace zeldb::cli

#endif
