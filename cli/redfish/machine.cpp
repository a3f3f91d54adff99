// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/machine.h"

#include <algorithm>
#include <map>
#include <set>

#include "cli/arguments.h"
#include "cli/components.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/parts.h"
#include "cli/redfish/values.h"

namespace zeldb::cli::redfish {

namespace {

constexpr uint8_t kLastSlotLocation = 1;  // higher ones are bays
constexpr uint32_t kNvme = 0x010800;
constexpr uint32_t kClass = 0xFFFF00;
constexpr uint32_t kMassStorage = 1;  // the base class

// Gives ids to resources of one collection: letters, digits and hyphens, and no id twice.
class Ids {
 public:
  std::string operator()(const std::string& wanted) {
    std::string id = slug(wanted);
    for (unsigned count = 2; !used_.insert(id).second; ++count)
      id = slug(wanted) + "-" + std::to_string(count);
    return id;
  }

 private:
  std::set<std::string> used_;
};

template <typename Part>
void name_entry(Part& part, Ids& ids, const std::string& collection, const std::string& wanted) {
  part.id = ids(wanted);
  part.uri = collection + "/" + part.id;
}

uint32_t key_of(uint8_t location, uint16_t slot) {
  return uint32_t{location} << 16U | slot;
}

void add_processors(Machine& machine) {
  Ids ids;
  for (const CountedProcessor& record : read_processors()) {
    Processor& processor = machine.processors.emplace_back();
    processor.record = record;
    name_entry(processor, ids, kSystem + "/Processors", record.Socket);
  }
}

void add_memory(Machine& machine) {
  Ids ids;
  const auto persistent =
      list_of<_ZELDB_Id_List>("memory", [](auto* list) { return zeldb_get_AEP_memory_list(list); });
  for (const _ZELDB_Memory& record : read_memory()) {
    Module& module = machine.memory.emplace_back();
    module.record = record;
    module.is_persistent = std::ranges::find(persistent, record._id) != persistent.end();
    name_entry(module, ids, kSystem + "/Memory", record.DevLocator);
  }
}

// A logical port belongs to a physical one of its function.
void add_ports(Device& device, Function& function, Ids& port_ids, Ids& function_ids) {
  const std::string what = "ports of " + key_text(function.key);
  const auto physical = list_of<_ZELDB_PhysicalPort_List>(
      what, [&](auto* list) { return zeldb_get_network_physical_port_list(function.key, list); },
      {ZELDB_NO_MATCH, ZELDB_NO_MORE_ROWS});
  const auto logical = list_of<_ZELDB_LogicalPort_List>(
      what, [&](auto* list) { return zeldb_get_network_logical_port_list(function.key, list); },
      {ZELDB_NO_MATCH, ZELDB_NO_MORE_ROWS});
  const std::string adapter = kChassis + "/NetworkAdapters/" + device.id;
  std::map<uint16_t, std::string> ports;
  for (const _ZELDB_PhysicalPort& record : physical) {
    Port& port = device.ports.emplace_back();
    port.record = record;
    name_entry(port, port_ids, adapter + "/Ports", function.id + "-" + std::to_string(record.Idx));
    ports.emplace(record.Idx, port.uri);
    for (const _ZELDB_LogicalPort& other : logical) {
      if (other.PhyIdx != record.Idx) continue;
      port.speed = std::max(port.speed, other.MaxSpeed);
      if (port.technology == 0) port.technology = other.LinkTechnology;
    }
  }
  for (const _ZELDB_LogicalPort& record : logical) {
    NetworkFunction& network = device.network_functions.emplace_back();
    network.record = record;
    network.function = function.uri;
    if (const auto port = ports.find(record.PhyIdx); port != ports.end()) network.port = port->second;
    name_entry(network, function_ids, adapter + "/NetworkDeviceFunctions",
               function.id + "-" + std::to_string(record.PhyIdx) + "-" + std::to_string(record.Idx));
    function.network_functions.push_back(network.uri);
  }
}

void add_network(Device& device) {
  Ids ports;
  Ids functions;
  for (Function& function : device.functions) {
    _ZELDB_Network_Info info = {};
    zeldb_get_network_info(function.key, &info);
    device.port_count += info.NumberofPhysicalPorts;
    device.logical_count += info.MaxNumberofLogicalPorts;
    add_ports(device, function, ports, functions);
  }
  const bool has_ports = device.port_count != 0 || !device.ports.empty() || !device.network_functions.empty();
  if (has_ports) device.adapter = kChassis + "/NetworkAdapters/" + device.id;
}

void add_product(Device& device) {
  if (const auto product = find_product(device.functions.front().key)) device.product = *product;
}

Device device_of(const Machine& machine, const std::vector<Function>& functions) {
  Device device;
  const _ZELDB_PCI_Generic_Info& first = functions.front().record;
  const auto slot = std::ranges::find_if(machine.slots, [&](const SlotRow& row) {
    return row.Location == first.Location && row.SlotNo == first.SlotNo;
  });
  device.slot = slot != machine.slots.end() ? *slot : SlotRow{};
  device.slot.Location = first.Location;
  device.slot.SlotNo = first.SlotNo;
  device.id = key_text(key_of(first.Location, first.SlotNo));
  device.uri = kChassis + "/PCIeDevices/" + device.id;
  device.product = {};
  device.port_count = 0;
  device.logical_count = 0;
  device.functions = functions;
  for (Function& function : device.functions) {
    function.device = device.uri;
    function.uri = device.uri + "/PCIeFunctions/" + function.id;
  }
  add_product(device);
  add_network(device);
  return device;
}

void add_devices(Machine& machine) {
  std::map<std::pair<uint8_t, uint16_t>, std::vector<Function>> functions;
  std::set<uint32_t> seen;
  for (const uint32_t key : function_keys()) {
    const auto record = find_function(key);
    if (!record || !seen.insert(key).second) continue;
    Function function;
    function.key = key;
    function.id = key_text(key);
    function.record = *record;
    functions[{function.record.Location, function.record.SlotNo}].push_back(function);
  }
  for (const auto& [place, those] : functions) machine.devices.push_back(device_of(machine, those));
}

Function* function_of(Machine& machine, uint32_t key) {
  for (Device& device : machine.devices) {
    const auto found = std::ranges::find(device.functions, key, &Function::key);
    if (found != device.functions.end()) return &*found;
  }
  return nullptr;
}

void add_gpus(Machine& machine) {
  Ids ids;
  for (const Processor& processor : machine.processors) ids(processor.id);
  for (const _ZELDB_PCI_GPU& gpu : all_gpus()) {
    Function* const function = function_of(machine, gpu.FunKey);
    if (function == nullptr) continue;
    for (const _ZELDB_GPU_Chip& record : list_of<_ZELDB_GPU_Chip_List>(
             "chips of " + key_text(gpu.FunKey),
             [&](auto* list) { return zeldb_get_gpu_chip_list(gpu.FunKey, list); }, {ZELDB_NO_MORE_ROWS})) {
      Gpu& chip = machine.gpus.emplace_back();
      chip.record = record;
      chip.device = function->device;
      chip.function = function->uri;
      name_entry(chip, ids, kSystem + "/Processors",
                 "GPU-" + function->id + "-" + std::to_string(record.GPUChipIndex));
      function->gpus.push_back(chip.uri);
    }
  }
}

// Values of a drive that its product data lack, taken from its own PCI device.
void complete(Device& device, const aim_disk_info_t& drive) {
  const auto add = [](auto& text, const char* other) {
    if (says_nothing(text)) copy_text(text, other);
  };
  add(device.slot.CardName, drive.Model);
  add(device.slot.SerialNo, drive.SerialNo);
  add(device.slot.FirmwareVersion, drive.FwVersion);
  add(device.product.Manufacture, drive.Manufacture);
  add(device.product.Model, drive.Model);
  add(device.product.PartNo, drive.PartNo);
  add(device.product.FRUNo, drive.FruNo);
}

void add_drives(Machine& machine) {
  Ids ids;
  for (const aim_disk_info_t& record : read_present_drives()) {
    Drive& drive = machine.drives.emplace_back();
    drive.record = record;
    name_entry(drive, ids, kChassis + "/Drives", record.Location);
    Function* const function = function_of(machine, record.PCIFuncKey);
    if (function == nullptr || record.PCIFuncKey == 0) continue;
    drive.storage = function->device;
    if ((function->record.ClsCode & kClass) != kNvme) continue;
    drive.function = function->uri;
    function->drives.push_back(drive.uri);
    const auto device = std::ranges::find(machine.devices, function->device, &Device::uri);
    complete(*device, record);
  }
}

void add_controllers(Storage& storage, Device& device) {
  for (Function& function : device.functions) {
    if (function.record.ClsCode >> 16U != kMassStorage) continue;
    Controller& controller = storage.controllers.emplace_back();
    controller.id = function.id;
    controller.uri = storage.uri + "/Controllers/" + controller.id;
    controller.device = &device;
    controller.function = &function;
    function.controllers.push_back(controller.uri);
  }
}

void add_storage(Machine& machine, Storage storage, const std::string& device) {
  storage.uri = kSystem + "/Storage/" + storage.id;
  for (Drive& drive : machine.drives) {
    if (drive.storage != device) continue;
    drive.storage = storage.uri;
    storage.drives.push_back(&drive);
  }
  if (!storage.controllers.empty() || !storage.drives.empty()) machine.storages.push_back(storage);
}

// A storage for each device with controllers, and one for drives whose controller is not known.
void add_storages(Machine& machine) {
  for (Device& device : machine.devices) {
    Storage storage;
    storage.id = device.id;
    storage.uri = kSystem + "/Storage/" + storage.id;
    storage.name = device.slot.CardName;
    add_controllers(storage, device);
    add_storage(machine, storage, device.uri);
  }
  Storage others;
  others.id = "Others";
  others.name = "Drives behind a controller that is not known";
  add_storage(machine, others, "");
}

void add_components(Machine& machine) {
  Ids ids;
  for (const _ZELDB_PldmFirmware& record : read_components()) {
    Component component;
    component.record = record;
    component.is_waiting = false;
    const std::string name = key_text(key_of(record.Location, record.SlotNo)) + "-" +
                             std::to_string(record.DeviceType) + "-" + record.SoftwareID;
    name_entry(component, ids, kFirmware, name);
    const auto device = std::ranges::find_if(machine.devices, [&](const Device& other) {
      return other.slot.Location == record.Location && other.slot.SlotNo == record.SlotNo;
    });
    if (device != machine.devices.end()) {
      component.device = device->uri;
      if (device->component.empty()) device->component = component.uri;
      if (device->package.empty()) device->package = record.PkgVersionString;
    }
    machine.components.push_back(component);
    if (!waits(record)) continue;
    component.is_waiting = true;
    name_entry(component, ids, kFirmware, name + "-pending");
    machine.components.push_back(component);
  }
  for (const _ZELDB_EmbeddedFirmware& record : list_of<_ZELDB_EmbeddedFirmware_List>(
           "embedded devices", [](auto* list) { return zeldb_get_embedded_firmware_list(list); })) {
    Embedded& device = machine.embedded.emplace_back();
    device.record = record;
    name_entry(device, ids, kFirmware,
               std::string("Embedded-") + record.DeviceName + "-" + std::to_string(record.DeviceIndex));
  }
}

// The attribute's name in the form that a registry allows.
std::string attribute_name(const std::string& id) {
  std::string name;
  for (const char c : id) name += is_letter_or_digit(c) ? c : '_';
  return name.size() > 1 && !is_digit(name.front()) && name.front() != '_' ? name : "Attribute_" + name;
}

void add_settings(Machine& machine) {
  std::set<std::string> names;
  for (const Device& device : machine.devices) {
    for (const Function& function : device.functions) {
      for (const PCISetting_info& record : read_settings(function.key)) {
        const std::string wanted = attribute_name(text_of(record.SettingID));
        std::string name = wanted;
        for (unsigned count = 2; !names.insert(name).second; ++count)
          name = wanted + "_" + std::to_string(count);
        machine.settings.push_back({name, record});
      }
    }
  }
}

}  // namespace

std::string Machine::shown(std::string_view column, const std::string& text, Holds holds) const {
  return mask != nullptr ? (*mask)(column, text, holds) : text;
}

const Device* Machine::device_at(uint8_t location, uint16_t slot) const {
  const auto found = std::ranges::find_if(devices, [&](const Device& device) {
    return device.slot.Location == location && device.slot.SlotNo == slot;
  });
  return found != devices.end() ? &*found : nullptr;
}

Machine read_machine(Mask* mask) {
  require_inventory("redfish");
  Machine machine;
  machine.mask = mask;
  add_processors(machine);
  add_memory(machine);
  machine.slots = read_slots();
  add_devices(machine);
  add_gpus(machine);
  add_drives(machine);
  add_storages(machine);
  add_components(machine);
  add_settings(machine);
  std::erase_if(machine.slots, [](const SlotRow& slot) { return slot.Location != kLastSlotLocation; });
  return machine;
}

}  // namespace zeldb::cli::redfish
