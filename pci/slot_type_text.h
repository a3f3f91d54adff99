// SPDX-License-Identifier: Apache-2.0
#ifndef PCI_SLOT_TYPE_TEXT_H
#define PCI_SLOT_TYPE_TEXT_H

#include <cstdint>

namespace zeldb {

// The text of a slot type as SMBIOS system slots (type 9) number them.
const char* slot_type_text(uint32_t code);

}  // namespace zeldb

#endif
