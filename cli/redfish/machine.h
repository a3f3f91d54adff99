// SPDX-License-Identifier: Apache-2.0
//
// The input of the resources: the whole inventory, and the place of each part in the tree.
#ifndef CLI_REDFISH_MACHINE_H
#define CLI_REDFISH_MACHINE_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/inventory.h"
#include "cli/mask.h"
#include "cli/settings.h"
#include "cli/slots.h"
#include "zeldb/cpumem.h"
#include "zeldb/firmware.h"
#include "zeldb/pci.h"
#include "zeldb/storage.h"

namespace zeldb::cli::redfish {

inline const std::string kRoot = "/redfish/v1";
inline const std::string kSystem = kRoot + "/Systems/1";
inline const std::string kChassis = kRoot + "/Chassis/1";
inline const std::string kManager = kRoot + "/Managers/1";
inline const std::string kFirmware = kRoot + "/UpdateService/FirmwareInventory";
inline const std::string kRegistry = "ZeldbBiosAttributeRegistry.v1_0_0";

struct Entry {
  std::string id;
  std::string uri;
};

struct Processor : Entry {
  CountedProcessor record;
};

struct Gpu : Entry {
  _ZELDB_GPU_Chip record;
  std::string device;  // links
  std::string function;
};

struct Module : Entry {
  _ZELDB_Memory record;
  bool is_persistent;
};

struct Port : Entry {
  _ZELDB_PhysicalPort record;
  uint16_t technology;  // of its logical ports
  uint64_t speed;
};

struct NetworkFunction : Entry {
  _ZELDB_LogicalPort record;
  std::string function;
  std::string port;  // empty where it is not known
};

struct Function : Entry {
  uint32_t key;
  _ZELDB_PCI_Generic_Info record;
  std::string device;
  std::vector<std::string> gpus;
  std::vector<std::string> drives;
  std::vector<std::string> controllers;
  std::vector<std::string> network_functions;
};

// The device in one slot, on the board or in a backplane bay.
struct Device : Entry {
  SlotRow slot;
  _ZELDB_PCIVpdInfo product;
  std::vector<Function> functions;
  std::string adapter;  // the NetworkAdapter; empty without ports
  uint32_t port_count;  // the sum over its functions
  uint32_t logical_count;
  std::vector<Port> ports;
  std::vector<NetworkFunction> network_functions;
  std::string package;
  std::string component;  // the link to its firmware; empty where it is not known
};

struct Drive : Entry {
  aim_disk_info_t record;
  std::string function;  // empty for a drive without one of its own
  std::string storage;
};

struct Controller : Entry {
  const Device* device;
  const Function* function;
};

struct Storage : Entry {
  std::string name;
  std::vector<Controller> controllers;
  std::vector<const Drive*> drives;
};

struct Component : Entry {
  _ZELDB_PldmFirmware record;
  bool is_waiting;     // this version waits for its activation
  std::string device;  // empty where it is not known
};

struct Embedded : Entry {
  _ZELDB_EmbeddedFirmware record;
};

struct Setting {
  std::string name;  // of the attribute
  PCISetting_info record;
};

struct Machine {
  Mask* mask = nullptr;
  std::vector<Processor> processors;
  std::vector<Module> memory;
  std::vector<SlotRow> slots;
  std::vector<Device> devices;
  std::vector<Gpu> gpus;
  std::vector<Drive> drives;
  std::vector<Storage> storages;
  std::vector<Component> components;
  std::vector<Embedded> embedded;
  std::vector<Setting> settings;

  // A text of the column, masked when there is a mask.
  std::string shown(std::string_view column, const std::string& text, Holds holds = Holds::Choice) const;
  const Device* device_at(uint8_t location, uint16_t slot) const;
};

// Throws Failure when a part of the inventory cannot be read.
Machine read_machine(Mask* mask);

template <typename Entries>
std::vector<std::string> uris_of(const Entries& entries) {
  std::vector<std::string> uris;
  uris.reserve(entries.size());
  for (const auto& entry : entries) uris.push_back(entry.uri);
  return uris;
}

}  // namespace zeldb::cli::redfish

#endif
