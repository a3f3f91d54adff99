// SPDX-License-Identifier: Apache-2.0
#include "cli/command.h"

namespace zeldb::cli {

namespace {

constexpr const char* kInventory = "Inventory";
constexpr const char* kFirmware = "Firmware and settings";
constexpr const char* kReference = "Reference";
#ifdef ZELDB_CLI_ADMIN
constexpr const char* kDatabases = "Databases";
#endif

}  // namespace

std::vector<Command> commands() {
  return {
      {"slots", "What sits in each slot", setup_slots, kInventory},
      {"processors", "Processors", setup_processors, kInventory},
      {"memory", "Memory modules", setup_memory, kInventory},
      {"functions", "PCI functions", setup_functions, kInventory},
      {"adapters", "Adapters", setup_adapters, kInventory},
      {"ports", "Network ports of a function or of all", setup_ports, kInventory},
      {"gpus", "GPUs and accelerators", setup_gpus, kInventory},
      {"disks", "Drives", setup_disks, kInventory},
      {"backplanes", "How many drives the backplanes take and have", setup_backplanes, kInventory},
      {"vpd", "Vital product data of a function or of all", setup_vpd, kInventory},
      {"platform", "What kind of machine it is", setup_platform, kInventory},
      {"baseline", "Write down which parts there are, for diff", setup_baseline, kInventory},
      {"diff", "What was added, removed, replaced or shrank since a baseline", setup_diff, kInventory},
      {"report", "Write a page with a drawing of the machine and all its parts", setup_report, kInventory},
      {"firmware", "Firmware components", setup_firmware, kFirmware},
      {"embedded", "Firmware of the controller's own devices", setup_embedded, kFirmware},
      {"dpu-log", "Events of the DPU in a slot", setup_dpu_log, kFirmware},
      {"retimer", "Progress of a retimer's update", setup_retimer, kFirmware},
      {"settings", "BIOS settings of a function", setup_settings, kFirmware},
      {"pending", "BIOS settings that change with the next start, and changes of them", setup_pending,
       kFirmware},
      {"cards", "Cards that the library knows by their PCI ids", setup_cards, kReference},
      {"decode-vpd", "What the image of an NVMe drive's vital product data says", setup_decode_vpd,
       kReference},
      {"columns", "Columns of all these listings", setup_columns, kReference},
      {"schema", "JSON schema of what --json prints", setup_schema, kReference},
// A controller's own table-access library neither creates nor fills its databases.
#ifdef ZELDB_CLI_ADMIN
      {"init", "Create the databases and the tables that are missing in them", setup_init, kDatabases},
      {"export", "Write the whole inventory to one file, for --from", setup_export, kDatabases},
      {"load", "Run files of SQL statements in one of the databases", setup_load, kDatabases},
#endif
  };
}

}  // namespace zeldb::cli
