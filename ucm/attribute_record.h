// SPDX-License-Identifier: Apache-2.0
#ifndef UCM_ATTRIBUTE_RECORD_H
#define UCM_ATTRIBUTE_RECORD_H

#include <cstdint>

#include "platform/cmr.h"
#include "zeldb/ucm.h"

namespace zeldb {

bool ends_list(const cmr_bios_attribute& attribute);

uint32_t function_key_of(const cmr_bios_attribute& attribute);

// Fills in what the service tells of an attribute; key, id and values come from the driver.
void describe(const cmr_bios_attribute& attribute, PCISetting_info& record);

}  // namespace zeldb

#endif
