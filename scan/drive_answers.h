// SPDX-License-Identifier: Apache-2.0
//
// Answers of the drives of the running system; a recorded machine has none.
#ifndef SCAN_DRIVE_ANSWERS_H
#define SCAN_DRIVE_ANSWERS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zeldb::scan {

// Asks libudev, whose rules have asked the drive itself: its model is not cut to the width of SCSI.
struct UdevAnswer {
  std::optional<std::string> model, serial, firmware, unique_id, rotation_rate;
};
UdevAnswer ask_udev(const std::string& block);
// udev writes a character that is no letter or digit as "\x20".
std::string without_escapes(const std::string& text);

struct NvmeHealth {
  unsigned warning;  // bits
  unsigned celsius;
  unsigned life_left;  // percent; 0 also for a drive that is used beyond its rated life
};
// Decodes the page "SMART / health information"; nothing if it is too short or has no temperature.
std::optional<NvmeHealth> decode_nvme_health(std::string_view page);

struct NvmeAnswer {
  std::optional<NvmeHealth> health;
  std::optional<std::string> trouble;  // why it could not be asked
};
// Asks a controller such as "nvme0" through libnvme.
NvmeAnswer ask_nvme(const std::string& controller);

// Whether this build has libudev, and libnvme.
bool can_ask_udev();
bool can_ask_nvme();

}  // namespace zeldb::scan

#endif
