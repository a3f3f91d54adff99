// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Component;

constexpr About kAbout = {"SoftwareInventory", "v1_13_0",
                          "UpdateService/FirmwareInventory/{PCIKey}-{DeviceType}-{SoftwareID}",
                          "One component: `_ZELDB_PldmFirmware` of `zeldb_get_pldm_firmware_list`. Where an "
                          "update waits for its activation (`Status` 2) there is a second resource, whose id "
                          "ends with `-pending`, for the version that waits."};

bool has_failed(const Row& row) {
  return row.record.UpdateErrCode != 0 && !row.is_waiting;
}

Json conditions_of(const Row& row, const Machine& machine) {
  if (!has_failed(row)) return Json::left_out();
  Json condition = Json::object({{"MessageId", "Base.1.0.GeneralError"}, {"Severity", "Warning"}});
  put(condition, "Message", TextIfKnown::of(machine, "UpdateErrString", row.record.UpdateErrString));
  return Json::array({condition});
}

constexpr Property<Row> kProperties[] = {
    REDFISH_FROM("Name", record.DeviceName, Text),
    REDFISH_BY("Version", "VersionString, PendingVersionString", "of the version that waits, the second",
               Text::of(machine, "VersionString",
                        row.is_waiting ? row.record.PendingVersionString : row.record.VersionString)),
    REDFISH_FROM("SoftwareId", record.SoftwareID, TextIfKnown),
    REDFISH_FROM("Manufacturer", record.Manufacture, Text),
    REDFISH_BY("ReleaseDate", "ReleaseDate, PendingReleaseDate", Day::kNote,
               Day::of(machine, "", row.is_waiting ? row.record.PendingReleaseDate : row.record.ReleaseDate)),
    REDFISH_FROM("Updateable", record.UpdateSupport, Flag),
    REDFISH_BY("Active", "Status", "false of the version that waits", !row.is_waiting),
    REDFISH_BY("Status.State", "Status", "`Enabled`; of the version that waits `StandbyOffline`",
               row.is_waiting ? "StandbyOffline" : "Enabled"),
    REDFISH_BY("Status.Health", "UpdateErrCode", "not 0, the last update failed: `Warning`; otherwise `OK`",
               has_failed(row) ? "Warning" : "OK"),
    REDFISH_BY("Status.Conditions", "UpdateErrString", "one, with this message, if the last update failed",
               conditions_of(row, machine)),
    REDFISH_BY("RelatedItem[]", "Location, SlotNo", "the PCIeDevice in this place",
               row.device.empty() ? Json::array() : links({row.device})),
};

void add(const Machine& machine, Tree& tree) {
  for (const Row& row : machine.components) tree.add(resource_of(kAbout, kProperties, row, machine));
  std::vector<std::string> members = uris_of(machine.components);
  for (const std::string& uri : uris_of(machine.embedded)) members.push_back(uri);
  tree.add_collection(kFirmware, "SoftwareInventory", "Firmware", members);
}

}  // namespace

Chapter software_inventory() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
