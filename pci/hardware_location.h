// SPDX-License-Identifier: Apache-2.0
#ifndef PCI_HARDWARE_LOCATION_H
#define PCI_HARDWARE_LOCATION_H

#include <cstdint>

#include "platform/zel_db.h"

namespace zeldb {

// Hardware type (3 when it cannot be read) and location (0 when it cannot be read) of a function. A null
// handle is ZELDB_INVALID_ARGUMENT; without a row the outputs stay untouched.
int get_pci_hwtype_location(_zel_db_handle_t* handle, uint32_t funKey, uint8_t* hardwareType,
                            uint32_t* location);

// The connector layout code that stands for a function's location where none is recorded: on board or PCI
// Express; 0 when the location is not known.
uint32_t connector_by_location(_zel_db_handle_t* handle, uint32_t funKey);

}  // namespace zeldb

#endif
