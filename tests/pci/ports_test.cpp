// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/pci.h"

namespace zeldb_test {
namespace {

using Texts = std::vector<std::string>;
class Ports : public DatabaseTest {};
ZELDB_ON_EVERY_ENGINE(Ports);

TEST_P(Ports, AreCounted) {
  database.run_all(
      {"INSERT INTO PCINetwork (PCIFuncKey, NumberofPhysicalPorts, MaxNumberofLogicalPorts) VALUES (1, "
       "255, 65536)",
       "INSERT INTO PCINetwork (PCIFuncKey, NumberofPhysicalPorts, MaxNumberofLogicalPorts) VALUES (1, 2, "
       "4)"});
  _ZELDB_Network_Info info = {};
  EXPECT_EQ(zeldb_get_network_info(1, &info), 0);
  EXPECT_EQ(info.NumberofPhysicalPorts, 1);
  EXPECT_EQ(info.MaxNumberofLogicalPorts, 4);
  EXPECT_EQ(zeldb_get_network_info(2, &info), 0);
  EXPECT_EQ(info.NumberofPhysicalPorts, 0);
  EXPECT_EQ(
      shim().texts("query")[0],
      "query|PCINetwork|sum(NumberofPhysicalPorts),sum(MaxNumberofLogicalPorts)|PCIFuncKey=1||(null)|0");
}

TEST_P(Ports, Logical) {
  database.run_all(
      {"INSERT INTO PCILogicalPort (PCIFuncKey, PCIKey, PermanentAddress) VALUES (1, 9, '12345678901')",
       "INSERT INTO PCILogicalPort (PCIFuncKey, PCIKey, PermanentAddress, PhyIdx, Idx, LinkTechnology, "
       "vNICMode, "
       "MaxSpeed, ProtocolType, Ethernet, FCoENetworkAddressess, ConnectionType, Role, MaxDataSize) VALUES "
       "(1, 9, "
       "'123456789012', 2, 65537, '0x2', '3', 100000000000, 199, 1, '12345678901234567', '7', '4', "
       "4294967295)",
       "INSERT INTO PCILogicalPort (PCIFuncKey, PCIKey) VALUES (1, 9)",
       "INSERT INTO PCILogicalPort (PCIFuncKey, PCIKey, PermanentAddress, PhyIdx, vNICMode, ProtocolType) "
       "VALUES (2, "
       "9, '00:11:22:33:44:55', 3, '', 7)",
       "INSERT INTO PCILogicalPort (PCIFuncKey, PermanentAddress, vNICMode) VALUES (3, '00:11:22:33:44:55', "
       "'260')"});
  _ZELDB_LogicalPort_List list = {};
  ASSERT_EQ(zeldb_get_all_network_logical_port_list(9, &list), 0);
  ASSERT_EQ(list.Count, 2U);
  const _ZELDB_LogicalPort& port = list.Items[0];
  EXPECT_STREQ(port.PermanentAddress, "123456789012");
  EXPECT_EQ(port.Idx, 1);
  EXPECT_EQ(port.MaxSpeed, 100000000000ULL);
  EXPECT_EQ(port.MaxDataSize, 4294967295U);
  EXPECT_EQ(port.Ethernet, 1);
  EXPECT_STREQ(port.FCoENetworkAddressess, "1234567890123456");
  EXPECT_EQ((Texts{port.LinkTechnologyText, port.vNICModeText, port.ProtocolTypeText, port.ConnectionTypeText,
                   port.RoleText}),
            (Texts{"Ethernet", "Unified Fabric Protocol Mode", "Infiniband", "iSCSI",
                   "Both Initiator and Target"}));
  const _ZELDB_LogicalPort& bare = list.Items[1];
  EXPECT_EQ((Texts{bare.LinkTechnologyText, bare.vNICModeText, bare.ProtocolTypeText, bare.ConnectionTypeText,
                   bare.RoleText}),
            (Texts{"Unknown", "Disabled", "Other", "Unknown", "Unknown"}));
  std::free(list.Items);
  ASSERT_EQ(zeldb_get_network_logical_port_list(3, &list), 0);
  EXPECT_EQ(list.Items[0].vNICMode, 4);  // 260, cut to a byte
  EXPECT_STREQ(list.Items[0].vNICModeText, "Unknown");
  std::free(list.Items);
  ASSERT_EQ(zeldb_get_network_logical_port_list2(2, 3, &list), 0);
  std::free(list.Items);
  EXPECT_EQ(zeldb_get_network_logical_port_list2(1, 9, &list), 10);
  EXPECT_EQ(zeldb_get_network_logical_port_list2(4, 255, &list), 10);
  database.run("DELETE FROM PCILogicalPort WHERE PhyIdx=2");
  EXPECT_EQ(zeldb_get_network_logical_port_list(1, &list), 10);
  EXPECT_EQ(list.Items, nullptr);
  Texts where;
  for (const Call& call : shim().calls("query")) where.push_back(call.where);
  EXPECT_EQ(where, (Texts{"PCIKey=9", "PCIFuncKey=3", "PCIFuncKey=2 AND PhyIdx=3",
                          "PCIFuncKey=1 AND PhyIdx=9", "PCIFuncKey=4", "PCIFuncKey=1"}));
}

// Function 1 has two ports and one row of statistics, so that function 2's statistics move up by one.
TEST_P(Ports, Physical) {
  database.run_all({
      "INSERT INTO PCINetwork (PCIKey, PCIFuncKey, NumberofPhysicalPorts) VALUES (9, 2, 1)",
      "INSERT INTO PCINetwork (PCIKey, PCIFuncKey, NumberofPhysicalPorts) VALUES (9, 1, 2)",
      "INSERT INTO PCINetwork (PCIKey, PCIFuncKey, NumberofPhysicalPorts) VALUES (9, 1, 2)",
      "INSERT INTO PCINetwork (PCIKey, PCIFuncKey) VALUES (8, 3)",
      "INSERT INTO PCIPhysicalPort (PCIFuncKey, Idx, ConnectorLayout, PermanentAddress) VALUES (1, 1, "
      "'0x8005', 'a')",
      "INSERT INTO PCIPhysicalPort (PCIFuncKey, Idx, ConnectorLayout) VALUES (1, 2, '1')",
      "INSERT INTO PCIPhysicalPort (PCIFuncKey, Idx, ConnectorLayout) VALUES (2, 7, '18')",
      "INSERT INTO PCIPhysicalPort (PCIFuncKey, Idx, ConnectorLayout) VALUES (2, 8, '32772')",
      "INSERT INTO PCIPhysicalPortStat (PCIFuncKey, LinkStatus, LinkSpeed) VALUES (1, 11, 4294967295)",
      "INSERT INTO PCIPhysicalPortStat (PCIFuncKey, LinkStatus) VALUES (2, 21)",
      "INSERT INTO PCINetwork (PCIFuncKey, NumberofPhysicalPorts) VALUES (6, 1)",
      "INSERT INTO PCIPhysicalPortStat (PCIFuncKey, LinkStatus) VALUES (6, 61)",
      "INSERT INTO PCIPhysicalPortStat (PCIFuncKey, LinkStatus) VALUES (6, 62)",
  });
  const auto told = [](int status, _ZELDB_PhysicalPort_List& list) {
    std::string text = std::to_string(status);
    for (uint32_t i = 0; i < list.Count; ++i) {
      const _ZELDB_PhysicalPort& port = list.Items[i];
      text += "; " + std::to_string(port.Idx) + " " + port.ConnectorLayoutText + " " +
              std::to_string(port.LinkStatus);
    }
    std::free(list.Items);
    return text;
  };
  _ZELDB_PhysicalPort_List list = {};
  int status = zeldb_get_all_network_physical_port_list(9, &list);
  EXPECT_EQ(told(status, list), "0; 7 Unknown 21; 8 Onboard 11; 1 SFP+ 0; 2 Reserved 0");
  EXPECT_EQ(shim().calls("query").size(), 1U + 2 * 2);
  status = zeldb_get_network_physical_port_list(2, &list);  // announces one port
  EXPECT_EQ(told(status, list), "0; 7 Unknown 21");
  status = zeldb_get_network_physical_port_list(6, &list);  // more statistics than ports
  EXPECT_EQ(told(status, list), "0");
  EXPECT_EQ(zeldb_get_all_network_physical_port_list(8, &list), 11);
  EXPECT_EQ(zeldb_get_network_physical_port_list(5, &list), 11);
  EXPECT_EQ(list.Items, nullptr);
  for (const char* table : {"PCINetwork", "PCIPhysicalPort", "PCIPhysicalPortStat"}) {
    shim().reset();
    shim().fail({.op = "query", .table = table, .status = 2});
    EXPECT_EQ(zeldb_get_network_physical_port_list(1, &list), 2) << table;
    EXPECT_EQ(list.Items, nullptr);
  }
}

TEST_P(Ports, HaveALinkState) {
  database.run_all(
      {"INSERT INTO PCIPhysicalPortStat (PCIFuncKey, Idx, LinkStatus, LinkSpeed, TxUtil, RxUtil) VALUES "
       "(1, 1, 2, 3, 4, 5)",
       "INSERT INTO PCIPhysicalPortStat (PCIFuncKey, Idx, LinkStatus) VALUES (2, NULL, 1)",
       "INSERT INTO PCIPhysicalPortStat (PCIFuncKey, Idx, LinkStatus) VALUES (2, 1, 1)",
       "INSERT INTO PCIPhysicalPortStat (PCIFuncKey, Idx, LinkStatus) VALUES (2, 2, 1)"});
  _ZELDB_PhysicalPort_LinkState state = {};
  EXPECT_EQ(zeldb_get_network_physical_port_link_state(1, &state, -1), 0);
  EXPECT_EQ(state.LinkStatus * 1000 + state.LinkSpeed * 100 + state.TxUtil * 10 + state.RxUtil, 2345U);
  EXPECT_EQ(state.Idx, 1);
  EXPECT_EQ(zeldb_get_network_physical_port_link_state(2, &state, 2), 0);
  EXPECT_EQ(zeldb_get_network_physical_port_link_state(2, &state, -1), 11);
  EXPECT_EQ(zeldb_get_network_physical_port_link_state(3, &state, -1), 11);
  EXPECT_EQ(zeldb_get_network_physical_port_link_state(1, &state, 3), 11);
  state = {.LinkStatus = 9, .LinkSpeed = 8, .TxUtil = 7, .RxUtil = 4294967295U, .Idx = 6};
  EXPECT_EQ(zeldb_set_network_physical_port_link_state(1, &state, -1), 0);
  EXPECT_EQ(zeldb_set_network_physical_port_link_state(2, &state, 2), 0);
  EXPECT_EQ(zeldb_set_network_physical_port_link_state(2, &state, 3), 11);
  EXPECT_EQ(database.text("SELECT PCIFuncKey, Idx, LinkStatus, RxUtil FROM PCIPhysicalPortStat ORDER BY _id"),
            "1,1,9,4294967295;2,NULL,1,NULL;2,1,1,NULL;2,2,9,4294967295");
  EXPECT_EQ(shim().calls("update")[0].where, " PCIFuncKey='1'");
  EXPECT_EQ(shim().calls("update")[1].where, " PCIFuncKey='2' AND  Idx='2'");
  EXPECT_EQ(shim().calls("update")[1].puts,
            (Texts{"uint LinkStatus=9", "uint LinkSpeed=8", "uint TxUtil=7", "uint RxUtil=4294967295"}));
  shim().fail({.op = "update", .nth = 0, .status = 13});
  EXPECT_EQ(zeldb_set_network_physical_port_link_state(1, &state, -1), 13);
  shim().fail({.op = "get_content_values", .nth = 0});
  EXPECT_EQ(zeldb_set_network_physical_port_link_state(1, &state, -1), 4);
  const std::string passed = "error Find a physical port, func_key = ";
  EXPECT_EQ(
      libc().logs,
      (Texts{passed + "2, port_index = 1, no equals to 2\n",
             "error Find 3 physical ports, func_key = 2, port_index = -1\n",
             "error Find 0 physical ports, func_key = 3, port_index = -1\n",
             passed + "1, port_index = 1, no equals to 3\n", passed + "2, port_index = 1, no equals to 2\n",
             passed + "2, port_index = 1, no equals to 3\n", passed + "2, port_index = 2, no equals to 3\n",
             "error zeldb_set_network_physical_port_state failed, filter:  PCIFuncKey='1', value: "
             "LinkStatus(0x9) LinkSpeed(0x8) TxUtil(0x7) RxUtil(0xffffffff), ret: 13\n",
             "error zeldb_set_network_physical_port_state, ZEL_DB_STATUS_NO_MEMORY"}));
}

}  // namespace
}  // namespace zeldb_test
