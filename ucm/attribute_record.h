// SPDX-License-Identifier: Apache-2.0
#ifndef UCM_ATTRIBUTE_RECORD_H
#define UCM_ATTRIBUTE_RECORD_H

#include <cstdint>

#include "platform/cmr.h"
#include "zeldb/ucm.h"

namespace zeldb {

bool ends_list(const cmr_bios_attribute& attribute);

uint32_t function_key_of(const cmr_bios_attribute& attribute);

// What the service knows of the attribute itself; key, id and values are the driver's.
void describe(const cmr_bios_attribute& attribute, PCISetting_info& record);

}  // namespace zeldb

#endif
