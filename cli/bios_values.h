// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_BIOS_VALUES_H
#define CLI_BIOS_VALUES_H

#include <vector>

#include "zeldb/ucm.h"

namespace zeldb::cli {

// Gets the values that the inventory lacks from the BIOS-configuration service: a lite run of the parser
// empties them. False, and a warning, if the service does not answer and a setting has no value.
bool complete_values(std::vector<PCISetting_info>& settings);

}  // namespace zeldb::cli

#endif
