// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "tests/support/database.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/pci.h"

namespace zeldb_test {
namespace {

using Texts = std::vector<std::string>;
class Information : public DatabaseTest {};
ZELDB_ON_EVERY_ENGINE(Information);

constexpr const char* kGenericColumns =
    "_id,BridgeId,SegNo,BusNo,DeviceNo,FunctionNo,VendorId,DeviceId,RevId,ClsCode,SubVendorId,SubDeviceId,"
    "SlotNo,"
    "Location,SlotDesignation,SlotType,SlotDataBusWidth,Hotplug,PCIType,BladeSlotPort,NodeIndex,FunType,"
    "LanesInUse,"
    "MaxLanes,MaxPCIeType,PCIeType";

TEST_P(Information, GenericOfAFunction) {
  const std::string designation(70, 'd');
  database.run(
      "INSERT INTO PCIs (_id, FunKey, BridgeId, SegNo, BusNo, VendorId, DeviceId, RevId, ClsCode, SlotNo, "
      "Location, "
      "SlotDesignation, FunType, LanesInUse, MaxLanes, MaxPCIeType, PCIeType, DevKey) VALUES (77, "
      "4294967295, "
      "4294967294, -1, 300, 32902, 70000, 5, 67586, 65537, 1, '" +
      designation + "', 9, 0, 8, 5, 6, 65537)");
  database.run("INSERT INTO PCIs (_id, FunKey) VALUES (78, 8)");
  _ZELDB_PCI_Generic_Info info;
  std::memset(&info, 0xAA, sizeof(info));
  EXPECT_EQ(zeldb_get_pci_generic_info(9, &info), 10);
  EXPECT_EQ(info._id, 0xAAAAAAAA);
  ASSERT_EQ(zeldb_get_pci_generic_info(4294967295U, &info), 0);
  EXPECT_EQ(info._id, 77U);
  EXPECT_EQ(info.BridgeId, 4294967294U);
  EXPECT_EQ(info.SegNo, 255);
  EXPECT_EQ(info.BusNo, 44);
  EXPECT_EQ(info.DeviceNo, 0);
  EXPECT_EQ(info.DeviceId, 4464);
  EXPECT_EQ(info.RevId, 5);
  EXPECT_EQ(info.ClsCode, 67586U);
  EXPECT_EQ(info.SlotNo, 1);
  EXPECT_EQ(info.FunType, 9U);
  EXPECT_EQ(info.DevKey, 65537U);
  EXPECT_EQ(info.SlotDesignation, designation.substr(0, 64));
  EXPECT_EQ(info.LanesInUse, 0);
  ASSERT_EQ(zeldb_get_pci_generic_info(8, &info), 0);
  EXPECT_EQ(info.LanesInUse, 4);
  EXPECT_EQ(info.MaxLanes, 16);
  EXPECT_EQ(info.MaxPCIeType, 4);
  EXPECT_EQ(info.PCIeType, 3);
  EXPECT_STREQ(info.SlotDesignation, "");
  EXPECT_EQ(shim().texts("query")[0],
            std::string("query|PCIs|") + kGenericColumns + ",DevKey,FunType|FunKey=?|3:9|(null)|0");

  _ZELDB_PCI_Generic_Info_List list = {.Count = 5, .Items = &info};
  EXPECT_EQ(zeldb_get_pci_generic_info_list(&list, const_cast<char*>("FunKey=9")), 0);
  EXPECT_EQ(list.Count, 0U);
  EXPECT_EQ(list.Items, &info);
  ASSERT_EQ(zeldb_get_pci_generic_info_list(&list, nullptr), 0);
  ASSERT_EQ(list.Count, 2U);
  EXPECT_EQ(list.Items[0].SlotDesignation, designation.substr(0, 63));
  EXPECT_EQ(list.Items[0].DevKey, 0U);
  EXPECT_EQ(list.Items[1].MaxLanes, 16);
  std::free(list.Items);
  EXPECT_EQ(shim().texts("query").back(), std::string("query|PCIs|") + kGenericColumns + "|(null)||(null)|0");
}

TEST_P(Information, DrivesInSlots) {
  const struct {
    int cls, location, vendor;
  } rows[] = {
      {67586, 1, 0x8086}, {67586, 1, 0x1C5F}, {67586, 1, 0x1000}, {67586, 0, 0x8086}, {67585, 1, 0x144D}};
  for (const auto& row : rows) {
    database.run("INSERT INTO PCIs (ClsCode, Location, VendorId) VALUES (" + std::to_string(row.cls) + ", " +
                 std::to_string(row.location) + ", " + std::to_string(row.vendor) + ")");
  }
  _ZELDB_PCI_Generic_Info_List list = {};
  ASSERT_EQ(zeldb_get_aic_drive_pci_info_list(&list), 0);
  EXPECT_EQ(list.Count, 2U);
  std::free(list.Items);
  EXPECT_EQ(shim().calls("query")[0].where,
            "(ClsCode=67586) AND (Location=1) AND (VendorId in (32902,4932,5197,7695,4473,7263))");
}

TEST_P(Information, Packaging) {
  const struct {
    const char* layout;
    const char* package;
    const char* location;
    unsigned code;
    const char* text;
    unsigned type;
    const char* type_text;
  } cases[] = {
      {"'0x8003'", "'1'", "1", 32771, "Corvexa CIOv Connector", 1, "Other"},
      {"'26'", "'18'", "1", 26, "Unknown", 18, "Unknown"},
      {"'010'", "'32768'", "1", 8, "SCSI High Density", 32768, "Onboard"},
      {"''", "NULL", "0", 32772, "Onboard", 0, "Unknown"},
      {"NULL", "'0x11'", "1", 18, "PCI-E", 17, "Blade Expansion"},
      {"'x'", "''", "NULL", 32772, "Onboard", 0, "Unknown"},
      {"'0'", "'32769'", "2", 0, "Unknown", 32769, "Unknown"},
      {"'32774'", "'9'", "1", 32774, "OCP", 9, "Module/Card"},
      {"'-1'", "'3'", "1", 65535, "Unknown", 3, "Chassis/Frame"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.layout);
    database.run_all({"DELETE FROM PCIMisc", "DELETE FROM PCIs",
                      std::string("INSERT INTO PCIs (FunKey, Location) VALUES (5, ") + c.location + ")",
                      std::string("INSERT INTO PCIMisc (PCIFuncKey, ConnectorLayout, PackageType, FoDUid, "
                                  "AIMSpecVersion, MaxDataWidth) VALUES (5, ") +
                          c.layout + ", " + c.package + ", NULL, '12345678901', 65537)"});
    _ZELDB_PCI_Misc_Info info;
    std::memset(&info, 'x', sizeof(info));
    ASSERT_EQ(zeldb_get_pci_misc_info(5, &info), 0);
    EXPECT_EQ(info.ConnectorLayout, c.code);
    EXPECT_STREQ(info.ConnectorLayoutText, c.text);
    EXPECT_EQ(info.PackageType, c.type);
    EXPECT_STREQ(info.PackageTypeText, c.type_text);
    EXPECT_STREQ(info.FoDUid, "");
    EXPECT_EQ(info.FoDUid[1], 'x');
    EXPECT_STREQ(info.AIMSpecVersion, "12345678");
    EXPECT_EQ(info.MaxDataWidth, 1);
  }
  _ZELDB_PCI_Misc_Info info;
  EXPECT_EQ(zeldb_get_pci_misc_info(4294967295U, &info), 10);
  EXPECT_EQ(shim().calls("query").back().where, "PCIFuncKey=-1");
}

TEST_P(Information, Gpus) {
  database.run_all({
      "INSERT INTO PCIs (FunKey, FunType, Location, VendorId) VALUES (1, 4, 1, 4318)",
      "INSERT INTO PCIs (FunKey, FunType, Location) VALUES (2, 16, 1)",
      "INSERT INTO PCIs (FunKey, FunType, Location) VALUES (3, 4, 0)",
      "INSERT INTO PCIGPU (PCIFuncKey, VideoMemoryType, VideoMemorySize, TotalGPUChipNumber) VALUES (1, "
      "'0x3', "
      "'80 GB', 257)",
      "INSERT INTO PCIGPU (PCIFuncKey, VideoMemoryType) VALUES (2, '259')",
      "INSERT INTO PCIGPUChip (PCIFuncKey, GPUChipName, GPUChipFormFactor, GPUChipNumberOfEnabledCores, "
      "ExternalBusClockSpeed) VALUES (1, 'GH100', '6', 132, 4294967295)",
  });
  _ZELDB_PCI_GPU_List list = {};
  ASSERT_EQ(zeldb_get_pci_gpu_list(&list), 0);
  ASSERT_EQ(list.Count, 2U);
  EXPECT_EQ(list.Items[0].VendorId, 4318);
  EXPECT_EQ(list.Items[1].FunKey, 2U);
  std::free(list.Items);
  _ZELDB_GPU_Device_Info device;
  ASSERT_EQ(zeldb_get_gpu_device_info(1, &device), 0);
  EXPECT_STREQ(device.VideoMemoryTypeText, "VRAM");
  EXPECT_STREQ(device.VideoMemorySize, "80 GB");
  EXPECT_EQ(device.TotalGPUChipNumber, 1);
  ASSERT_EQ(zeldb_get_gpu_device_info(2, &device), 0);
  EXPECT_EQ(device.VideoMemoryType, 3);  // 259, cut to a byte
  EXPECT_STREQ(device.VideoMemoryTypeText, "VRAM");
  EXPECT_EQ(zeldb_get_gpu_device_info(3, &device), 10);
  _ZELDB_GPU_Chip_List chips = {};
  ASSERT_EQ(zeldb_get_gpu_chip_list(1, &chips), 0);
  ASSERT_EQ(chips.Count, 1U);
  EXPECT_STREQ(chips.Items[0].GPUChipFormFactorText, "Proprietaty");
  EXPECT_EQ(chips.Items[0].GPUChipNumberOfEnabledCores, 132);
  EXPECT_EQ(chips.Items[0].ExternalBusClockSpeed, 4294967295U);
  std::free(chips.Items);
  EXPECT_EQ(shim().calls("query")[0].where, "((FunType=4 OR FunType=16) AND (Location=1))");

  std::string more = "INSERT INTO PCIs (FunKey, FunType, Location) VALUES (100, 4, 1)";
  for (int i = 101; i < 398; ++i) more += ", (" + std::to_string(i) + ", 4, 1)";
  database.run(more);
  ASSERT_EQ(zeldb_get_pci_gpu_list(&list), 0);
  EXPECT_EQ(list.Count, 44U);  // 300, counted in one byte
  EXPECT_EQ(list.Items[43].FunKey, 397U);
  std::free(list.Items);
}

TEST(HcCards, AreFoundByTheirIds) {
  EXPECT_EQ(zeldb_get_hc_card_count(), 61);
  const struct {
    unsigned vendor, device, sub_vendor, sub_device;
    const char* name;
  } cases[] = {
      {0x10DE, 0x06D1, 0x10DE, 0x0771, "Tesla C2050"},
      {0xA10DE, 0x106D1, 0x10DE, 0x0772, "Tesla C2070"},
      {0x10DE, 0x06D1, 0x10DE, 0x0770, nullptr},
  };
  for (const auto& c : cases) {
    const _ZELDB_HC_Card* card = zeldb_find_hc_card(c.vendor, c.device, c.sub_vendor, c.sub_device);
    if (c.name == nullptr) {
      EXPECT_EQ(card, nullptr);
    } else {
      ASSERT_NE(card, nullptr);
      EXPECT_STREQ(card->CardName, c.name);
      EXPECT_STREQ(card->SecondaryText, "N/A");
    }
  }
  EXPECT_EQ(zeldb_find_hc_card(0x10DE, 0x06D1, 0x10DE, 0x0771), &hc_card_table[0]);
}

}  // namespace
}  // namespace zeldb_test
