// SPDX-License-Identifier: Apache-2.0
//
// What a registry of attributes and the BIOS resources have to agree on.
#ifndef CLI_REDFISH_ATTRIBUTES_H
#define CLI_REDFISH_ATTRIBUTES_H

#include <string>
#include <string_view>
#include <vector>

#include "cli/redfish/machine.h"
#include "cli/redfish/tree.h"

namespace zeldb::cli::redfish {

// "Integer", "Enumeration", "Password" or "String".
const char* attribute_type(const PCISetting_info& setting);

// A value of the column as the attribute's type has it: a secret and what is not known are null.
Json attribute_value(const Machine& machine, const PCISetting_info& setting, std::string_view column,
                     const std::string& value);

std::vector<std::string> choices_of(const PCISetting_info& setting);

}  // namespace zeldb::cli::redfish

#endif
