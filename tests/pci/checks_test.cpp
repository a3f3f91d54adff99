// SPDX-License-Identifier: Apache-2.0
//
// What every function of the header answers before it looks at a table.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/pci.h"
#include "zeldb/ucm.h"

namespace zeldb_test {
namespace {

constexpr int kWorks = -1;  // goes on to the table

struct Check {
  const char* name;
  std::function<int()> call;  // with null for each pointer
  int unreachable;            // without a database
  int null;                   // with one
};

uint16_t id = 0;
unsigned char byte = 0;
unsigned word = 0;
char buffer[8];

const Check kChecks[] = {
    {"keys", [] { return zeldb_get_pci_keys(nullptr, nullptr); }, 3, 3},
    {"by filter", [] { return zeldb_get_pci_funkey_list_by_filter(buffer, nullptr, nullptr); }, 6, 3},
    {"by null filter", [] { return zeldb_get_pci_funkey_list_by_filter(nullptr, nullptr, nullptr); }, 6, 6},
    {"by slot", [] { return zeldb_get_pci_funkey_list_by_slot(0, 0, nullptr); }, 6, 3},
    {"of adapter", [] { return zeldb_get_pci_funkey_list(0, nullptr); }, 6, 3},
    {"oob type", [] { return zeldb_get_pci_function_oob_type(0, nullptr, nullptr); }, 6, 3},
    {"function type", [] { return zeldb_get_pci_function_type(0, nullptr); }, 6, 3},
    {"hardware id", [] { return zeldb_get_pci_hardwareidtype_by_funkey(0, nullptr, &byte); }, 6, 3},
    {"hardware type", [] { return zeldb_get_pci_hardwareidtype_by_funkey(0, &word, nullptr); }, 6, 3},
    {"vendor", [] { return zeldb_get_pci_id_by_funkey(0, nullptr, &id, &id, &id); }, 6, 3},
    {"subdevice", [] { return zeldb_get_pci_id_by_funkey(0, &id, &id, &id, nullptr); }, 6, 3},
    {"card name", [] { return zeldb_get_pci_cardname_by_funkey(0, nullptr, 8); }, 6, 3},
    {"card name size", [] { return zeldb_get_pci_cardname_by_funkey(0, buffer, 0); }, 6, 3},
    {"generic", [] { return zeldb_get_pci_generic_info(0, nullptr); }, 6, 3},
    {"generic list", [] { return zeldb_get_pci_generic_info_list(nullptr, nullptr); }, 6, 3},
    {"drives", [] { return zeldb_get_aic_drive_pci_info_list(nullptr); }, 6, 3},
    {"misc", [] { return zeldb_get_pci_misc_info(0, nullptr); }, 6, 3},
    {"adapters", [] { return zeldb_get_pci_adapter_list(nullptr); }, 6, 3},
    {"ncsi list", [] { return zeldb_get_ncsi_id_list(nullptr); }, 6, 3},
    {"network", [] { return zeldb_get_network_info(0, nullptr); }, 6, 3},
    {"logical", [] { return zeldb_get_network_logical_port_list(0, nullptr); }, 6, 3},
    {"logical of port", [] { return zeldb_get_network_logical_port_list2(0, 0, nullptr); }, 6, 3},
    {"logical of adapter", [] { return zeldb_get_all_network_logical_port_list(0, nullptr); }, 6, 3},
    {"physical", [] { return zeldb_get_network_physical_port_list(0, nullptr); }, 6, 3},
    {"physical of adapter", [] { return zeldb_get_all_network_physical_port_list(0, nullptr); }, 6, 3},
    {"link state", [] { return zeldb_get_network_physical_port_link_state(0, nullptr, -1); }, 6, 3},
    {"set link state", [] { return zeldb_set_network_physical_port_link_state(0, nullptr, -1); }, 6, 3},
    {"gpus", [] { return zeldb_get_pci_gpu_list(nullptr); }, 6, 3},
    {"gpu", [] { return zeldb_get_gpu_device_info(0, nullptr); }, 6, 3},
    {"chips", [] { return zeldb_get_gpu_chip_list(0, nullptr); }, 6, 3},
    {"vpd", [] { return zeldb_get_pci_vpd_info(0, nullptr); }, 6, 3},
    {"health", [] { return zeldb_get_adapter_health_status(0, 0, nullptr); }, 3, 3},
    {"health of a slot", [] { return zeldb_get_adapter_health_status(0, 0, &byte); }, 6, kWorks},
    {"set health", [] { return zeldb_set_adapter_health_status(0, 0, 0); }, 6, kWorks},
    {"pci key", [] { return zeldb_get_adapter_pcikey_by_slotNo(0, 0, nullptr); }, 6, 6},
    {"ncsi", [] { return zeldb_get_ncsi_id_by_slotNo(0, 0, nullptr, &byte); }, 6, 6},
    {"set ncsi", [] { return zeldb_set_ncsi_id_by_slotNo(0, 0, 0, 0, 0); }, 6, kWorks},
    {"merge", [] { return zeldb_merge_aim_ucm_pfa(); }, 6, kWorks},
    {"store", [] { return static_cast<int>(extract_PCISetting_info(nullptr)); }, 6, 0},
    {"set names", [] { return zeldb_get_pci_configID(0, nullptr); }, 6, 3},
    {"set count", [] { return zeldb_get_pci_configSet_count(0, nullptr, nullptr); }, 6, 3},
    {"set list", [] { return zeldb_get_pci_configSet_list(0, nullptr, 0, nullptr, 0, nullptr); }, 6, 3},
    {"set list, negative", [] { return zeldb_get_pci_configSet_list(0, nullptr, -1, nullptr, 0, &id); }, 6,
     3},
    {"set list, no room", [] { return zeldb_get_pci_configSet_list(0, nullptr, 1, nullptr, 0, &id); }, 6, 3},
    {"save, negative", [] { return zeldb_save_pci_configSet_list(nullptr, -1); }, 6, 3},
    {"save, no entries", [] { return zeldb_save_pci_configSet_list(nullptr, 1); }, 6, 3},
};

TEST(Checks, StandInTheirOrder) {
  const Database database;
  for (const Check& check : kChecks) {
    SCOPED_TRACE(check.name);
    shim().reset();
    shim().fail({.op = "get_dmdb_handle", .nth = 0});
    shim().fail({.op = "open", .nth = 0});
    EXPECT_EQ(check.call(), check.unreachable);
    if (check.null == kWorks) continue;
    shim().reset();
    EXPECT_EQ(check.call(), check.null);
    EXPECT_TRUE(shim().calls("query").empty());
  }
  libc().mark("dp.ucmparsing");
  EXPECT_EQ(zeldb_get_pci_configID(0, nullptr), 32);
  EXPECT_EQ(zeldb_get_pci_configSet_count(0, nullptr, nullptr), 32);
  EXPECT_EQ(zeldb_get_pci_configSet_list(0, nullptr, -1, nullptr, 0, nullptr), 32);
}

// What lists make of a failing query, a missing result, a failing step and a row that was not counted. Two
// rows each.
TEST(Checks, OfListsUnderFaults) {
  const Database database;
  for (const char* key : {"1", "2"}) {
    database.run_all(
        {std::string("INSERT INTO PCIs (FunKey, FunType, Location) VALUES (") + key + ", 4, 1)",
         std::string("INSERT INTO PCIAdapter (PCIFuncKey, PCIKey, NodeNo, SlotNo, SegNo, BusNo, DeviceNo, "
                     "CardName, Location) VALUES (1, ") +
             key + ", 0, 0, 0, 0, 0, 'x', 1)",
         "INSERT INTO PCILogicalPort (PCIFuncKey, PermanentAddress) VALUES (1, '00:11:22:33:44')",
         "INSERT INTO NCSIPackageID (Location, SlotNo, PackageID1, PackageID2) VALUES (1, 1, 1, 1)",
         "INSERT INTO PCIGPUChip (PCIFuncKey) VALUES (1)"});
  }
  struct AnyList {
    uint32_t Count;
    void* Items;
  };
  using Generic = _ZELDB_PCI_Generic_Info_List;
  const struct {
    const char* name;
    std::function<int(AnyList*)> call;
    int no_result;
    int step_error;
    bool untouched;  // by a failing query
  } cases[] = {
      {"generic",
       [](auto* l) { return zeldb_get_pci_generic_info_list(reinterpret_cast<Generic*>(l), nullptr); }, 0, 0,
       true},
      {"adapters",
       [](auto* l) { return zeldb_get_pci_adapter_list(reinterpret_cast<_ZELDB_PCI_Adapter_List*>(l)); }, 0,
       5, false},
      {"ncsi", [](auto* l) { return zeldb_get_ncsi_id_list(reinterpret_cast<_ZELDB_NCSI_Id_List*>(l)); }, 0,
       5, true},
      {"logical",
       [](auto* l) {
         return zeldb_get_network_logical_port_list(1, reinterpret_cast<_ZELDB_LogicalPort_List*>(l));
       },
       10, 5, false},
      {"gpus", [](auto* l) { return zeldb_get_pci_gpu_list(reinterpret_cast<_ZELDB_PCI_GPU_List*>(l)); }, 0,
       5, false},
      {"chips",
       [](auto* l) { return zeldb_get_gpu_chip_list(1, reinterpret_cast<_ZELDB_GPU_Chip_List*>(l)); }, 0, 5,
       false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    int stays = 0;
    const auto called = [&c](const Rule& rule, AnyList& list) {
      shim().reset();
      shim().fail(rule);
      return c.call(&list);
    };
    AnyList list = {.Count = 7, .Items = &stays};
    EXPECT_EQ(called({.op = "query", .nth = 1, .status = 2, .with_result = true}, list), 2);
    EXPECT_EQ(list.Items, c.untouched ? &stays : nullptr);
    list = {};
    EXPECT_EQ(called({.op = "query", .nth = 1, .status = 0}, list), c.no_result);
    EXPECT_EQ(list.Items, nullptr);
    EXPECT_EQ(called({.op = "row_count", .nth = 1, .fewer = 1}, list), 0);
    EXPECT_EQ(list.Count, 1U);
    std::free(list.Items);
    for (const unsigned after : {0U, 1U, 2U}) {
      list = {};
      EXPECT_EQ(called({.op = "step", .nth = 1, .status = 5, .after = after}, list), c.step_error);
      EXPECT_EQ(list.Count, c.step_error == 0 ? after : 0U);
      std::free(list.Items);
    }
  }
}

}  // namespace
}  // namespace zeldb_test
