// SPDX-License-Identifier: Apache-2.0
#include <libudev.h>

#include <memory>

#include "scan/drive_answers.h"

namespace zeldb::scan {

bool can_ask_udev() {
  return true;
}

UdevAnswer ask_udev(const std::string& block) {
  const std::unique_ptr<udev, udev* (*)(udev*)> context(udev_new(), udev_unref);
  const std::unique_ptr<udev_device, udev_device* (*)(udev_device*)> device(
      udev_device_new_from_subsystem_sysname(context.get(), "block", block.c_str()), udev_device_unref);
  if (!device) return {};
  const auto property = [&device](const char* name) -> std::optional<std::string> {
    const char* const value = udev_device_get_property_value(device.get(), name);
    if (value == nullptr) return std::nullopt;
    return value;
  };
  UdevAnswer answer;
  answer.model = property("ID_MODEL_ENC");
  answer.serial = property("ID_SERIAL_SHORT");
  answer.firmware = property("ID_REVISION");
  answer.unique_id = property("ID_WWN");
  answer.rotation_rate = property("ID_ATA_ROTATION_RATE_RPM");
  if (answer.model) *answer.model = without_escapes(*answer.model);
  return answer;
}

}  // namespace zeldb::scan
