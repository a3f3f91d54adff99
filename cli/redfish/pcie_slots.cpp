// SPDX-License-Identifier: Apache-2.0
#include <iterator>

#include "cli/redfish/pcie.h"
#include "cli/redfish/resource.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

struct Row {
  uint16_t number;
  _ZELDB_PCI_Generic_Info function;  // zeros if the slot is empty
  const Device* device;
};

constexpr About kAbout = {
    "PCIeSlots", "v1_6_1", "Chassis/1/PCIeSlots",
    "Each of `Slots` is a slot of location 1 that a function or an adapter names, with the "
    "generic information of its first function."};

// SMBIOS slot types; ranges of them are generations.
constexpr struct {
  uint8_t first;
  uint8_t last;
  const char* generation;
} kGenerations[] = {{0xA5, 0xAA, "Gen1"}, {0xAB, 0xB0, "Gen2"}, {0xB1, 0xB6, "Gen3"},
                    {0xB8, 0xBD, "Gen4"}, {0xBE, 0xC3, "Gen5"}, {0xC4, 0xC4, "Gen6"}};
constexpr Code kShapes[] = {{0x14, "M2"}, {0x15, "M2"}, {0x16, "M2"},        {0x17, "M2"},       {0x1F, "U2"},
                            {0x20, "U2"}, {0x24, "U2"}, {0x26, "OCP3Small"}, {0x27, "OCP3Large"}};
constexpr uint8_t kWidths[] = {1, 2, 4, 8, 12, 16, 32};  // lanes, from code 8 on

Json generation_of(uint8_t type) {
  for (const auto& range : kGenerations) {
    if (type >= range.first && type <= range.last) return range.generation;
  }
  return nullptr;
}

Json lanes_of(uint8_t width) {
  constexpr uint8_t kFirst = 8;
  const bool is_known = width >= kFirst && width - kFirst < static_cast<int>(std::size(kWidths));
  return is_known ? Json(kWidths[width - kFirst]) : Json();
}

constexpr Property<Row> kProperties[] = {
    REDFISH_BY("PCIeType", "SlotType",
               "SMBIOS: 0xA5 to 0xAA `Gen1`, to 0xB0 `Gen2`, to 0xB6 `Gen3`, 0xB8 to 0xBD `Gen4`, to 0xC3 "
               "`Gen5`, 0xC4 `Gen6`; others null",
               generation_of(row.function.SlotType)),
    REDFISH_BY("SlotType", "SlotType",
               "SMBIOS: 0x14 to 0x17 `M2`, 0x1F, 0x20 and 0x24 `U2`, 0x26 `OCP3Small`, 0x27 `OCP3Large`; "
               "others null",
               coded(kShapes, row.function.SlotType)),
    REDFISH_BY("Lanes", "SlotDataBusWidth",
               "SMBIOS: 8 to 14 are 1, 2, 4, 8, 12, 16 and 32 lanes; others null",
               lanes_of(row.function.SlotDataBusWidth)),
    REDFISH_FROM("HotPluggable", function.Hotplug, Flag),
    REDFISH_BY("Location.PartLocation.LocationType", "", "`Slot`", "Slot"),
    REDFISH_BY("Location.PartLocation.LocationOrdinalValue", "SlotNo", "", row.number),
    REDFISH_FROM("Location.PartLocation.ServiceLabel", function.SlotDesignation, Text),
};

constexpr Property<Row> kOccupation[] = {
    REDFISH_BY("Status.State", "", "`Absent` without a function, otherwise `Enabled`",
               row.device != nullptr ? "Enabled" : "Absent"),
    REDFISH_BY("Links.PCIeDevice[]", "Location, SlotNo", "the device in the slot",
               row.device != nullptr ? links({row.device->uri}) : Json::array()),
};

void add(const Machine& machine, Tree& tree) {
  Json slots = Json::array();
  for (const SlotRow& slot : machine.slots) {
    Row row{slot.SlotNo, {}, machine.device_at(slot.Location, slot.SlotNo)};
    if (row.device != nullptr) row.function = row.device->functions.front().record;
    Json shown = Json::object();
    fill(shown, kProperties, row, machine);
    fill(shown, kOccupation, row, machine);
    slots.push_back(shown);
  }
  Json resource = bare_resource(kAbout, {"PCIeSlots", kChassis + "/PCIeSlots"});
  resource["Name"] = "PCIe slots";
  resource["Slots"] = slots;
  tree.add(resource);
}

}  // namespace

Json slot_of(const Machine& machine, const _ZELDB_PCI_Generic_Info& function) {
  Json slot = Json::object();
  fill(slot, kProperties, Row{function.SlotNo, function, nullptr}, machine);
  return slot;
}

Chapter pcie_slots() {
  Chapter chapter = chapter_of(kAbout, kProperties, add);
  for (const Property<Row>& property : kOccupation)
    chapter.lines.push_back({property.name, property.from, property.note});
  return chapter;
}

}  // namespace zeldb::cli::redfish
