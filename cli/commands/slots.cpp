// SPDX-License-Identifier: Apache-2.0
#include "cli/slots.h"

#include <cstring>
#include <map>
#include <tuple>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "zeldb/firmware.h"

namespace zeldb::cli {

namespace {

using R = SlotRow;

// The keys are nothing where there is no adapter or no function.
struct Shown {
  R Slot;
  char PCIKey[9];
  char FunKey[9];
};

#define SLOT_COLUMN(Member, Heading, Help) ZELDB_COLUMN_IN(Shown, Slot, Member, Heading, Help)
constexpr Column kColumns[] = {
    SLOT_COLUMN(Location, "LOC", "0 on the system board, 1 an add-in slot"),
    SLOT_COLUMN(SlotNo, "SLOT", "Number of the slot"),
    whole(SLOT_COLUMN(Address, "ADDRESS", "Segment, bus, device and function of the first function")),
    SLOT_COLUMN(CardName, "CARD", "Name of the adapter"),
    whole(SLOT_COLUMN(SerialNo, "SERIAL", "Serial number, from the vital product data or the drive")),
    SLOT_COLUMN(FirmwareVersion, "FIRMWARE", "Version of the firmware component, image or drive"),
    health(SLOT_COLUMN(HealthStatus, "HEALTH", "Health of the adapter")),
    SLOT_COLUMN(PortsUp, "UP", "Network ports with a link"),
    SLOT_COLUMN(Ports, "PORTS", "Network ports"),
    extra(hex(ZELDB_COLUMN(Shown, PCIKey, "ADAPTER", "Key of the adapter"), 8)),
    extra(hex(ZELDB_COLUMN(Shown, FunKey, "FUNCTION", "Key of the first function"), 8)),
    extra(SLOT_COLUMN(Functions, "FUNCTIONS", "PCI functions that were found in the slot")),
};
#undef SLOT_COLUMN

using Disks = std::vector<aim_disk_info_t>;
using PlaceOfSlot = std::tuple<uint8_t, uint16_t>;

constexpr uint8_t kInSlot = 1;  // the locations beyond are bays

template <size_t N, size_t M>
void complete(char (&text)[N], const char (&other)[M]) {
  if (*text == '\0' && std::strcmp(other, "N/A") != 0) copy_text(text, other);
}

// Either table may know a slot that the other does not.
void add_functions(std::map<PlaceOfSlot, R>& slots) {
  for (const _ZELDB_PCI_Generic_Info& function : list_of<_ZELDB_PCI_Generic_Info_List>(
           "functions", [](auto* list) { return zeldb_get_pci_generic_info_list(list, nullptr); })) {
    if (function.Location <= kInSlot) ++slots[{function.Location, function.SlotNo}].Functions;
  }
}

void add_adapters(std::map<PlaceOfSlot, R>& slots) {
  for (const _ZELDB_PCI_Adapter& adapter : list_of<_ZELDB_PCI_Adapter_List>(
           "adapters", [](auto* list) { return zeldb_get_pci_adapter_list(list); })) {
    R& slot = slots[{adapter.Location, adapter.SlotNo}];
    copy_text(slot.Address, pci_address(adapter.SegNo, adapter.BusNo, adapter.DeviceNo, 0));
    copy_text(slot.CardName, adapter.CardName);
  }
}

void complete_from_images(R& slot, uint32_t function) {
  uint32_t hardware = 0;
  uint8_t type = 0;
  char version[33] = {};
  if (zeldb_get_pci_hardwareidtype_by_funkey(function, &hardware, &type) == ZELDB_OK && hardware != 0 &&
      zeldb_get_firmware_version(static_cast<int>(hardware), version, sizeof(version) - 1) == ZELDB_OK) {
    complete(slot.FirmwareVersion, version);
  }
}

void complete_from_drives(R& slot, uint32_t function, const Disks& drives) {
  for (const aim_disk_info_t& drive : drives) {
    if (drive.LocationId != kInSlot || drive.PCIFuncKey != function) continue;
    complete(slot.FirmwareVersion, drive.FwVersion);
    complete(slot.SerialNo, drive.SerialNo);
    return;
  }
}

// What the first function of the slot tells.
void read_first_function(R& slot, uint32_t key, const Disks& drives) {
  const auto found = find_function(key);
  if (!found) return;
  const _ZELDB_PCI_Generic_Info& function = *found;
  slot.FunKey = key;
  copy_text(slot.Address,
            pci_address(function.SegNo, function.BusNo, function.DeviceNo, function.FunctionNo));
  complete(slot.CardName, function.SlotDesignation);
  if (const auto product = find_product(key)) complete(slot.SerialNo, product->SerialNo);
  complete_from_images(slot, key);
  complete_from_drives(slot, key, drives);
}

void count_ports(R& slot) {
  if (zeldb_get_adapter_pcikey_by_slotNo(slot.Location, slot.SlotNo, &slot.PCIKey) != ZELDB_OK) return;
  for (const _ZELDB_PhysicalPort& port : list_of<_ZELDB_PhysicalPort_List>(
           "ports of " + key_text(slot.PCIKey),
           [&](auto* list) { return zeldb_get_all_network_physical_port_list(slot.PCIKey, list); },
           {ZELDB_NO_MATCH, ZELDB_NO_MORE_ROWS})) {
    ++slot.Ports;
    if (port.LinkStatus == 1) ++slot.PortsUp;
  }
}

void read_slot(R& slot, const Disks& drives) {
  _ZELDB_PldmFirmware component = {};
  if (zeldb_get_pldm_firmware(slot.Location, slot.SlotNo, &component, -1, -1) == ZELDB_OK)
    complete(slot.FirmwareVersion, component.VersionString);
  const auto functions = functions_in_slot({slot.Location, slot.SlotNo});
  if (!functions.empty()) read_first_function(slot, functions.front(), drives);
  count_ports(slot);
  zeldb_get_adapter_health_status(slot.Location, slot.SlotNo, &slot.HealthStatus);
}

std::vector<Shown> read_shown() {
  std::vector<Shown> rows;
  for (const R& slot : read_slots()) {
    Shown& row = rows.emplace_back();
    row.Slot = slot;
    if (slot.PCIKey != 0) copy_text(row.PCIKey, key_text(slot.PCIKey));
    if (slot.Functions != 0) copy_text(row.FunKey, key_text(slot.FunKey));
  }
  return rows;
}

}  // namespace

std::vector<SlotRow> read_slots() {
  require_inventory("slots");
  std::map<PlaceOfSlot, R> slots;
  add_functions(slots);
  add_adapters(slots);
  const Disks drives = read_drives();
  std::vector<R> rows;
  for (auto& [place, slot] : slots) {
    std::tie(slot.Location, slot.SlotNo) = place;
    read_slot(slot, drives);
    rows.push_back(slot);
  }
  return rows;
}

void setup_slots(CLI::App& app) {
  Listing(app).view(kColumns, read_shown);
}

}  // namespace zeldb::cli
