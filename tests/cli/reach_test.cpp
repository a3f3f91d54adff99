// SPDX-License-Identifier: Apache-2.0
//
// Every reading function of the library can be reached from the command: from where, says the table here.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <regex>
#include <set>
#include <string>

#include "tests/support/texts.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;

// Commands that the transcripts in tests/cli/golden show.
const struct {
  const char* function;
  const char* command;
} kReading[] = {
    {"bps_format_fips_str", "memory --persistent"},
    {"bps_format_hstate_str", "memory --persistent"},
    {"bps_format_security_str", "memory --persistent"},
    {"dpu_get_log_by_slot", "dpu-log 12"},
    {"driveModel2Manufacture", "decode-vpd 'SAMSUNG MZQL23T8HCLS' --model"},
    {"get_gpu_pci_vpd_info", "gpus"},
    {"get_manuf_date", "decode-vpd 1a2b3c --date"},
    {"hc_card_table", "cards"},
    {"is_amd_platform", "platform"},
    {"parse_nvme_drive_vpd", "decode-vpd SAMPLES/nvme-vpd.bin"},
    {"retimer_get_fw_update_progress", "retimer 3"},
    {"rm_invalid_chars", "decode-vpd 'SAMSUNG MZQL23T8HCLS' --model"},
    {"set_missing_gpu_vpd_info", "vpd --slot 3 --published"},
    {"trim_drive_model", "decode-vpd 'SAMSUNG MZQL23T8HCLS' --model"},
    {"vpd_manuf_date_to_ymd", "decode-vpd 2320 --date"},
    {"zeldb_find_hc_card", "cards --ids"},
    {"zeldb_get_7mm_disk_list", "disks --bay 7mm"},
    {"zeldb_get_AEP_memory_list", "memory --persistent"},
    {"zeldb_get_HBM_memory_list", "memory --hbm"},
    {"zeldb_get_adapter_health_status", "slots"},
    {"zeldb_get_adapter_pcikey_by_slotNo", "slots"},
    {"zeldb_get_aic_drive_pci_info_list", "functions --nvme"},
    {"zeldb_get_all_network_logical_port_list", "ports --logical --adapter"},
    {"zeldb_get_all_network_physical_port_list", "ports --adapter"},
    {"zeldb_get_bp_drive_count", "backplanes"},
    {"zeldb_get_ctrl_slot", "functions --beside"},
    {"zeldb_get_disk_list", "disks --present"},
    {"zeldb_get_disk_list_funkey", "disks --key"},
    {"zeldb_get_disk_list_with_filter", "disks --table aim"},
    {"zeldb_get_dpu_keys", "adapters --dpus"},
    {"zeldb_get_embedded_firmware_list", "embedded"},
    {"zeldb_get_filtered_pldm_firmware_list", "firmware --where"},
    {"zeldb_get_firmware_version", "slots"},
    {"zeldb_get_gpu_chip_list", "gpus --chips"},
    {"zeldb_get_gpu_device_info", "gpus"},
    {"zeldb_get_hc_card_count", "cards"},
    {"zeldb_get_m2_disk_list", "disks --bay m2"},
    {"zeldb_get_marvell_ctrl_slots", "disks --controllers"},
    {"zeldb_get_memory_by_id", "memory"},
    {"zeldb_get_memory_by_slot", "memory --slot"},
    {"zeldb_get_memory_list", "memory"},
    {"zeldb_get_memory_with_filter", "memory --where"},
    {"zeldb_get_merged_disk_list", "disks"},
    {"zeldb_get_mpfa_health_by_slot", "memory --health"},
    {"zeldb_get_mv_disk_list", "disks --controller"},
    {"zeldb_get_mvl_ctrl_type", "platform"},
    {"zeldb_get_ncsi_id_by_slotNo", "adapters --ncsi --slot"},
    {"zeldb_get_ncsi_id_list", "adapters --ncsi"},
    {"zeldb_get_network_info", "functions"},
    {"zeldb_get_network_logical_port_list", "ports --logical"},
    {"zeldb_get_network_logical_port_list2", "ports 01310000 --logical --port"},
    {"zeldb_get_network_physical_port_link_state", "ports 00040002 --link"},
    {"zeldb_get_network_physical_port_list", "ports"},
    {"zeldb_get_nvme_aim_disk", "disks --place"},
    {"zeldb_get_nvme_disk_list_from_mi_filter", "disks --table nvme"},
    {"zeldb_get_nvme_drv_funkey", "functions --drive"},
    {"zeldb_get_onboard_sata_disk_list", "disks --bay sata"},
    {"zeldb_get_pci_adapter_list", "adapters"},
    {"zeldb_get_pci_cardname_by_funkey", "functions"},
    {"zeldb_get_pci_configID", "settings 00001400 --sets"},
    {"zeldb_get_pci_configSet_count", "settings 00001400"},
    {"zeldb_get_pci_configSet_list", "settings 00001400"},
    {"zeldb_get_pci_function_oob_type", "functions"},
    {"zeldb_get_pci_function_type", "functions"},
    {"zeldb_get_pci_funkey_list", "functions --adapter"},
    {"zeldb_get_pci_funkey_list_by_filter", "functions --where"},
    {"zeldb_get_pci_funkey_list_by_slot", "functions --slot"},
    {"zeldb_get_pci_generic_info", "functions"},
    {"zeldb_get_pci_generic_info_list", "slots"},
    {"zeldb_get_pci_gpu_list", "gpus"},
    {"zeldb_get_pci_hardwareidtype_by_funkey", "functions"},
    {"zeldb_get_pci_id_by_funkey", "cards --key"},
    {"zeldb_get_pci_keys", "adapters --where"},
    {"zeldb_get_pci_misc_info", "functions --packaging"},
    {"zeldb_get_pci_seg_bits", "platform"},
    {"zeldb_get_pci_vpd_info", "vpd"},
    {"zeldb_get_pldm_downstream_software_ids", "firmware --slot 1 --downstream"},
    {"zeldb_get_pldm_firmware", "firmware --slot 2 --device"},
    {"zeldb_get_pldm_firmware_list", "firmware"},
    {"zeldb_get_pldm_firmware_marvell_ctrl_list", "firmware --onboard-raid"},
    {"zeldb_get_pldm_firmware_pending_list", "firmware --pending"},
    {"zeldb_get_pldm_firmware_update_failure_list", "firmware --failed"},
    {"zeldb_get_pldm_firmware_update_success_list", "firmware --succeeded"},
    {"zeldb_get_pldm_firmware_updated_list", "firmware --updated"},
    {"zeldb_get_processor", "processors"},
    {"zeldb_get_processor_list", "processors"},
    {"zeldb_get_u2_aic_nvme_disk_list", "disks --bay slot"},
    {"zeldb_get_vmd_count", "platform"},
    {"zeldb_is_amd", "platform"},
    {"zeldb_vroc_enabled", "platform"},
};

// Functions that write, and functions that help services with statements of their own.
const std::set<std::string> kOthers = {
    "delete_db_record",
    "dpu_clear_logs_by_slot",
    "dpu_insert_log",
    "extract_PCISetting_info",
    "fileexist",
    "find_db_record",
    "get_sql_str",
    "insert_db_record",
    "insert_or_update_db_record",
    "put_text_value",
    "retimer_update_fw",
    "update_db_record",
    "update_pci_table",
    "zeldb_hbm_memory_cleanup",
    "zeldb_merge_aim_ucm_pfa",
    "zeldb_save_pci_configSet_list",
};
const std::regex kWriting("zeldb_(add|clear|insert|set|update)_.*");

// Of the export list, those of C++ as they are written.
std::set<std::string> exported() {
  std::set<std::string> names;
  const std::string list = content_of(ZELDB_EXPORT_LIST);
  const std::regex entry("\n +(_Z([0-9]+))?([A-Za-z_0-9]+);");
  for (std::sregex_iterator match(list.begin(), list.end(), entry), end; match != end; ++match) {
    const std::string length = (*match)[2];
    names.insert((*match)[3].str().substr(0, length.empty() ? std::string::npos : std::stoul(length)));
  }
  return names;
}

// All commands of the transcripts, one a line.
std::string transcripts() {
  std::string all;
  for (const auto& entry : fs::directory_iterator(ZELDB_GOLDEN)) all += content_of(entry.path());
  return all;
}

TEST(Reach, CoversEveryReadingFunction) {
  std::set<std::string> known(kOthers);
  for (const auto& reading : kReading) EXPECT_TRUE(known.insert(reading.function).second) << reading.function;
  const std::set<std::string> names = exported();
  EXPECT_GT(names.size(), std::size(kReading));
  for (const std::string& name : names)
    EXPECT_TRUE(known.contains(name) || std::regex_match(name, kWriting)) << name;
  for (const std::string& name : known) EXPECT_TRUE(names.contains(name)) << name;
}

TEST(Reach, IsShownAndTrue) {
  const std::string commands = transcripts();
  const std::string program = content_of(ZELDB_COMMAND);
  for (const auto& [function, command] : kReading) {
    const std::string line = std::string("$ zeldb ") + command;
    EXPECT_TRUE(commands.find(line + "\n") != std::string::npos ||
                commands.find(line + " ") != std::string::npos)
        << command;
    // Among the program's undefined symbols.
    EXPECT_NE(program.find(function), std::string::npos) << function;
  }
}

}  // namespace
}  // namespace zeldb_test
