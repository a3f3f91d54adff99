// SPDX-License-Identifier: Apache-2.0
//
// Rules that the attribute registry and the BIOS resources share.
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

// The value of a column in the attribute's type; null for a secret or an unknown value.
Json attribute_value(const Machine& machine, const PCISetting_info& setting, std::string_view column,
                     const std::string& value);

std::vector<std::string> choices_of(const PCISetting_info& setting);

}  // namespace zeldb::cli::redfish

#endif
