// SPDX-License-Identifier: Apache-2.0
#include "cli/inventory.h"

#include <cstdio>

#include "cli/arguments.h"
#include "cli/library.h"

namespace zeldb::cli {

std::vector<aim_disk_info_t> read_drives() {
  require_inventory("drives");
  return list_of<aim_disk_list_t>("drives", [](auto* list) {
    zeldb_get_merged_disk_list(list);
    return ZELDB_OK;
  });
}

std::vector<uint32_t> function_keys(std::string condition) {
  std::string order = "FunKey";
  return list_of<_ZELDB_PCI_FunKey_List>("functions", [&](auto* list) {
    return zeldb_get_pci_funkey_list_by_filter(condition.data(), order.data(), list);
  });
}

std::vector<uint32_t> functions_of_adapter(uint32_t adapter) {
  return list_of<_ZELDB_PCI_FunKey_List>("adapter " + key_text(adapter), [&](auto* list) {
    return zeldb_get_pci_funkey_list(static_cast<int>(adapter), list);
  });
}

std::vector<uint32_t> functions_in_slot(const Place& slot) {
  return list_of<_ZELDB_PCI_FunKey_List>("slot " + place_text(slot), [&](auto* list) {
    return zeldb_get_pci_funkey_list_by_slot(slot.location, slot.number, list);
  });
}

_ZELDB_PCI_Generic_Info read_function(uint32_t key) {
  _ZELDB_PCI_Generic_Info function = {};
  check(zeldb_get_pci_generic_info(key, &function), "function " + key_text(key));
  return function;
}

std::string card_name(uint32_t function) {
  char name[129] = {};
  zeldb_get_pci_cardname_by_funkey(function, name, sizeof(name));
  return name;
}

std::string pci_address(unsigned segment, unsigned bus, unsigned device, unsigned function) {
  char address[32];
  std::snprintf(address, sizeof(address), "%04x:%02x:%02x.%x", segment, bus, device, function);
  return address;
}

}  // namespace zeldb::cli
