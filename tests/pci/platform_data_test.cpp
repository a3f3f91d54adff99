// SPDX-License-Identifier: Apache-2.0
//
// What is completed from, or stored in, the platform's own interfaces.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/pci.h"

namespace zeldb_test {
namespace {

using Texts = std::vector<std::string>;

class PlatformData : public DatabaseTest {
 protected:
  void SetUp() override {
    setenv("ZEL_PLATFORM_DIR", database.folder().c_str(), 1);
    setenv("ZEL_PLATFORM_TRACE", file("trace").c_str(), 1);
    is_amd_platform = 0xFF;
  }

  std::string file(const std::string& name) const { return database.folder() + "/" + name; }
  void write(const std::string& name, const std::string& content) const {
    std::ofstream(file(name)) << content;
  }
  // The lines of the calls whose functions begin so.
  Texts traced(const std::string& start) const {
    Texts lines;
    std::ifstream trace(file("trace"));
    for (std::string line; std::getline(trace, line);) {
      if (line.starts_with(start)) lines.push_back(line);
    }
    return lines;
  }
  void publish(const std::string& path, const std::string& text) const {
    std::ostringstream bytes;
    for (const char c : "s" + text) bytes << std::hex << static_cast<int>(c);
    database.run(
        "INSERT INTO propertiesDCTbl (propName, propValue) VALUES ('" + path + "', x'" + bytes.str() + "')",
        "propertiesdb");
  }
};
ZELDB_ON_EVERY_ENGINE(PlatformData);

constexpr const char* kSilent = R"({"platform_flags": 0})";

TEST_P(PlatformData, SegmentBitsComeFromTheProcessorOrTheInventory) {
  const struct {
    const char* platform;
    const char* segments;
    int bits;
    unsigned sleeps;
  } cases[] = {
      {R"({"peci": [{"ret": 0, "cc": 128, "data": [12]}, {"ret": 5, "cc": 64, "data": [12]},
                    {"ret": 0, "cc": 64, "data": [4]}]})",
       "(5)", 1, 2},
      {R"({"peci": [{"ret": 0, "cc": 64, "data": [12, 0, 0, 0]}]})", "(1)", 3, 0},
      {R"({"peci": [{"ret": 0, "cc": 64, "data": [52, 0, 0, 0]}]})", "(1)", 1, 0},
      {R"({"peci": [{"ret": 0, "cc": 64, "data": [0, 255, 0, 0]}]})", "(5)", 0, 0},
      {kSilent, "(0), (1), (5)", 3, 3},
      {kSilent, "(1), (1)", 1, 3},
      {kSilent, "(2), (NULL)", 2, 3},
      {kSilent, "(-4), (0)", 0, 3},
      {R"({"platform_flags": 32768})", "(5)", -1, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.segments);
    write("platform.json", c.platform);
    std::remove(file("aim_config.json").c_str());
    database.run_all(
        {"DELETE FROM PCIAdapter", std::string("INSERT INTO PCIAdapter (SegNo) VALUES ") + c.segments});
    is_amd_platform = 0xFF;
    libc().sleeps.clear();
    EXPECT_EQ(zeldb_set_pci_seg_bits(), c.bits < 0 ? 0 : c.bits);
    EXPECT_EQ(libc().sleeps, std::vector<unsigned>(c.sleeps, 1));
    EXPECT_EQ(zeldb_get_pci_seg_bits(1), c.bits < 0 ? 0 : c.bits);
    EXPECT_EQ(std::ifstream(file("aim_config.json")).good(), c.bits >= 0);
  }
  EXPECT_EQ(shim().calls("query")[0].where, "SegNo != 0");
  EXPECT_EQ(traced("peci").front(), "peci_RdEndPointConfigPciLocal|48,0,0,0,0,1356,4|0");
}

TEST_P(PlatformData, SegmentBitsAreReadWithoutAPlatform) {
  const std::string failed =
      "14 _get_segbit_from_pcie: Failed to get segbit from PECI, ret=-1, cc=0x0, loop=";
  EXPECT_EQ(zeldb_get_pci_seg_bits(0), 0);
  EXPECT_EQ(zeldb_get_pci_seg_bits(1), 0xFF);
  EXPECT_EQ(zeldb_set_pci_seg_bits(), 0);
  const std::string missing =
      "14 zeldb_get_pci_seg_bits: The multi segment bits is not available, default seg bits is 0.\n";
  EXPECT_EQ(libc().syslogs,
            (Texts{missing, missing, failed + "2\n", failed + "1\n", failed + "0\n", failed + "2\n",
                   failed + "1\n", failed + "0\n", "14 zeldb_set_pci_seg_bits: The segment bits is 0.\n"}));
  libc().syslogs.clear();
  is_amd_platform = 1;
  EXPECT_EQ(zeldb_is_amd(), 1);
  EXPECT_EQ(zeldb_set_pci_seg_bits(), 0);
  EXPECT_EQ(libc().syslogs,
            Texts{"14 zeldb_set_pci_seg_bits: Genoa platform, not support multi segment currently.\n"});
  EXPECT_EQ(traced("ptables_from_ram").size(), 1U);
}

TEST_P(PlatformData, MissingVpdIsCompletedAndWrittenBack) {
  database.run_all({
      "INSERT INTO PCIs (FunKey, HardwareId, HardwareTypeId) VALUES (1, 70, 2)",
      "INSERT INTO PCIs (FunKey, HardwareId) VALUES (2, 71)",
      "INSERT INTO PCIs (FunKey, HardwareId) VALUES (3, 72)",
      "INSERT INTO VPDs (HardwareId, HardwareTypeId, SlotNo, UUID, ProductName, SerialNo, PartNo, FRUNo, "
      "Model) VALUES "
      "(70, 3, 7, 'u', 'N/A', 'N/A', 'p', 'f', '')",
      "INSERT INTO VPDs (HardwareId, HardwareTypeId, SlotNo, ProductName) VALUES (80, 3, 7, 'other row of "
      "the slot')",
      "INSERT INTO VPDs (HardwareId, HardwareTypeId, SlotNo, UUID, ProductName, Manufacture, SerialNo, "
      "PartNo, Model, "
      "FRUNo) VALUES (71, 3, 8, 'u', 'n', 'm', 's', 'p', 'M', 'f')",
  });
  const std::string model(40, 'm');
  publish("/ac/ovrc/dm/planar/0/gpu_pci_slot/7/model", "H100");
  publish("/ac/ovrc/dm/planar/0/gpu_pci_slot/7/mfgr", model);
  shim().reset();
  _ZELDB_PCIVpdInfo info;
  ASSERT_EQ(zeldb_get_pci_vpd_info(1, &info), 0);
  EXPECT_EQ((Texts{info.UUID, info.ProductName, info.Manufacture, info.SerialNo, info.PartNo, info.Model,
                   info.FRUNo}),
            (Texts{"u", "H100", model.substr(0, 32), "N/A", "p", "H100", "f"}));
  const std::string slot = "propdb_get_string|/ac/ovrc/dm/planar/0/gpu_pci_slot/7/";
  Texts asked = traced("propdb_get_string");
  for (std::string& line : asked) line = line.substr(0, line.find('|', slot.size()));
  EXPECT_EQ(asked, (Texts{slot + "model", slot + "mfgr", slot + "sn", slot + "model"}));
  EXPECT_EQ(shim().calls("raw_query")[0].text, "update VPDs set Manufacture='" + model.substr(0, 32) +
                                                   "', Model='H100', ProductName='H100' where SlotNo=7");
  EXPECT_EQ(database.text("SELECT ProductName FROM VPDs WHERE SlotNo=7"), "H100;H100");
  EXPECT_EQ(shim().calls("query")[1].where, "HardwareId=70 AND HardwareTypeId=3");
  ASSERT_EQ(zeldb_get_pci_vpd_info(2, &info), 0);
  EXPECT_EQ(shim().calls("raw_query").size(), 1U);
  EXPECT_EQ(zeldb_get_pci_vpd_info(3, &info), 10);
  EXPECT_EQ(zeldb_get_pci_vpd_info(9, &info), 3);
  EXPECT_STREQ(info.ProductName, "n");
}

TEST_P(PlatformData, TheStoreIsNotAskedForEver) {
  char text[ZELDB_GPU_PROPERTY_SIZE] = "old";
  publish("b/1/i", "found");
  const auto asked = [this] { return traced("propdb_get_string").size(); };
  for (int i = 0; i < 32; ++i) EXPECT_EQ(get_gpu_pci_vpd_info("b", "i", 2, text), -2);
  EXPECT_EQ(get_gpu_pci_vpd_info("b", nullptr, 1, text), -1);
  EXPECT_EQ(get_gpu_pci_vpd_info("b", "i", 1, text), 0);
  EXPECT_STREQ(text, "found");
  for (int i = 0; i < 33; ++i) EXPECT_EQ(get_gpu_pci_vpd_info("b", "i", 2, text), -2);
  EXPECT_EQ(asked(), 66U);
  EXPECT_EQ(get_gpu_pci_vpd_info("b", "i", 1, text), -1);
  EXPECT_EQ(asked(), 66U);
  EXPECT_STREQ(text, "found");
}

}  // namespace
}  // namespace zeldb_test
