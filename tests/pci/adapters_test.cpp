// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/pci.h"

namespace zeldb_test {
namespace {

using Texts = std::vector<std::string>;

class Adapters : public DatabaseTest {
 protected:
  // Columns behind key and function key.
  void add(int key, int function, const std::string& aim, const std::string& connector,
           const std::string& name, int location, const std::string& health = "1") {
    const std::string slot = std::to_string(key % 65536);
    database.run(
        "INSERT INTO PCIAdapter (PCIKey, PCIFuncKey, NodeNo, SlotNo, SegNo, BusNo, DeviceNo, AIMSupported, "
        "ConnectorType, CardName, Location, HealthStatus) VALUES (" +
        std::to_string(key) + ", " + std::to_string(function) + ", 0, " + slot + ", 0, 70000, 1, " + aim +
        ", " + connector + ", " + name + ", " + std::to_string(location) + ", " + health + ")");
  }

  // One line per adapter: key, AIM, code, text, name.
  Texts listed() {
    _ZELDB_PCI_Adapter_List list = {};
    EXPECT_EQ(zeldb_get_pci_adapter_list(&list), 0);
    Texts texts;
    for (uint32_t i = 0; i < list.Count; ++i) {
      const _ZELDB_PCI_Adapter& a = list.Items[i];
      texts.push_back(std::to_string(a.PCIKey) + " " + std::to_string(a.AIMSupported) + " " +
                      std::to_string(a.ConnectorType) + " " + a.ConnectorTypeText + ", " + a.CardName);
    }
    ncsi.clear();
    for (uint32_t i = 0; i < list.Count; ++i) {
      const _ZELDB_PCI_Adapter& a = list.Items[i];
      ncsi.push_back(std::to_string(a.NCSIPresent) + " " + std::to_string(a.PackageID1) + " " +
                     std::to_string(a.PackageID2));
      EXPECT_EQ(a.BusNo, 4464);  // 70000, cut to 16 bits
    }
    std::free(list.Items);
    return texts;
  }

  Texts ncsi;
};
ZELDB_ON_EVERY_ENGINE(Adapters);

TEST_P(Adapters, AreListed) {
  const std::string combined = "Broadcom 57416 10GBASE-T 2-port + 5720 1GbE 2-port OCP Ethernet Adapter";
  database.run_all(
      {"INSERT INTO PCIs (FunKey, Location) VALUES (11, 1)", "INSERT INTO PCIs (FunKey) VALUES (12)",
       "INSERT INTO PCIs (FunKey, DeviceId, SubDeviceId) VALUES (41, 5848, 16739)",
       "INSERT INTO NCSIPackageID (Location, SlotNo, PackageID1, PackageID2) VALUES (0, 1, 8, 9)",
       "INSERT INTO NCSIPackageID (Location, SlotNo, PackageID1, PackageID2) VALUES (1, 1, NULL, 9)",
       "INSERT INTO NCSIPackageID (Location, SlotNo, PackageID1, PackageID2) VALUES (1, 1, 3, 4)",
       "INSERT INTO NCSIPackageID (Location, SlotNo, PackageID1, PackageID2) VALUES (1, 1, 5, 6)"});
  add(0, 1, "1", "'2'", "'key 0'", 0);
  add(1, 2, "3", "'2'", "'on board'", 0);
  add(2, 12, "1", "NULL", "'by location 0'", 1);
  add(65536 + 1, 11, "1", "''", "'by location 1'", 1);
  add(65536 + 2, 13, "0", "'0xA8'", "'slot'", 1);
  add(65536 + 3, 14, "1", "'168'", "'layout'", 1);
  add(65536 + 4, 15, "3", "'184'", "'promoted'", 1);
  add(65536 + 4, 16, "1", "'7'", "'not seen'", 1);
  add(65536 + 5, 17, "3", "'183'", "'merged'", 1);
  add(65536 + 6, 18, "1", "'2'", "'2.5 Hot Swap SSD bay'", 1);
  add(65536 + 7, 19, "1", "'2'", "NULL", 1);
  add(65536 + 8, 20, "1", "'2'", "'no health'", 1, "NULL");
  for (int i = 0; i < 4; ++i) add(65536 + 9, 41 + i, "0", "'32774'", "'Broadcom 57416 OCP'", 1);
  for (int i = 0; i < 3; ++i) add(65536 + 10, 41 + i, "0", "'165'", "'Broadcom 57416 OCP'", 1);
  EXPECT_EQ(listed(), (Texts{"1 3 32772 Onboard, on board", "2 1 32772 Onboard, by location 0",
                             "65537 1 18 PCI-E, by location 1", "65538 0 168 PCI-E x4, slot",
                             "65539 1 168 Unknown, layout", "65540 1 184 Unknown, promoted",
                             "65541 3 183 Unknown, merged", "65545 0 32774 Unknown, " + combined,
                             "65546 0 165 PCI-E, Broadcom 57416 OCP"}));
  EXPECT_EQ(ncsi, (Texts{"1 8 9", "0 255 255", "1 3 4", "0 255 255", "0 255 255", "0 255 255", "0 255 255",
                         "0 255 255", "0 255 255"}));

  Texts queries = shim().texts("query");
  const auto asked = [&queries](const std::string& start) {
    return std::count_if(queries.begin(), queries.end(),
                         [&](const auto& text) { return text.starts_with(start); });
  };
  EXPECT_EQ(queries[0],
            "query|PCIAdapter|PCIKey,NodeNo,SlotNo,SegNo,BusNo,DeviceNo,HealthStatus,ConnectorType,CardName,"
            "AIMSupported,Location,PCIFuncKey,count(*)|1 GROUP BY PCIKey||(null)|0");
  EXPECT_EQ(asked("query|NCSIPackageID|SlotNo,Location,PackageID1,PackageID2|(null)|"), 1);
  EXPECT_EQ(
      asked("query|PCIAdapter|PCIKey,NodeNo,SlotNo,SegNo,BusNo,DeviceNo,HealthStatus,ConnectorType,CardName,"
            "AIMSupported,Location,PCIFuncKey|PCIKey=65540 AND AIMSupported=1|"),
      1);
  EXPECT_EQ(queries.size(), 2U + 3 + 2 + 1);  // promotions, locations, one name to correct
  EXPECT_EQ(shim().calls("open").size(), 1U);
}

TEST_P(Adapters, AreListedWithoutTheInventoryHandle) {
  add(65536 + 1, 11, "0", "'165'", "'x'", 1);
  database.run("INSERT INTO NCSIPackageID (Location, SlotNo, PackageID1, PackageID2) VALUES (1, 1, 3, 4)");
  shim().fail({.op = "get_dmdb_handle", .nth = 0});
  EXPECT_EQ(listed(), Texts{"65537 0 165 PCI-E, x"});
  EXPECT_EQ(ncsi, Texts{"0 255 255"});
}

TEST_P(Adapters, CountsNcsiIdsInOneByte) {
  std::string rows =
      "INSERT INTO NCSIPackageID (Location, SlotNo, PackageID1, PackageID2) VALUES (0, 0, 1, 1)";
  for (int i = 1; i < 257; ++i) rows += ", (0, " + std::to_string(i) + ", 1, 1)";
  database.run(rows);
  _ZELDB_NCSI_Id_List list = {};
  EXPECT_EQ(zeldb_get_ncsi_id_list(&list), 0);
  EXPECT_EQ(list.Count, 1);
  EXPECT_EQ(list.Items[0].SlotNo, 256);
  std::free(list.Items);
}

TEST_P(Adapters, KeepTheirHealthAndNcsiIds) {
  add(65536 + 3, 11, "0", "'165'", "'x'", 1, "2");
  unsigned char value = 0;
  uint32_t key = 0;
  EXPECT_EQ(zeldb_get_adapter_health_status(1, 3, &value), 0);
  EXPECT_EQ(value, 2);
  EXPECT_EQ(zeldb_get_adapter_health_status(0, 3, &value), 11);
  EXPECT_EQ(zeldb_set_adapter_health_status(1, 3, 4), 0);
  EXPECT_EQ(zeldb_set_adapter_health_status(1, 4, 4), 0);
  EXPECT_EQ(zeldb_get_adapter_pcikey_by_slotNo(1, 3, &key), 0);
  EXPECT_EQ(key, 65539U);
  EXPECT_EQ(zeldb_get_adapter_pcikey_by_slotNo(1, 4, &key), 6);
  EXPECT_EQ(database.text("SELECT SlotNo, HealthStatus FROM PCIAdapter"), "3,4");

  unsigned char id1 = 7;
  unsigned char id2 = 7;
  EXPECT_EQ(zeldb_get_ncsi_id_by_slotNo(257, 3, &id1, &id2), 6);
  EXPECT_EQ(zeldb_set_ncsi_id_by_slotNo(257, 3, 9, 1, 2), 0);
  EXPECT_EQ(zeldb_set_ncsi_id_by_slotNo(1, 3, 8, 3, 4), 0);
  EXPECT_EQ(zeldb_get_ncsi_id_by_slotNo(1, 3, &id1, &id2), 0);
  EXPECT_EQ(id1 * 16 + id2, 0x34);
  EXPECT_EQ(database.text("SELECT Location, SlotNo, Type, PackageID1, PackageID2 FROM NCSIPackageID"),
            "1,3,9,3,4");
  EXPECT_EQ(shim().calls("insert")[0].puts,
            (Texts{"uchar PackageID1=1", "uchar PackageID2=2", "uchar Location=1", "short_uint SlotNo=3",
                   "uchar Type=9"}));
  EXPECT_EQ(shim().calls("update").back().where, "SlotNo=3 AND Location=1");
  EXPECT_EQ(shim().calls("query").back().where, "Location=1 AND SlotNo=3");
}

TEST_P(Adapters, LogWhatCouldNotBeWritten) {
  shim().fail({.op = "update", .nth = 0, .status = 5});
  shim().fail({.op = "insert", .nth = 0, .status = 5});
  database.run("INSERT INTO NCSIPackageID (Location, SlotNo) VALUES (1, 3)");
  EXPECT_EQ(zeldb_set_adapter_health_status(1, 3, 4), 5);
  EXPECT_EQ(zeldb_set_ncsi_id_by_slotNo(1, 3, 0, 1, 2), 5);
  EXPECT_EQ(zeldb_set_ncsi_id_by_slotNo(1, 4, 0, 1, 2), 5);
  shim().fail({.op = "get_content_values", .nth = 0});
  EXPECT_EQ(zeldb_set_adapter_health_status(1, 3, 4), 4);
  EXPECT_EQ(zeldb_set_ncsi_id_by_slotNo(1, 4, 0, 1, 2), 4);
  EXPECT_EQ(
      libc().logs,
      (Texts{
          "error Update pci location [1], slot [3]  health status [4] fail, sql where segment:[SlotNo=3 AND "
          "Location=1], return [5]",
          "error Update pci location [1], slot [3]  id1 [1], id2 [2] fail, sql where segment:[SlotNo=3 AND "
          "Location=1], return [5]",
          "error insert pci location [1], slot [4]  id1 [1], id2 [2] fail, return [5]",
          "error zeldb_set_network_physical_port_state, ZEL_DB_STATUS_NO_MEMORY",
          "error zeldb_set_ncsi_id_by_slotNo, ZEL_DB_STATUS_NO_MEMORY"}));
}

}  // namespace
}  // namespace zeldb_test
