// SPDX-License-Identifier: Apache-2.0
#include "storage/drive_completion.h"

#include "db/code_text.h"
#include "db/codes.h"
#include "db/filter.h"
#include "db/tables.h"
#include "storage/drive_bays.h"
#include "storage/place.h"

namespace zeldb {

namespace {

constexpr CodeText kDriveTypes[] = {{kSata, "SATA"},       {kSas, "SAS"},         {kNvme, "NVMe"},
                                    {kM2Sata, "M.2 SATA"}, {kM2Nvme, "M.2 NVMe"}, {k7mmSata, "7MM SATA"},
                                    {k7mmNvme, "7MM NVMe"}};
static_assert(is_code_table(kDriveTypes));

constexpr uint8_t kOnboard = 3;
constexpr uint8_t kNoSlot = 0xFF;
constexpr uint8_t kHealthUnknown = 2;
constexpr uint16_t kNoSensor = 0xFFFF;

// The first drives of a list, as many as there are bay numbers, are each looked up by their place. In a
// longer list places repeat, and their answers are used again.
constexpr unsigned kLookedUpEach = 256;

}  // namespace

int read_onboard_controllers(_zel_db_handle_t* handle, std::vector<OnboardController>& controllers) {
  static constexpr const char* kColumns[] = {"SlotNo", "FunKey"};
  const Filter<128> filter = own_controllers();
  Result result;
  const int status =
      query(handle, {.table = tables::kFunctions, .columns = kColumns, .where = filter}, result);
  if (status != ZELDB_OK) return status;
  while (result.next()) {
    const auto slot = result.row().number<uint8_t>(0, kNoSlot);
    if (slot != kNoSlot) controllers.push_back({slot, result.row().number(1)});
  }
  return ZELDB_OK;
}

DriveCompletion::DriveCompletion(_zel_db_handle_t* handle) : handle_(handle) {
  static constexpr const char* kColumns[] = {"SlotNo", "HealthStatusId"};
  const Filter<64> drives("HardwareTypeId IN (%d,%d,%d)", 2, 21, 22);
  Result result;
  if (query(handle, {.table = tables::kSensors, .columns = kColumns, .where = drives}, result) != ZELDB_OK)
    return;
  while (result.next()) {
    uint32_t slot = 0;
    if (result.row().read(0, slot) == ZELDB_OK)
      health_[static_cast<uint16_t>(slot)] = result.row().number<uint8_t>(1);
  }
}

void DriveCompletion::find_function_key(aim_disk_info_t& disk) {
  const bool anew = ++looked_up_ <= kLookedUpEach;
  auto slot = static_cast<uint8_t>(disk.BayNo);
  if (disk.LocationId == kInM2Bay || disk.LocationId == kIn7mmBay) {
    auto& wiring = disk.LocationId == kInM2Bay ? m2_wiring_ : wiring_7mm_;
    if (anew || !wiring) wiring.emplace(disk.LocationId);
    wiring->find_slot(disk.BayNo, slot);
  }
  const uint32_t location = disk.LocationId == kInBay ? kInBay : kInSlot;
  const auto [known, is_new] = function_keys_.try_emplace(location << 8 | slot, 0);
  uint32_t& key = known->second;
  if (anew || is_new) {
    key = 0;
    zeldb_get_nvme_drv_funkey(location, slot, &key);
  }
  disk.PCIFuncKey = key;
}

bool DriveCompletion::is_edsff(const aim_disk_info_t& disk, int drive_type) {
  if (disk.LocationId != kInBay || drive_type != kNvme) return false;
  if (!edsff_bays_) {
    std::vector<uint8_t> bays;
    read_drive_bays(BayMode::Edsff, bays);
    edsff_bays_.emplace();
    for (const uint8_t bay : bays) edsff_bays_->set(bay);
  }
  return disk.BayNo < edsff_bays_->size() && edsff_bays_->test(disk.BayNo);
}

void DriveCompletion::find_controller(aim_disk_info_t& disk) {
  if (!controllers_) {
    std::vector<OnboardController> controllers;
    read_onboard_controllers(handle_, controllers);
    controllers_.emplace();
    // The first of several in a slot counts.
    for (const auto& [slot, function_key] : controllers) controllers_->emplace(slot, function_key);
  }
  const auto controller = controllers_->find(disk.SlotNo);
  if (controller == controllers_->end()) return;
  disk.CtrlType = kOnboard;
  disk.PCIFuncKey = controller->second;
}

DriveCompletion::Sensor DriveCompletion::sensor_of(const aim_disk_info_t& disk, int drive_type, bool edsff) {
  static constexpr uint16_t kM2Sensors = 128, k7mmSensors = 192;
  switch (disk.LocationId) {
    case kInSlot: {
      const uint32_t carried = drive_type == k7mmNvme ? AimDiskFormBay : AimDiskFormCard;
      return {kNoSensor, drive_type == kM2Nvme ? uint32_t{AimDiskFormM2} : carried};
    }
    case kInBay:
      return {disk.BayNo, edsff ? AimDiskFormEdsff : form_factor_of_bay(disk.BayNo)};
    case kInM2Bay:
      return {static_cast<uint16_t>(disk.BayNo + kM2Sensors), AimDiskFormM2};
    case kIn7mmBay:
      return {static_cast<uint16_t>(disk.BayNo + k7mmSensors), AimDiskFormBay};
    default:
      return {kNoSensor, AimDiskFormNone};
  }
}

void DriveCompletion::complete(aim_disk_info_t& disk, int drive_type) {
  if (disk.PCIFuncKey == 0) find_function_key(disk);
  const bool edsff = is_edsff(disk, drive_type);
  if (drive_type >= kM2Sata && drive_type <= k7mmNvme) find_controller(disk);
  const Sensor sensor = sensor_of(disk, drive_type, edsff);
  disk.FormFactor = sensor.form_factor;
  const auto health = health_.find(sensor.key);
  disk.HealthStatus = health != health_.end() ? health->second : kHealthUnknown;
  const auto code = static_cast<uint32_t>(drive_type);
  copy_text(disk.DriveType, edsff ? "EDSFF NVMe" : text_of(kDriveTypes, code, "Unknown"));
  disk.DriveTypeId = static_cast<uint8_t>(drive_type);
}

}  // namespace zeldb
