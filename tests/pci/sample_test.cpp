// SPDX-License-Identifier: Apache-2.0
//
// The sample controller shows something in every list.
#include <gtest/gtest.h>

#include <cstdlib>

#include "platform/zel_db_admin.h"
#include "tests/support/database.h"
#include "zeldb/pci.h"

namespace zeldb_test {
namespace {

constexpr int kRaidCard = 65537;
constexpr int kLan = 1;

class Sample : public DatabaseTest {
 protected:
  void SetUp() override {
    load("dmdb", "inventory.sql");
    load("dmdb", "adapters.sql");
    load("propertiesdb", "properties.sql");
  }

  static void load(const char* name, const std::string& file) {
    char error[512] = "";
    EXPECT_EQ(zel_db_load(nullptr, name, (ZELDB_SAMPLES "/" + file).c_str(), error, sizeof(error)), 0)
        << error;
  }

  template <typename List, typename Read>
  static unsigned count(Read read) {
    List list = {};
    EXPECT_EQ(read(&list), 0);
    std::free(list.Items);
    return list.Count;
  }
};
ZELDB_ON_EVERY_ENGINE(Sample);

TEST_P(Sample, ShowsEveryList) {
  static constexpr unsigned kNic = 19988480;
  static constexpr unsigned kGpu = 21692416;
  EXPECT_EQ(count<_ZELDB_PCI_FunKey_List>([](auto* l) { return zeldb_get_pci_keys(l, nullptr); }), 14U);
  EXPECT_EQ(count<_ZELDB_PCI_FunKey_List>([](auto* l) { return zeldb_get_pci_funkey_list(kRaidCard, l); }),
            1U);
  EXPECT_EQ(
      count<_ZELDB_PCI_FunKey_List>([](auto* l) { return zeldb_get_pci_funkey_list_by_slot(1, 10, l); }), 4U);
  EXPECT_EQ(count<_ZELDB_PCI_Generic_Info_List>([](auto* l) { return zeldb_get_aic_drive_pci_info_list(l); }),
            2U);
  EXPECT_EQ(count<_ZELDB_PCI_Adapter_List>([](auto* l) { return zeldb_get_pci_adapter_list(l); }), 16U);
  EXPECT_EQ(count<_ZELDB_NCSI_Id_List>([](auto* l) { return zeldb_get_ncsi_id_list(l); }), 3U);
  EXPECT_EQ(count<_ZELDB_LogicalPort_List>(
                [](auto* l) { return zeldb_get_all_network_logical_port_list(65538, l); }),
            3U);
  EXPECT_EQ(count<_ZELDB_PhysicalPort_List>(
                [](auto* l) { return zeldb_get_all_network_physical_port_list(kLan, l); }),
            4U);
  EXPECT_EQ(count<_ZELDB_PCI_GPU_List>([](auto* l) { return zeldb_get_pci_gpu_list(l); }), 2U);
  EXPECT_EQ(count<_ZELDB_GPU_Chip_List>([](auto* l) { return zeldb_get_gpu_chip_list(kGpu, l); }), 1U);
  _ZELDB_PCI_Misc_Info misc = {};
  EXPECT_EQ(zeldb_get_pci_misc_info(kNic, &misc), 0);
  EXPECT_STREQ(misc.ConnectorLayoutText, "PCI-E");
  _ZELDB_PCIVpdInfo vpd = {};
  EXPECT_EQ(zeldb_get_pci_vpd_info(kGpu, &vpd), 0);
  EXPECT_STREQ(vpd.ProductName, "A2 16GB PCIe Accelerator");
  EXPECT_EQ(database.text("SELECT SerialNo, FRUNo FROM VPDs WHERE SlotNo=3"), "1652022000001,03GX004");
}

}  // namespace
}  // namespace zeldb_test
