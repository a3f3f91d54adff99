// SPDX-License-Identifier: Apache-2.0
//
// For a build without libudev.
#include "scan/drive_answers.h"

namespace zeldb::scan {

bool can_ask_udev() {
  return false;
}

UdevAnswer ask_udev(const std::string& /*block*/) {
  return {};
}

}  // namespace zeldb::scan
