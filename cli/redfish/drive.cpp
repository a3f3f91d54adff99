// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

using Row = Drive;

constexpr About kAbout = {
    "Drive", "v1_22_0", "Chassis/1/Drives/{Id}",
    "`aim_disk_info_t` of `zeldb_get_merged_disk_list`, without those of `AimDisks` that are not "
    "present and do not answer otherwise. Which bit of `InfoMask` stands for which value is the "
    "writer's: if it is 0, nothing is known."};

bool is_hdd(const Row& row) {
  return std::strcmp(row.record.MediaType, "HDD") == 0;
}

Json medium_of(const std::string& medium) {
  return medium == "SSD" || medium == "HDD" ? Json(medium) : Json();
}

Json known(const Row& row, Json value) {
  return row.record.InfoMask != 0 ? std::move(value) : Json();
}

// 32 hexadecimal digits are a UUID, 16 an EUI-64.
Json identifiers_of(const Machine& machine, const std::string& text) {
  constexpr size_t kEuiDigits = 16;
  Json uuid = Uuid::of(machine, "UUID", text);
  if (!uuid.is_null())
    return Json::array({Json::object({{"DurableName", uuid}, {"DurableNameFormat", "UUID"}})});
  const bool is_eui =
      text.size() == kEuiDigits && text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
  if (!is_eui) return Json::array();
  const std::string name = in_digits(machine, "UUID", text);
  return Json::array({Json::object({{"DurableName", name}, {"DurableNameFormat", "EUI"}})});
}

Json place_of(const Row& row) {
  constexpr uint16_t kUnknown = 0xFF;
  return row.record.BayNo != kUnknown ? Json(row.record.BayNo) : Json();
}

constexpr Code kProtocols[] = {{1, "SATA"}, {2, "SAS"},  {3, "NVMe"}, {4, "SATA"},
                               {5, "NVMe"}, {6, "SATA"}, {7, "NVMe"}};
constexpr Code kForms[] = {{48, "M2"}, {80, "EDSFF"}};

constexpr Property<Row> kProperties[] = {
    REDFISH_FROM("Name", record.Location, Text),
    REDFISH_FROM("Manufacturer", record.Manufacture, Text),
    REDFISH_FROM("Model", record.Model, Text),
    REDFISH_FROM("SerialNumber", record.SerialNo, Text),
    REDFISH_FROM("PartNumber", record.PartNo, Text),
    REDFISH_FROM("SKU", record.FruNo, Text),
    REDFISH_FROM("FirmwareVersion", record.FwVersion, Text),
    REDFISH_BY(
        "Identifiers", "UUID",
        "`DurableNameFormat` `UUID` for 32 hexadecimal digits, `EUI` for 16; another form: an empty list",
        identifiers_of(machine, row.record.UUID)),
    REDFISH_FROM("CapacityBytes", record.Capacity, Capacity),
    REDFISH_BY("MediaType", "MediaType", "`SSD` and `HDD`; others null", medium_of(row.record.MediaType)),
    REDFISH_BY("RotationSpeedRPM", "RotationRate", "0: null; left out if `MediaType` is not `HDD`",
               is_hdd(row) ? Count::of(machine, "", row.record.RotationRate) : Json::left_out()),
    REDFISH_BY("Protocol", "DriveTypeId", "1, 4, 6 `SATA`; 2 `SAS`; 3, 5, 7 `NVMe`; others null",
               coded(kProtocols, row.record.DriveTypeId)),
    REDFISH_BY("DriveFormFactor", "FormFactor",
               "48 `M2`, 80 `EDSFF`; 16 and 32 say no more than bay and card: null",
               coded(kForms, row.record.FormFactor)),
    REDFISH_BY("PhysicalLocation.PartLocation.LocationType", "LocationId", "1 `Slot`, others `Bay`",
               row.record.LocationId == 1 ? "Slot" : "Bay"),
    REDFISH_BY("PhysicalLocation.PartLocation.LocationOrdinalValue", "BayNo", "255: null", place_of(row)),
    REDFISH_FROM("PhysicalLocation.PartLocation.ServiceLabel", record.Location, Text),
    REDFISH_BY("PredictedMediaLifeLeftPercent", "RemainLife",
               "more than 100: null; null if `InfoMask` is 0; left out for an HDD",
               is_hdd(row) ? Json::left_out() : known(row, Percent::of(machine, "", row.record.RemainLife))),
    REDFISH_BY("FailurePredicted", "Warning", "not 0: true; null if `InfoMask` is 0",
               known(row, row.record.Warning != 0)),
    REDFISH_FROM("Status.Health", record.HealthStatus, Health),
    REDFISH_BY("Status.State", "", "`Enabled`", "Enabled"),
    REDFISH_BY("EnvironmentMetrics", "", "its temperature", link(row.uri + "/EnvironmentMetrics")),
    REDFISH_BY("Links.Chassis", "", "the chassis", link(kChassis)),
    REDFISH_BY("Links.Storage", "PCIFuncKey", "the Storage of the device with this function",
               link(row.storage)),
    REDFISH_BY("Links.PCIeFunctions[]", "PCIFuncKey", "the function of an NVMe drive (class 0x0108)",
               row.function.empty() ? Json::array() : links({row.function})),
};

void add(const Machine& machine, Tree& tree) {
  for (const Row& row : machine.drives) tree.add(resource_of(kAbout, kProperties, row, machine));
  tree.add_collection(kChassis + "/Drives", "Drive", "Drives", uris_of(machine.drives));
}

}  // namespace

Chapter drive() {
  return chapter_of(kAbout, kProperties, add);
}

}  // namespace zeldb::cli::redfish
