// SPDX-License-Identifier: Apache-2.0
#include "zel_db/schema_families.h"

namespace zel_db {
namespace {

constexpr const char* kKindOfPlace = "kind of place: 1 slot, 2 backplane bay, 3 M.2 bay, 4 7 mm bay";
constexpr const char* kReplacement = "FRU number, for a replacement";
constexpr const char* kStatusFlags = "status flags of the drive, bits";
constexpr const char* kWarnings = "warnings, bits; 0: none";
constexpr const char* kTemperature = "temperature, in degrees Celsius";
constexpr const char* kLife = "remaining life, in percent";
constexpr const char* kKnown = "values that are known, bits";

constexpr Column kDisks[] = {
    number("RAIDCtrlId", "controller of the disk (`RAIDControllers._id`)"),
};

constexpr Column kRaidControllers[] = {
    number("ControllerUID", "number of the controller's slot"),
};

// The services that watch drives write a number if it differs from the one in the row; NULL never differs.
// Only the text of the place has an index: there are few rows, and an index would change their order.
constexpr Column kAimDisks[] = {
    number("PCIFuncKey", "key of the drive's function; 0 and NULL: looked up by its place"),
    number("SlotNo", "slot of the controller, for drives in M.2 and 7 mm bays"),
    number_or_zero("CtrlType", "3: behind an on-board controller"),
    number("BayNo", "number of its place"),
    number("LocationId", kKindOfPlace),
    text("Location", "name of its place: `Slot 3`, `Bay 3`, `M.2 Bay3`, `7MM Bay3`", Index::Plain),
    text("DriveTypeId", "1 SATA, 2 SAS, 3 NVMe, 4 and 5 SATA and NVMe in M.2, 6 and 7 in 7 mm bays; decimal"),
    text("MediaTypeId", "1 solid state, up to 65534 the revolutions per minute; decimal"),
    text("FruNo", kReplacement),
    text("PartNo", "part number"),
    text("SerialNo", "serial number"),
    text("Model", "model"),
    text("UUID", "unique id"),
    text("Manufacture", "manufacturer"),
    text("FwVersion", "version of its firmware"),
    text("Capacity", "capacity, a text such as `960GB` or `3.84TB` (decimal units)"),
    number_or_zero("SFlags", kStatusFlags),
    number_or_zero("Warning", kWarnings),
    number_or_zero("Temperature", kTemperature),
    number_or_zero("RemainLife", kLife),
    number_or_zero("InfoMask", kKnown),
    number_or_zero("Presence", "1: the drive is there"),
};

constexpr Column kNvmeDrives[] = {
    number("Location", kKindOfPlace),
    number("SlotNo", "number of its place"),
    number("CtrlSlot", "slot of its controller"),
    unsigned64("Capacity", "capacity, in bytes"),
    text("FruNo", kReplacement),
    text("PartNo", "part number"),
    text("SupplierSN", "serial number"),
    text("Model", "model"),
    text("UUID", "unique id"),
    text("Manufacture", "manufacturer"),
    text("FwVer", "version of its firmware"),
    number_or_zero("SFlags", kStatusFlags),
    number_or_zero("Warning", kWarnings),
    number_or_zero("Temperature", kTemperature),
    number_or_zero("RemainLife", kLife),
    number_or_zero("InfoMask", kKnown),
};

constexpr Column kSensorSlotMap[] = {
    number("HardwareTypeId", "2, 21 and 22: drives"),
    number("SlotNo",
           "the drive: number of its backplane bay, of its M.2 bay plus 128, of its 7 mm bay plus 192"),
    number("HealthStatusId",
           "health of the drive, as `PCIAdapter.HealthStatus`; without a row it reads as 2"),
};

constexpr Table kTables[] = {
    {"Disks",
     kDisks,
     {"The disks of each RAID controller.", "the controller's RAID service, which is not part of zeldb",
      "`zeldb_get_pldm_downstream_software_ids`"}},
    {"RAIDControllers",
     kRaidControllers,
     {"RAID controllers.", "the controller's RAID service, which is not part of zeldb",
      "`zeldb_get_pldm_downstream_software_ids`"}},
    {"AimDisks",
     kAimDisks,
     {"Drives. The lists of drives add data that this table does not hold, such as form factor and health.",
      "`zeldb_add_update_nvme_aim_disk`, `zeldb_update_aim_disk_presence`, "
      "`zeldb_update_aim_disk_vpd_info`, `zeldb_update_aim_disk_smart_info`, "
      "`zeldb_update_aim_disk_ctrl_type`, the services that watch drives",
      "`zeldb_get_disk_list_with_filter` and all lists of drives but that of `NVMeDrives`, "
      "`zeldb_get_nvme_aim_disk`"}},
    {"NVMeDrives",
     kNvmeDrives,
     {"NVMe drives that report through their management interface. If a place is in both tables, the "
      "lists take one of them.",
      "the controller's NVMe service; `zeldb_update_nvme_disk_firmware_version` (`FwVer`)",
      "`zeldb_get_nvme_disk_list_from_mi_filter`, `zeldb_get_mv_disk_list`, `zeldb_get_7mm_disk_list`, "
      "`zeldb_get_m2_disk_list`, `zeldb_get_u2_aic_nvme_disk_list`, `zeldb_get_merged_disk_list`, "
      "`zeldb_get_disk_list_funkey`"}},
    {"SensorSlotMap",
     kSensorSlotMap,
     {"The sensor of each drive. Of several rows for a drive the last one counts.",
      "the controller's sensor service, which is not part of zeldb", "all lists of drives"}},
};

}  // namespace

std::span<const Table> storage_tables() {
  return kTables;
}

}  // namespace zel_db
