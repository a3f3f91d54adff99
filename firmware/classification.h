// SPDX-License-Identifier: Apache-2.0
#ifndef FIRMWARE_CLASSIFICATION_H
#define FIRMWARE_CLASSIFICATION_H

#include <cstdint>

#include "db/row.h"
#include "zeldb/firmware.h"

namespace zeldb {

// "Unknown" for a code that is not assigned.
const char* classification_text(uint16_t code);

// Reads a Classification column of Firmwares into the image's code and text.
void read_classification(const Row& row, int column, _ZELDB_AdapterFirmware& image);

}  // namespace zeldb

#endif
