// SPDX-License-Identifier: Apache-2.0
#include "cli/components.h"

#include "cli/library.h"

namespace zeldb::cli {

std::vector<_ZELDB_PldmFirmware> read_components() {
  static const auto components = list_of<_ZELDB_PldmFirmware_List>(
      "firmware", [](auto* list) { return zeldb_get_pldm_firmware_list(list); });
  return components;
}

bool has_failed(const _ZELDB_PldmFirmware& component) {
  return component.Updated != 0 && component.UpdateErrCode != 0;
}

bool waits(const _ZELDB_PldmFirmware& component) {
  return component.Status == kUpdateWaits;
}

}  // namespace zeldb::cli
