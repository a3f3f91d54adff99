// SPDX-License-Identifier: Apache-2.0
//
// The functions that the transcripts call.
#include <cstring>

#include "firmware/classification.h"
#include "tests/support/transcript.h"
#include "zeldb/firmware.h"

namespace zeldb_test {

ZELDB_RECORD(_ZELDB_PldmFirmware, DeviceName, DeviceType, PCIKey, PCIFuncKey, Location, SlotNo, Manufacture,
             SoftwareID, VersionString, PendingVersionString, PkgVersionString, ReleaseDate,
             PendingReleaseDate, UpdateSupport, Updated, UpdateMethod, UpdateAuxInfo, UpdateErrCode,
             UpdateErrString, Status);
ZELDB_RECORD(_ZELDB_AdapterFirmware, FirmwareName, VersionString, Description, ReleaseDate, Classification,
             ClassificationText, Manufacture, SoftwareID);
ZELDB_RECORD(_ZELDB_EmbeddedFirmware, DeviceName, DeviceIndex, StructRev, Version, SoftwareID, Class,
             Category, SubCategory, Checksum);
ZELDB_RECORD(_ZELDB_PCIVpdInfo, UUID, ProductName, Manufacture, SerialNo, PartNo, Model, FRUNo);
ZELDB_RECORD(retimer_fw_req_t, RequestBlock, FirstValue32, SecondValue32, FirstValue16, SecondValue16);
ZELDB_RECORD(retimer_fw_progress_t, Stage, Progress);
ZELDB_RECORD(_ZELDB_DpuLog, _id, Timestamp, GenID, Message);

namespace {

int adapter_list(int key, _ZELDB_AdapterFirmware* image, int only_update) {
  _ZELDB_AdapterFirmware_List list = {1, image};
  return zeldb_update_adapter_firmware_list(key, &list, only_update);
}

int no_images(int key) {
  _ZELDB_AdapterFirmware_List list = {};
  return zeldb_update_adapter_firmware_list(key, &list, 0);
}

int classifications(_ZELDB_AdapterFirmware_List* list) {
  const char* const kColumn[] = {"Classification"};
  return zeldb::read_list(zeldb::inventory(), list, {.table = "Firmwares", .columns = kColumn},
                          [](const zeldb::Row& row, _ZELDB_AdapterFirmware& image) {
                            zeldb::read_classification(row, 0, image);
                            return zeldb::Next::Keep;
                          });
}

int downstream_ids(int location, int slot, Buffer* text, int* count) {
  char ids[8][32] = {"untouched"};
  const int status =
      zeldb_get_pldm_downstream_software_ids(location, slot, text != nullptr ? ids : nullptr, count);
  const Side ours(false);
  std::string all;
  for (const char* id : ids) all += std::string(id) + ",";
  if (text != nullptr) std::strcpy(*text, all.c_str());
  return status;
}

}  // namespace

#define F(function) ZELDB_CALL(function)
const Family kFamily = {
    ZELDB_TRANSCRIPTS,
    calls(F(zeldb_get_pldm_firmware_list), F(zeldb_get_filtered_pldm_firmware_list),
          F(zeldb_get_pldm_firmware_pending_list), F(zeldb_get_pldm_firmware_updated_list),
          F(zeldb_get_pldm_firmware_update_failure_list), F(zeldb_get_pldm_firmware_update_success_list),
          F(zeldb_get_pldm_firmware_marvell_ctrl_list), F(zeldb_get_pldm_firmware),
          F(zeldb_update_pldm_firmware), F(zeldb_clear_all_pldm_firmware_pending_status),
          F(zeldb_clear_pldm_firmware_by_type), F(zeldb_insert_or_update_pldm_firmware),
          F(zeldb_update_firmware), F(zeldb_update_firmware_release_date),
          call("firmware_version", into_buffer<zeldb_get_firmware_version, int, int>),
          F(zeldb_update_adapter_firmware_list), F(adapter_list), F(no_images),
          F(zeldb_insert_or_update_firmware_info), F(downstream_ids), F(zeldb_insert_or_update_vpd_info),
          F(zeldb_get_embedded_firmware_list), F(zeldb_insert_or_update_embedded_firmware_info),
          F(zeldb_clear_all_embedded_firmware_info), F(zeldb_get_dpu_keys), F(zeldb_update_dpu_uefi_version),
          F(dpu_clear_logs_by_slot), F(dpu_insert_log), F(dpu_get_log_by_slot), F(classifications),
          F(retimer_update_fw), F(retimer_get_fw_update_progress)),
    "PCI"};

}  // namespace zeldb_test
