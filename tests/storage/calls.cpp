// SPDX-License-Identifier: Apache-2.0
//
// The functions that the transcripts call.
#include <cstdio>
#include <cstring>

#include "tests/support/transcript.h"
#include "zeldb/storage.h"

namespace zeldb_test {

ZELDB_RECORD(aim_disk_info_t, SerialNo, PCIFuncKey, SlotNo, CtrlType, BayNo, LocationId, DriveTypeId,
             FormFactor, HealthStatus, Location, DriveType, MediaType, RotationRate, FruNo, PartNo, Model,
             UUID, Manufacture, FwVersion, Capacity, SFlags, Warning, Temperature, RemainLife, InfoMask);

namespace {

// The arrays as "SLOT KEY, ...".
int controllers(Buffer* to, uint32_t* count) {
  uint8_t slots[3] = {};
  uint32_t keys[3] = {9, 9, 9};
  const int status = zeldb_get_marvell_ctrl_slots(to != nullptr ? slots : nullptr, keys, count);
  if (to != nullptr)
    std::snprintf(*to, sizeof(*to), "%u %u, %u %u, %u %u,", slots[0], keys[0], slots[1], keys[1], slots[2],
                  keys[2]);
  return status;
}

// The results of the functions for texts of a drive.
void drive_texts(Buffer* text, aim_disk_info_t* disk) {
  int date[3] = {};
  const auto* const bytes = reinterpret_cast<const uint8_t*>(disk->Model);
  get_manuf_date(bytes, &date[0], &date[1], &date[2]);
  vpd_manuf_date_to_ymd("5220", *text, sizeof(*text));
  rm_invalid_chars(disk->Model, sizeof(disk->Model));
  disk->FormFactor = static_cast<uint8_t>(std::strlen(driveModel2Manufacture(trim_drive_model(disk->Model))));
}

// Of a product area with one field.
int drive_vpd(aim_disk_info_t* disk) {
  uint8_t image[512] = {1, 0, 0, 0, 1, 0, 0, 0, 1, 8, 25, 0xC2, 'M', 'F', 0xC1};
  return parse_nvme_drive_vpd(image, sizeof(image), disk);
}

}  // namespace

#define F(function) ZELDB_CALL(function)
const Family kFamily = {
    ZELDB_TRANSCRIPTS,
    calls(F(zeldb_get_disk_list_with_filter), F(zeldb_get_nvme_disk_list_from_mi_filter),
          F(zeldb_get_disk_list), F(zeldb_get_onboard_sata_disk_list), F(zeldb_get_mv_disk_list),
          F(zeldb_get_7mm_disk_list), F(zeldb_get_m2_disk_list), F(zeldb_get_u2_aic_nvme_disk_list),
          F(zeldb_get_merged_disk_list), F(zeldb_get_disk_list_funkey), F(zeldb_get_nvme_aim_disk),
          F(zeldb_vroc_enabled), F(zeldb_get_vmd_count), F(zeldb_get_ctrl_slot), F(zeldb_get_nvme_drv_funkey),
          F(zeldb_get_mvl_ctrl_type), F(controllers), F(zeldb_get_bp_drive_count),
          F(zeldb_update_nvme_disk_firmware_version), F(zeldb_update_aim_disk_presence),
          F(zeldb_update_aim_disk_vpd_info), F(zeldb_update_aim_disk_smart_info),
          F(zeldb_update_aim_disk_ctrl_type), F(zeldb_add_update_nvme_aim_disk), F(drive_texts),
          F(drive_vpd))};

}  // namespace zeldb_test
