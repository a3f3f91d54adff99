// SPDX-License-Identifier: Apache-2.0
#include "cli/slots.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <tuple>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/components.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "zeldb/firmware.h"

namespace zeldb::cli {

namespace {

using R = SlotRow;

// The keys are empty if there is no adapter or no function.
struct Shown {
  R Slot;
  char PCIKey[9];
  char FunKey[9];
};

#define SLOT_COLUMN(Member, Heading, Help) ZELDB_COLUMN_IN(Shown, Slot, Member, Heading, Help)
constexpr Column kColumns[] = {
    SLOT_COLUMN(Location, "LOC", "0 on the system board, 1 an add-in slot"),
    SLOT_COLUMN(SlotNo, "SLOT", "Number of the slot"),
    minor(whole(SLOT_COLUMN(Address, "ADDRESS", "Segment, bus, device and function of the first function"))),
    SLOT_COLUMN(CardName, "CARD", "Name of the adapter"),
    whole(SLOT_COLUMN(SerialNo, "SERIAL", "Serial number, from the vital product data or the drive")),
    whole(SLOT_COLUMN(FirmwareVersion, "FIRMWARE", "Version of the firmware component, image or drive")),
    health(SLOT_COLUMN(HealthStatus, "HEALTH", "Health of the adapter")),
    only_if(SLOT_COLUMN(PortsUp, "UP", "Network ports with a link"), "Ports"),
    minor(without(SLOT_COLUMN(Ports, "PORTS", "Network ports"), 0)),
    extra(hex(ZELDB_COLUMN(Shown, PCIKey, "ADAPTER", "Key of the adapter"), 8)),
    extra(hex(ZELDB_COLUMN(Shown, FunKey, "FUNCTION", "Key of the first function"), 8)),
    extra(SLOT_COLUMN(Functions, "FUNCTIONS", "PCI functions that were found in the slot")),
};
#undef SLOT_COLUMN

using Disks = std::vector<aim_disk_info_t>;
using Components = std::vector<_ZELDB_PldmFirmware>;
using PlaceOfSlot = std::tuple<uint8_t, uint16_t>;

constexpr uint8_t kInSlot = 1;  // higher locations are bays

template <size_t N, size_t M>
void complete(char (&text)[N], const char (&other)[M]) {
  if (*text == '\0' && std::strcmp(other, "N/A") != 0) copy_text(text, other);
}

struct Function {
  uint32_t key;
  _ZELDB_PCI_Generic_Info info;
};

// A slot and its functions.
struct Slot {
  R shown;
  const Function* first = nullptr;  // the one with the lowest key
  bool may_have_ports = true;       // also if no functions are known
};
using Slots = std::map<PlaceOfSlot, Slot>;

std::vector<uint32_t> keys_by_row() {
  std::string condition = "1=1";
  std::string order = "_id";
  return list_of<_ZELDB_PCI_FunKey_List>("functions", [&](auto* list) {
    return zeldb_get_pci_funkey_list_by_filter(condition.data(), order.data(), list);
  });
}

// One list has the keys, the other one the rest, both in the order of the rows. They are joined unless their
// lengths differ because somebody wrote in between, or one of them left out a row.
std::vector<Function> read_functions() {
  const std::vector<uint32_t> keys = keys_by_row();
  const auto infos = list_of<_ZELDB_PCI_Generic_Info_List>(
      "functions", [](auto* list) { return zeldb_get_pci_generic_info_list(list, nullptr); });
  std::vector<Function> functions;
  if (keys.size() == infos.size() && keys == keys_by_row()) {
    for (size_t row = 0; row < keys.size(); ++row) functions.push_back({keys[row], infos[row]});
    return functions;
  }
  for (const uint32_t key : keys) {
    if (const auto info = find_function(key)) functions.push_back({key, *info});
  }
  return functions;
}

bool is_network(const _ZELDB_PCI_Generic_Info& function) {
  constexpr uint32_t kNetwork = 0x02;
  constexpr uint32_t kFibreChannel = 0x0C04;
  constexpr uint32_t kInfiniBand = 0x0C06;
  const uint32_t subclass = function.ClsCode >> 8U;
  constexpr uint32_t kNetworkTypes[] = {2, 3};
  return subclass >> 8U == kNetwork || subclass == kFibreChannel || subclass == kInfiniBand ||
         std::ranges::find(kNetworkTypes, function.FunType) != std::end(kNetworkTypes);
}

// Either table may know a slot that the other does not.
void add_functions(Slots& slots, const std::vector<Function>& functions) {
  for (const Function& function : functions) {
    if (function.info.Location > kInSlot) continue;
    Slot& slot = slots[{function.info.Location, function.info.SlotNo}];
    if (slot.shown.Functions++ == 0) slot.may_have_ports = false;
    if (is_network(function.info)) slot.may_have_ports = true;
    if (slot.first == nullptr || function.key < slot.first->key) slot.first = &function;
  }
}

void add_adapters(Slots& slots) {
  for (const _ZELDB_PCI_Adapter& adapter : all_adapters()) {
    R& slot = slots[{adapter.Location, adapter.SlotNo}].shown;
    copy_text(slot.Address, pci_address(adapter.SegNo, adapter.BusNo, adapter.DeviceNo, 0));
    copy_text(slot.CardName, adapter.CardName);
    if (slot.PCIKey != 0) continue;
    slot.PCIKey = adapter.PCIKey;
    slot.HealthStatus = adapter.HealthStatus;
  }
}

// The list of adapters omits some.
void ask_for_adapter(R& slot) {
  if (slot.PCIKey != 0) return;
  if (zeldb_get_adapter_pcikey_by_slotNo(slot.Location, slot.SlotNo, &slot.PCIKey) == ZELDB_OK)
    zeldb_get_adapter_health_status(slot.Location, slot.SlotNo, &slot.HealthStatus);
}

// The component of the slot; of several, the first that can be updated, otherwise the first.
void complete_from_components(R& slot, const Components& components) {
  std::vector<const _ZELDB_PldmFirmware*> here;
  for (const _ZELDB_PldmFirmware& component : components) {
    if (component.Location == slot.Location && component.SlotNo == slot.SlotNo) here.push_back(&component);
  }
  if (here.empty() || here.size() > 2) return;
  const auto updatable = std::ranges::find_if(here, [](const auto* one) { return one->UpdateSupport != 0; });
  complete(slot.FirmwareVersion, (updatable != here.end() ? *updatable : here.front())->VersionString);
}

void complete_from_images(R& slot, uint32_t function) {
  if (*slot.FirmwareVersion != '\0') return;
  const uint32_t hardware = hardware_of(function).id;
  char version[33] = {};
  if (hardware != 0 &&
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

void complete_from_function(R& slot, const Function& first, const Disks& drives) {
  const _ZELDB_PCI_Generic_Info& function = first.info;
  slot.FunKey = first.key;
  copy_text(slot.Address,
            pci_address(function.SegNo, function.BusNo, function.DeviceNo, function.FunctionNo));
  complete(slot.CardName, function.SlotDesignation);
  if (const auto product = find_product(first.key)) complete(slot.SerialNo, product->SerialNo);
  complete_from_images(slot, first.key);
  complete_from_drives(slot, first.key, drives);
}

void count_ports(R& slot) {
  if (slot.PCIKey == 0) return;
  for (const _ZELDB_PhysicalPort& port : list_of<_ZELDB_PhysicalPort_List>(
           "ports of " + key_text(slot.PCIKey),
           [&](auto* list) { return zeldb_get_all_network_physical_port_list(slot.PCIKey, list); },
           {ZELDB_NO_MATCH, ZELDB_NO_MORE_ROWS})) {
    ++slot.Ports;
    if (port.LinkStatus == 1) ++slot.PortsUp;
  }
}

std::vector<Shown> read_shown(const std::optional<Place>& wanted) {
  std::vector<Shown> rows;
  for (const R& slot : read_slots()) {
    if (wanted && (slot.Location != wanted->location || slot.SlotNo != wanted->number)) continue;
    Shown& row = rows.emplace_back();
    row.Slot = slot;
    if (slot.PCIKey != 0) copy_text(row.PCIKey, key_text(slot.PCIKey));
    if (slot.Functions != 0) copy_text(row.FunKey, key_text(slot.FunKey));
  }
  if (wanted && rows.empty()) fail_not_found("slot " + place_text(*wanted));
  return rows;
}

// A failure is no reason to stop: slots only lack their firmware.
Components components_if_told() {
  try {
    return read_components();
  } catch (const Failure&) {
    return {};
  }
}

// Reads each list once and joins them: a query per slot would be slow on a controller.
std::vector<R> joined_slots() {
  require_inventory("slots");
  Slots slots;
  const std::vector<Function> functions = read_functions();
  add_functions(slots, functions);
  add_adapters(slots);
  const Disks drives = read_drives();
  prepare_products();
  const Components components = components_if_told();
  std::vector<R> rows;
  for (auto& [place, slot] : slots) {
    R& row = slot.shown;
    std::tie(row.Location, row.SlotNo) = place;
    ask_for_adapter(row);
    complete_from_components(row, components);
    if (slot.first != nullptr) complete_from_function(row, *slot.first, drives);
    if (slot.may_have_ports) count_ports(row);
    rows.push_back(row);
  }
  return rows;
}

}  // namespace

std::vector<SlotRow> read_slots() {
  static const std::vector<R> slots = joined_slots();
  return slots;
}

void setup_slots(CLI::App& app) {
  auto slot = std::make_shared<std::optional<Place>>();
  add_place(app, "--slot", *slot, "This slot alone");
  Listing(app).view(kColumns, [slot] { return read_shown(*slot); });
}

}  // namespace zeldb::cli
