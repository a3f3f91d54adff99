// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "tests/support/database.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/pci.h"

namespace zeldb_test {
namespace {

using Texts = std::vector<std::string>;

// "status: keys" or "status: null" without an array.
std::string told(int status, const _ZELDB_PCI_FunKey_List& list) {
  std::string text = std::to_string(status) + ":";
  if (list.Items == nullptr) text += " null";
  for (uint32_t i = 0; i < list.Count; ++i) text += " " + std::to_string(list.Items[i]);
  std::free(list.Items);
  return text;
}

class FunctionKeys : public DatabaseTest {
 protected:
  void SetUp() override {
    database.run_all({
        "INSERT INTO PCIs (FunKey, DevKey, Location, SlotNo, VendorId, ClsCode) VALUES (30, 65539, 1, 3, "
        "32902, 66560)",
        "INSERT INTO PCIs (FunKey, DevKey, Location, SlotNo) VALUES (NULL, NULL, 1, 3)",
        "INSERT INTO PCIs (FunKey, DevKey, Location, SlotNo) VALUES (20, 65539, 1, 3)",
        "INSERT INTO PCIs (FunKey, DevKey, Location, SlotNo, FunType, HardwareId, HardwareTypeId, VendorId, "
        "DeviceId, "
        "SubVendorId) VALUES (4294967295, 4, 0, 4, 7, 70000, 259, 5555, 65540, 1)",
        "INSERT INTO PCIAdapter (PCIFuncKey, PCIKey, AIMSupported, CardName) VALUES (30, 65539, 1, 'RAID "
        "card')",
        "INSERT INTO PCIAdapter (PCIFuncKey, PCIKey, AIMSupported) VALUES (20, 65539, 0)",
        "INSERT INTO PCIAdapter (PCIFuncKey, PCIKey, AIMSupported, OOBSrc) VALUES (20, 65539, 0, 9)",
        "INSERT INTO PCIAdapter (PCIFuncKey, PCIKey, AIMSupported, OOBSrc) VALUES (4294967295, 4, 0, NULL)",
        "INSERT INTO PCIAdapter (PCIFuncKey, PCIKey, AIMSupported) VALUES (50, 5, NULL)",
        "INSERT INTO PCIAdapter (PCIFuncKey, PCIKey, AIMSupported) VALUES (60, 6, 0)",
    });
    shim().require_calls();
  }
};
ZELDB_ON_EVERY_ENGINE(FunctionKeys);

using Fill = std::function<int(_ZELDB_PCI_FunKey_List*)>;

int by_filter(const char* filter, const char* order, _ZELDB_PCI_FunKey_List* list) {
  return zeldb_get_pci_funkey_list_by_filter(const_cast<char*>(filter), const_cast<char*>(order), list);
}
Fill keys(const char* filter) {
  return [filter](auto* list) { return zeldb_get_pci_keys(list, const_cast<char*>(filter)); };
}
Fill of_adapter(int key) {
  return [key](auto* list) { return zeldb_get_pci_funkey_list(key, list); };
}

TEST_P(FunctionKeys, Lists) {
  const std::string at_limit = "SlotNo=3 AND 1" + std::string(112 - 14 - 2, ' ') + "=1";
  const std::string cut = at_limit + "  ";
  const struct {
    const char* name;
    Fill fill;
    std::string told;
    std::vector<Rule> rules{};
  } cases[] = {
      {"every key, a NULL one as 0", keys(nullptr), "0: 0 4 65539"},
      {"keys of a filter", keys("Location=0"), "0: 4"},
      {"no key", keys("Location=9"), "0: null"},
      {"an empty filter", keys(""), "2: null"},
      {"112 characters fit", keys(at_limit.c_str()), "0: 0 65539"},
      {"more do not", keys(cut.c_str()), "2: null"},
      {"keys: failed step", keys(nullptr), "0: 0", {{.op = "step", .status = 5, .after = 1}}},
      {"keys: fewer counted", keys(nullptr), "0: 0 4", {{.op = "row_count", .fewer = 1}}},
      {"order as given", [](auto* list) { return by_filter("Location=1", "FunKey DESC", list); }, "0: 30 20"},
      {"a null order", [](auto* list) { return by_filter("FunKey=20", nullptr, list); }, "0: 20"},
      {"nothing matches", [](auto* list) { return by_filter("FunKey=21", nullptr, list); }, "0: null"},
      {"refused", [](auto* list) { return by_filter("FunKey=", nullptr, list); }, "2: null"},
      {"fewer counted",
       [](auto* list) { return by_filter("FunKey>0", "FunKey", list); },
       "0: 20 30",
       {{.op = "row_count", .fewer = 1}}},
      {"failed step",
       [](auto* list) { return by_filter("FunKey>0", nullptr, list); },
       "5: null",
       {{.op = "step", .status = 5, .after = 2}}},
      {"failed step after the last row",
       [](auto* list) { return by_filter("FunKey>0", nullptr, list); },
       "5: null",
       {{.op = "step", .status = 5, .after = 3}}},
      {"no result",
       [](auto* list) { return by_filter("FunKey>0", nullptr, list); },
       "0: null",
       {{.op = "query", .status = 0}}},
      {"slot", [](auto* list) { return zeldb_get_pci_funkey_list_by_slot(1, 3, list); }, "0: 20 30"},
      {"supported adapter: its own rows, pairs distinct", of_adapter(65539), "0: 30 20"},
      {"key 0: adapters with a RAID controller", of_adapter(0), "0: 30 20"},
      {"unsupported, and the key prints negative", of_adapter(4), "0: null"},
      {"unsupported and unknown to PCIs", of_adapter(6), "0: null"},
      {"unreadable support", of_adapter(5), "7: null"},
      {"unknown adapter", of_adapter(7), "10: null"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    shim().reset();
    for (const Rule& rule : c.rules) shim().fail(rule);
    _ZELDB_PCI_FunKey_List list = {};
    const int status = c.fill(&list);
    EXPECT_EQ(told(status, list), c.told);
  }
}

TEST_P(FunctionKeys, SayWhatTheyAskFor) {
  _ZELDB_PCI_FunKey_List list = {};
  uint32_t stays = 0;
  list = {.Count = 9, .Items = &stays};
  zeldb_get_pci_keys(&list, const_cast<char*>("Location=9"));
  EXPECT_EQ(list.Items, &stays);
  EXPECT_EQ(list.Count, 0U);
  zeldb_get_pci_funkey_list_by_slot(-1, 3, &list);
  zeldb_get_pci_funkey_list(0, &list);
  std::free(list.Items);
  zeldb_get_pci_funkey_list(4, &list);
  unsigned type = 0;
  zeldb_get_pci_function_type(4294967295U, &type);
  char name[4];
  zeldb_get_pci_cardname_by_funkey(30, name, sizeof(name));
  EXPECT_STREQ(name, "RAI");
  EXPECT_EQ(shim().calls("raw_query")[0].capacity, 160);
  EXPECT_EQ(shim().texts("raw_query"),
            (Texts{"raw_query|select DevKey from PCIs where Location=9 group by DevKey;|0"}));
  EXPECT_EQ(
      shim().texts("query"),
      (Texts{"query|PCIs|FunKey|Location=-1 AND SlotNo=3||FunKey ASC|0",
             "query|PCIAdapter|DISTINCT PCIFuncKey,AIMSupported|PCIKey in (select DevKey from PCIs where "
             "VendorId=32902 and ClsCode=66560 and SlotNo!=0)||(null)|0",
             "query|PCIAdapter|DISTINCT PCIFuncKey,AIMSupported|PCIKey=4||(null)|0",
             "query|PCIs|FunKey|DevKey=4 and FunKey=-1||(null)|0",
             "query|PCIs|FunType|FunKey=?|3:4294967295|(null)|0",
             "query|PCIAdapter|CardName|PCIFuncKey=?|3:30|(null)|0"}));
}

TEST_P(FunctionKeys, ReadOneFunction) {
  const struct {
    unsigned key;
    std::string oob, aim, type, hardware, ids, name;
  } cases[] = {
      {30, "0 1 0", "0 1", "7 24", "0 0 0", "0 32902 7 7 7", "0 RAID card"},
      {20, "0 0 0", "0 0", "7 24", "0 0 0", "0 7 7 7 7", "7 "},
      {4294967295U, "7 0 0", "0 0", "0 7", "10 7 7", "0 7 7 7 7", "7 "},
      {50, "0 0 0", "7 0", "10 24", "10 7 7", "0 7 7 7 7", "7 "},
      {1, "10 0 0", "10 0", "10 24", "10 7 7", "0 7 7 7 7", "10 old"},
  };
  const auto joined = [](std::initializer_list<long long> numbers) {
    std::string text;
    for (const long long number : numbers) text += (text.empty() ? "" : " ") + std::to_string(number);
    return text;
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.key);
    unsigned aim = 5;
    unsigned oob = 5;
    unsigned type = 5;
    int status = zeldb_get_pci_function_oob_type(c.key, &aim, &oob);
    EXPECT_EQ(joined({status, aim, oob}), c.oob);
    status = zeldb_get_pci_function_oob_type(c.key, &aim, nullptr);
    EXPECT_EQ(joined({status, aim}), c.aim);
    status = zeldb_get_pci_function_type(c.key, &type);
    EXPECT_EQ(joined({status, type}), c.type);
    unsigned hardware = 7;
    unsigned char hardware_type = 7;
    status = zeldb_get_pci_hardwareidtype_by_funkey(c.key, &hardware, &hardware_type);
    EXPECT_EQ(joined({status, hardware, hardware_type}), c.hardware);
    uint16_t id[] = {7, 7, 7, 7};
    status = zeldb_get_pci_id_by_funkey(static_cast<int>(c.key), &id[0], &id[1], &id[2], &id[3]);
    EXPECT_EQ(joined({status, id[0], id[1], id[2], id[3]}), c.ids);
    char name[16] = "old";
    status = zeldb_get_pci_cardname_by_funkey(c.key, name, sizeof(name));
    EXPECT_EQ(std::to_string(status) + " " + name, c.name);
  }
  unsigned hardware = 0;
  unsigned char hardware_type = 0;
  database.run("UPDATE PCIs SET FunKey=40 WHERE FunKey=4294967295");
  EXPECT_EQ(zeldb_get_pci_hardwareidtype_by_funkey(40, &hardware, &hardware_type), 0);
  EXPECT_EQ(hardware, 70000U);
  EXPECT_EQ(hardware_type, 3);  // 259, cut to a byte
  uint16_t id[4] = {};
  EXPECT_EQ(zeldb_get_pci_id_by_funkey(40, &id[0], &id[1], &id[2], &id[3]), 0);
  EXPECT_EQ(joined({id[0], id[1], id[2], id[3]}), "5555 4 1 0");
}

}  // namespace
}  // namespace zeldb_test
