// SPDX-License-Identifier: Apache-2.0
#include "pci/hardware_location.h"

#include "db/codes.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "pci/connector_text.h"

namespace zeldb {

int get_pci_hwtype_location(_zel_db_handle_t* handle, uint32_t funKey, uint8_t* hardwareType,
                            uint32_t* location) {
  static constexpr const char* kColumns[] = {"HardwareTypeId", "Location"};
  if (handle == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<128> filter("FunKey=%d", static_cast<int>(funKey));
  return read_one(handle, {.table = tables::kFunctions, .columns = kColumns, .where = filter},
                  [&](const Row& row) {
                    *hardwareType = row.number<uint8_t>(0, kPciFunction);
                    *location = row.number(1);
                  });
}

uint32_t connector_by_location(_zel_db_handle_t* handle, uint32_t funKey) {
  uint8_t hardware_type = 0;
  uint32_t location = 0;
  if (get_pci_hwtype_location(handle, funKey, &hardware_type, &location) != ZELDB_OK) return 0;
  if (location == 0) return kConnectorOnboard;
  return location == 1 ? kConnectorPciExpress : 0;
}

}  // namespace zeldb
