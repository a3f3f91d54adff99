// SPDX-License-Identifier: Apache-2.0
//
// What the transcripts call.
#include <cstdio>

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
          F(zeldb_update_aim_disk_ctrl_type), F(zeldb_add_update_nvme_aim_disk))};

}  // namespace zeldb_test
