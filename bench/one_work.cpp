// SPDX-License-Identifier: Apache-2.0
#include "bench/one_work.h"

#include <algorithm>
#include <cstdlib>

#include "bench/records.h"
#include "bench/works.h"
#include "zeldb/firmware.h"

namespace bench {

namespace {

struct Named {
  const char* name;
  void (*run)(unsigned count);
};

template <auto function, class List>
void list(unsigned /*count*/) {
  List all = {};
  function(&all);
  if (all.Count == 0) give_up("an empty list");
  std::free(all.Items);
}

Works& ours() {
  static const std::unique_ptr<Works> works = library("");
  return *works;
}

void store(unsigned count) {
  static Settings settings;
  for (unsigned i = 0; i < count; ++i) ours().store(settings[i]);
}

const Named kWorks[] = {
    {"store", store},
    {"settings", [](unsigned) { ours().list_settings(); }},
    {"keyed",
     [](unsigned count) {
       for (unsigned i = 0; i < count; ++i) ours().aim_supported(function_key(i));
     }},
    {"wide",
     [](unsigned count) {
       for (unsigned i = 0; i < count; ++i) ours().device_id(function_key(i));
     }},
    {"property",
     [](unsigned count) {
       for (unsigned i = 0; i < count; ++i) ours().property();
     }},
    {"adapters", list<zeldb_get_pci_adapter_list, _ZELDB_PCI_Adapter_List>},
    {"drives", list<zeldb_get_disk_list, aim_disk_list_t>},
    {"merged", list<zeldb_get_merged_disk_list, aim_disk_list_t>},
    {"backplane", list<zeldb_get_u2_aic_nvme_disk_list, aim_disk_list_t>},
    {"components", list<zeldb_get_pldm_firmware_list, _ZELDB_PldmFirmware_List>},
};

}  // namespace

void run_work(const std::string& name, unsigned count) {
  const auto* const work = std::find_if(std::begin(kWorks), std::end(kWorks),
                                        [&](const Named& named) { return named.name == name; });
  if (work == std::end(kWorks)) give_up("no work " + name);
  work->run(count);
}

}  // namespace bench
