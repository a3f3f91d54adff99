// SPDX-License-Identifier: Apache-2.0
#ifndef STORAGE_DRIVE_COMPLETION_H
#define STORAGE_DRIVE_COMPLETION_H

#include <bitset>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "db/read.h"
#include "storage/drive_bays.h"
#include "zeldb/storage.h"

namespace zeldb {

struct OnboardController {
  uint8_t slot;
  uint32_t function_key;
};

// Reads the storage controllers on the board. Returns a status; controllers that were read before a failure
// stay.
int read_onboard_controllers(_zel_db_handle_t* handle, std::vector<OnboardController>& controllers);

// Completes the drives of one read with what their table does not hold. Health is read at once, other data
// when a drive first needs them.
class DriveCompletion {
 public:
  explicit DriveCompletion(_zel_db_handle_t* handle);

  // Uses LocationId, BayNo, SlotNo and PCIFuncKey of the row of the drive.
  void complete(aim_disk_info_t& disk, int drive_type);

 private:
  struct Sensor {
    uint16_t key;
    uint32_t form_factor;
  };

  void find_function_key(aim_disk_info_t& disk);
  bool is_edsff(const aim_disk_info_t& disk, int drive_type);
  void find_controller(aim_disk_info_t& disk);
  static Sensor sensor_of(const aim_disk_info_t& disk, int drive_type, bool edsff);

  _zel_db_handle_t* handle_;
  std::map<uint16_t, uint8_t> health_;
  std::optional<std::map<uint16_t, uint32_t>> controllers_;  // function keys by slot
  std::optional<std::bitset<256>> edsff_bays_;
  unsigned looked_up_ = 0;
  std::optional<BayWiring> m2_wiring_, wiring_7mm_;
  std::map<uint32_t, uint32_t> function_keys_;  // by location and slot
};

}  // namespace zeldb

#endif
