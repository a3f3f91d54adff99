// SPDX-License-Identifier: Apache-2.0
#include "cli/parts.h"

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <set>

#include "cli/components.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/slots.h"
#include "cli/text.h"
#include "zeldb/firmware.h"

namespace zeldb::cli {

namespace {

using Parts = std::vector<Part>;
using Drives = std::vector<aim_disk_info_t>;

// Values that several kinds of parts have.
struct Inventory {
  std::vector<SlotRow> slots;
  Drives drives;
};

constexpr const char* kPlaceholders[] = {"N/A",           "Unknown", "Not Specified",
                                         "Not Available", "None",    "NO DIMM"};

std::string known(const char* text) {
  return is_placeholder(text) ? "" : printable(text, Escape::Terminal);
}

std::string place_called(const char* name) {
  return *name != '\0' ? printable(name, Escape::Terminal) : "unnamed";
}

std::string numbered(const char* what, unsigned number) {
  return std::string(", ") + what + " " + std::to_string(number);
}

Parts processors(const Inventory&) {
  constexpr uint8_t kPopulated = 0x40;
  Parts parts;
  for (const CountedProcessor& row : read_processors()) {
    Part part{.kind = "processor", .place = place_called(row.Socket)};
    part.name = known(row.Version);
    part.model = part.name;
    part.part_number = known(row.PartNo);
    part.serial_number = known(row.SerialNo);
    if (row.CoreCount != 0) part.sizes["cores"] = row.CoreCount;
    if (row.CoreEnabled != 0) part.sizes["enabled cores"] = row.CoreEnabled;
    if (row.NodeIndex != 0) part.place += numbered("node", row.NodeIndex);
    const bool is_there = (row.Status & kPopulated) != 0 || row.CoreCount != 0 || !part.serial_number.empty();
    if (is_there) parts.push_back(part);
  }
  return parts;
}

Parts memory(const Inventory&) {
  Parts parts;
  for (const _ZELDB_Memory& row : read_memory()) {
    Part part{.kind = "memory", .place = place_called(row.DevLocator)};
    part.name = known(row.Manufacturer);
    part.part_number = known(row.PartNo);
    part.serial_number = known(row.SerialNo);
    part.firmware = known(row.FirmwareVersion);
    part.sizes["MiB"] = row.MemSize;
    if (row.Capacity != 0) part.sizes["bytes"] = row.Capacity;
    if (row.SlotNo != 0) part.place += numbered("slot", row.SlotNo);
    if (row.NodeIndex != 0) part.place += numbered("node", row.NodeIndex);
    // A module that failed has a size of 0, but its serial number still.
    if (row.MemSize != 0 || row.Capacity != 0 || !part.serial_number.empty()) parts.push_back(part);
  }
  return parts;
}

std::string pci_ids(const _ZELDB_PCI_Generic_Info& function) {
  char ids[32];
  std::snprintf(ids, sizeof(ids), "%04x:%04x:%04x:%04x", unsigned{function.VendorId},
                unsigned{function.DeviceId}, unsigned{function.SubVendorId}, unsigned{function.SubDeviceId});
  return ids;
}

void add_ports(uint32_t adapter, Part& part) {
  const std::string what = "ports of " + key_text(adapter);
  auto ports = list_of<_ZELDB_PhysicalPort_List>(
      what, [&](auto* list) { return zeldb_get_all_network_physical_port_list(adapter, list); },
      {ZELDB_NO_MATCH, ZELDB_NO_MORE_ROWS});
  std::ranges::stable_sort(ports, {}, &_ZELDB_PhysicalPort::Idx);
  if (!ports.empty()) part.address = known(ports.front().PermanentAddress);
  for (const _ZELDB_PhysicalPort& port : ports) {
    const std::string address = known(port.PermanentAddress);
    if (port.LinkStatus != 1 || address.empty()) continue;
    part.ports_up += (part.ports_up.empty() ? "" : " ") + address;
  }
}

// The versions of all components in a slot.
std::map<std::string, std::set<std::string>> firmware_by_place() {
  std::map<std::string, std::set<std::string>> versions;
  for (const _ZELDB_PldmFirmware& component : read_components()) {
    const std::string version = known(component.VersionString);
    if (!version.empty()) versions[place_text({component.Location, component.SlotNo})].insert(version);
  }
  return versions;
}

void add_product(uint32_t function, Part& part) {
  const auto product = find_product(function);
  if (!product) return;
  part.part_number = known(product->PartNo);
  part.serial_number = known(product->SerialNo);
}

// A drive in a slot is a part of its own: the slot's serial number and model are not the adapter's.
bool is_of_drive(const Inventory& inventory, uint32_t function, const char* firmware) {
  return std::ranges::any_of(inventory.drives, [=](const aim_disk_info_t& drive) {
    return drive.PCIFuncKey == function && std::strcmp(drive.FwVersion, firmware) == 0;
  });
}

// Adapters with a PCI function: the list keeps a card that was removed until its settings are removed.
Parts adapters(const Inventory& inventory) {
  const auto firmware = firmware_by_place();
  Parts parts;
  for (const SlotRow& slot : inventory.slots) {
    const Place place{slot.Location, slot.SlotNo};
    const std::vector<uint32_t> functions = functions_in_slot(place);
    if (functions.empty()) continue;
    const uint32_t key = functions.front();
    const auto found = find_function(key);
    if (!found) continue;
    const _ZELDB_PCI_Generic_Info& function = *found;
    Part part{.kind = "adapter", .place = place_text(place)};
    part.name = known(slot.CardName);
    part.model = pci_ids(function);
    add_product(key, part);
    if (function.DevKey != 0) add_ports(function.DevKey, part);
    if (!is_of_drive(inventory, key, slot.FirmwareVersion)) part.firmware = known(slot.FirmwareVersion);
    if (const auto components = firmware.find(part.place); components != firmware.end()) {
      part.firmware.clear();
      for (const std::string& version : components->second)
        part.firmware += (part.firmware.empty() ? "" : kVersionSeparator) + version;
    }
    parts.push_back(part);
  }
  return parts;
}

Parts gpus(const Inventory&) {
  Parts parts;
  for (const _ZELDB_PCI_GPU& gpu : all_gpus()) {
    const auto function = find_function(gpu.FunKey);
    if (!function) continue;
    const std::string slot = place_text({function->Location, function->SlotNo});
    for (const _ZELDB_GPU_Chip& chip : list_of<_ZELDB_GPU_Chip_List>(
             "chips of " + key_text(gpu.FunKey),
             [&](auto* list) { return zeldb_get_gpu_chip_list(gpu.FunKey, list); }, {ZELDB_NO_MORE_ROWS})) {
      Part part{.kind = "gpu", .place = slot + numbered("chip", chip.GPUChipIndex), .on = slot};
      part.name = known(chip.GPUChipName);
      part.model = known(chip.GPUChipModel);
      part.part_number = known(chip.GPUChipPartNumber);
      part.serial_number = known(chip.GPUChipSerialNumber);
      if (chip.GPUChipNumberOfEnabledCores != 0)
        part.sizes["enabled cores"] = chip.GPUChipNumberOfEnabledCores;
      parts.push_back(part);
    }
  }
  return parts;
}

// The size in GB that a text such as "960GB" or "3.84TB" gives; 0 for other texts.
uint64_t gigabytes(const char* capacity) {
  char* unit = nullptr;
  const double number = std::strtod(capacity, &unit);
  unit += std::strspn(unit, " ");
  constexpr struct {
    const char* unit;
    double gigabytes;
  } kUnits[] = {{"GB", 1}, {"TB", 1e3}, {"PB", 1e6}};
  for (const auto& known_unit : kUnits) {
    if (std::strcmp(unit, known_unit.unit) == 0 && number > 0 && number < 1e9)
      return static_cast<uint64_t>(std::llround(number * known_unit.gigabytes));
  }
  return 0;
}

Parts drives(const Inventory& inventory) {
  constexpr uint8_t kSlot = 1;
  Parts parts;
  for (const aim_disk_info_t& drive : inventory.drives) {
    Part part{.kind = "drive", .place = place_called(drive.Location)};
    part.name = known(drive.Model);
    part.model = part.name;
    part.part_number = known(drive.PartNo);
    part.serial_number = known(drive.SerialNo);
    part.firmware = known(drive.FwVersion);
    if (drive.LocationId == kSlot) part.on = place_text({kSlot, drive.BayNo});
    if (const uint64_t size = gigabytes(drive.Capacity); size != 0) part.sizes["GB"] = size;
    parts.push_back(part);
  }
  return parts;
}

// The library counts the bays of all backplanes together.
Parts backplanes(const Inventory&) {
  uint8_t bays = 0;
  uint8_t installed = 0;
  check(zeldb_get_bp_drive_count(&bays, &installed), "backplanes");
  if (bays == 0) return {};
  return {Part{.kind = "backplane", .place = "all", .sizes = {{"bays", bays}}}};
}

Parts embedded(const Inventory&) {
  Parts parts;
  for (const _ZELDB_EmbeddedFirmware& device : list_of<_ZELDB_EmbeddedFirmware_List>(
           "embedded devices", [](auto* list) { return zeldb_get_embedded_firmware_list(list); })) {
    Part part{.kind = "embedded", .place = place_called(device.DeviceName)};
    part.place += numbered("index", device.DeviceIndex);
    part.model = known(device.SoftwareID);
    part.firmware = std::to_string(device.Version);
    parts.push_back(part);
  }
  return parts;
}

// In the order in which they are listed.
constexpr struct {
  const char* kind;
  Parts (*read)(const Inventory& inventory);
} kKinds[] = {{"processor", processors}, {"memory", memory},        {"adapter", adapters}, {"gpu", gpus},
              {"drive", drives},         {"backplane", backplanes}, {"embedded", embedded}};

size_t rank(const std::string& kind) {
  const auto* const found = std::ranges::find(kKinds, kind, [](const auto& entry) { return entry.kind; });
  return static_cast<size_t>(found - std::begin(kKinds));
}

// If the inventory has several parts in one place, all but the first get a number.
void separate(Parts& parts) {
  std::ranges::sort(parts, [](const Part& one, const Part& other) {
    if (comes_before(one, other) || comes_before(other, one)) return comes_before(one, other);
    return one.serial_number < other.serial_number;
  });
  std::string last;
  unsigned count = 0;
  for (Part& part : parts) {
    const std::string here = part.kind + " " + part.place;
    count = here == last ? count + 1 : 1;
    last = here;
    if (count > 1) part.place += " #" + std::to_string(count);
  }
}

}  // namespace

bool is_placeholder(const char* text) {
  const auto is_it = [text](const char* placeholder) { return strcasecmp(text, placeholder) == 0; };
  return std::ranges::any_of(kPlaceholders, is_it);
}

std::vector<aim_disk_info_t> read_present_drives() {
  const auto absent = list_of<aim_disk_list_t>(
      "drives", [](auto* list) { return zeldb_get_disk_list_with_filter(list, "Presence=0"); });
  const auto answering = list_of<aim_disk_list_t>(
      "drives", [](auto* list) { return zeldb_get_nvme_disk_list_from_mi_filter(list, nullptr); });
  const auto is_among = [](const Drives& drives, const aim_disk_info_t& drive) {
    return std::ranges::any_of(
        drives, [&](const auto& other) { return std::strcmp(other.Location, drive.Location) == 0; });
  };
  Drives drives = read_drives();
  std::erase_if(drives,
                [&](const auto& drive) { return is_among(absent, drive) && !is_among(answering, drive); });
  return drives;
}

std::vector<Part> read_parts() {
  require_inventory("parts");
  const Inventory inventory{read_slots(), read_present_drives()};
  Parts parts;
  for (const auto& kind : kKinds) std::ranges::move(kind.read(inventory), std::back_inserter(parts));
  separate(parts);
  return parts;
}

bool comes_before(const Part& one, const Part& other) {
  if (rank(one.kind) != rank(other.kind)) return rank(one.kind) < rank(other.kind);
  if (one.kind != other.kind) return one.kind < other.kind;
  return strverscmp(one.place.c_str(), other.place.c_str()) < 0;
}

}  // namespace zeldb::cli
