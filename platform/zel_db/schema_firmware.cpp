// SPDX-License-Identifier: Apache-2.0
#include "zel_db/schema_families.h"

namespace zel_db {
namespace {

constexpr Column kPldmDeviceFirmware[] = {
    text("DeviceName", "name of the device"),
    number("DeviceType", "kind of device, the update agent's code; 15: the UEFI of a DPU"),
    number("PCIKey", "key of the adapter (`PCIAdapter.PCIKey`)"),
    number("PCIFuncKey", "key of the function (`PCIs.FunKey`)"),
    number("VendorId", "PCI vendor id"),
    number("SubVendorId", "PCI subsystem vendor id"),
    number("DeviceId", "PCI device id"),
    number("SubDeviceId", "PCI subsystem id"),
    number("Location", "0 on the system board, 1 in a slot"),
    number("SlotNo", "number of the slot", Index::Plain),
    text("Manufacture", "manufacturer"),
    text("SoftwareID", "id of the component for updates, eight hexadecimal digits"),
    text("VersionString", "running version"),
    text("PendingVersionString", "version that waits for its activation"),
    text("PkgVersionString", "version of the last update package"),
    text("ReleaseDate", "release date of the running version"),
    text("PendingReleaseDate", "release date of the pending version"),
    number("UpdateSupport", "0: cannot be updated"),
    number("Updated", "not 0: has been through an update"),
    number("UpdateMethod", "bits of the update agent; 64: through the devices behind it"),
    number("UpdateAuxInfo", "further result of an update, the update agent's code"),
    number("UpdateErrCode", "0: no error; others the update agent's"),
    text("UpdateErrString", "error text of a failed update"),
    number("Status", "2: an update waits for its activation"),
};

constexpr Column kFirmwares[] = {
    number("HardwareId", "function key of a PCI function, `Disks._id` of a disk", Index::Plain),
    number("HardwareTypeId", "2 disk, 3 PCI function"),
    text("Classification", 16, "kind of software: 1 to 13 as CIM_SoftwareIdentity has them, 10 firmware"),
    text("FirmwareName", "name of the image"),
    text("VersionString", "version"),
    text("Description", "what it is"),
    text("ReleaseDate", "release date"),
    text("Manufacture", "who made it"),
    text("SoftwareID", "id for updates"),
};

constexpr Column kEmbeddedDeviceFirmware[] = {
    text("DeviceName", "name of the device"),
    number("DeviceIndex", "index among devices with the same `SoftwareID`"),
    number("StructRev", "revision of the structure that the device reports"),
    number("Version", "running version"),
    text("SoftwareID", "id for updates", Index::Plain),
    number("Class", "class, the device's code"),
    number("Category", "category within the class"),
    number("SubCategory", "subcategory"),
    number("Checksum", "checksum of the firmware"),
};

constexpr Column kDpuEvents[] = {
    number("Slot", "number of the DPU's slot", Index::Plain),
    text("GenID", "id of the kind of event"),
    text("Message", 512, "text of the event"),
    number("Timestamp", "time of the event, the low 32 bits of the DPU's value"),
};

constexpr Table kTables[] = {
    {"PldmDeviceFirmware",
     kPldmDeviceFirmware,
     {"Firmware components that the update agent has found on devices. A name, manufacturer or version that "
      "is missing or `N/A` is completed from the property store on the first read.",
      "`zeldb_insert_or_update_pldm_firmware`, `zeldb_update_pldm_firmware`, "
      "`zeldb_clear_all_pldm_firmware_pending_status`, `zeldb_clear_pldm_firmware_by_type`, "
      "`zeldb_update_firmware`, `zeldb_update_firmware_release_date`, `zeldb_update_dpu_uefi_version`, "
      "and every reader that completes a row",
      "`zeldb_get_pldm_firmware_list` and the other lists of components, `zeldb_get_pldm_firmware`, "
      "`zeldb_get_pldm_downstream_software_ids`"}},
    {"Firmwares",
     kFirmwares,
     {"Firmware images of functions and disks: a piece of hardware may have several.",
      "`zeldb_update_adapter_firmware_list`, `zeldb_insert_or_update_firmware_info`, "
      "`zeldb_update_firmware`, `zeldb_update_firmware_release_date`, `zeldb_update_dpu_uefi_version`",
      "`zeldb_get_firmware_version`"}},
    {"EmbeddedDeviceFirmware",
     kEmbeddedDeviceFirmware,
     {"The controller's own devices.",
      "`zeldb_insert_or_update_embedded_firmware_info`, `zeldb_clear_all_embedded_firmware_info`",
      "`zeldb_get_embedded_firmware_list`"}},
    {"DPUEvents",
     kDpuEvents,
     {"Events that DPUs report, the newest 256 of each slot.", "`dpu_insert_log`, `dpu_clear_logs_by_slot`",
      "`dpu_get_log_by_slot`"}},
};

}  // namespace

std::span<const Table> firmware_tables() {
  return kTables;
}

}  // namespace zel_db
