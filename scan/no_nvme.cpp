// SPDX-License-Identifier: Apache-2.0
//
// For a build without libnvme.
#include "scan/drive_answers.h"

namespace zeldb::scan {

bool can_ask_nvme() {
  return false;
}

NvmeAnswer ask_nvme(const std::string& /*controller*/) {
  return {};
}

}  // namespace zeldb::scan
