// SPDX-License-Identifier: Apache-2.0
//
// Reads that several commands share.
#ifndef CLI_INVENTORY_H
#define CLI_INVENTORY_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/arguments.h"
#include "zeldb/cpumem.h"
#include "zeldb/pci.h"
#include "zeldb/storage.h"

namespace zeldb::cli {

// The counts of the table; the library's record has only their lowest eight bits.
struct CountedProcessor : _ZELDB_Processor {
  uint32_t CoreCount;
  uint32_t CoreEnabled;
  uint32_t ThreadCount;
};
std::vector<CountedProcessor> read_processors();
std::vector<_ZELDB_Memory> read_memory();
// A drive without a sensor reads as sound. The health of a drive that a scan has found becomes the drive's
// own report, or unknown without one.
void settle_health(std::vector<aim_disk_info_t>& drives);
// All drives. Read once in a run.
std::vector<aim_disk_info_t> read_drives();

// All adapters and all GPUs. Each is read once in a run.
std::vector<_ZELDB_PCI_Adapter> all_adapters();
std::vector<_ZELDB_PCI_GPU> all_gpus();

// Keys of the functions that an SQL condition selects, ascending.
std::vector<uint32_t> function_keys(std::string condition);
// Of all functions. Read once in a run.
std::vector<uint32_t> function_keys();
std::vector<uint32_t> functions_of_adapter(uint32_t adapter);
std::vector<uint32_t> functions_in_slot(const Place& slot);
// The function with this key, or those in a slot, which have to be there; all without either.
std::vector<uint32_t> chosen_functions(const Key& function, const std::optional<Place>& slot);

// A function that the user asked for: throws if it is not there. A listing uses find_function, because a
// function may be removed before it is read.
_ZELDB_PCI_Generic_Info read_function(uint32_t key);
std::optional<_ZELDB_PCI_Generic_Info> find_function(uint32_t key);
// Throws unless a function or an adapter is in the slot.
void require_slot(const Place& slot);

// Reads the products that later calls may no longer get. find_product calls it the first time.
void prepare_products();
// Nothing where there is none.
std::optional<_ZELDB_PCIVpdInfo> find_product(uint32_t function);

// Empty when it has none.
std::string card_name(uint32_t function);

struct Hardware {
  uint32_t id;
  uint8_t type;
};
// Zeros where the function is not known.
Hardware hardware_of(uint32_t function);

// False only if a function of the inventory has no row in PCIAdapter, PCINetwork or PCISetting: then there is
// nothing to ask for.
bool may_have_adapter_row(uint32_t function);
bool may_have_network_row(uint32_t function);
bool may_have_settings(uint32_t function);

// "0000:17:00.0"
std::string pci_address(unsigned segment, unsigned bus, unsigned device, unsigned function);

}  // namespace zeldb::cli

#endif
