// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "db/code_text.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

using Port = _ZELDB_LogicalPort;

constexpr auto kFields =
    field_table(ZELDB_FIELD(Port, MaxDataSize), ZELDB_FIELD(Port, PermanentAddress),
                ZELDB_FIELD(Port, NetworkAddresses), ZELDB_FIELD(Port, PhyIdx), ZELDB_FIELD(Port, Idx),
                ZELDB_CODE_FIELD(Port, LinkTechnology, 0), ZELDB_CODE_FIELD(Port, vNICMode, 4),
                ZELDB_FIELD(Port, MaxSpeed), ZELDB_FIELD(Port, ProtocolType), ZELDB_FIELD(Port, Ethernet),
                ZELDB_FIELD(Port, FCoEFC), ZELDB_FIELD(Port, iSCSI), ZELDB_FIELD(Port, FCoEPermanentAddress),
                ZELDB_FIELD(Port, FCoENetworkAddressess), ZELDB_CODE_FIELD(Port, ConnectionType, 0),
                ZELDB_CODE_FIELD(Port, Role, 0), ZELDB_FIELD(Port, TargetRelativePortNumber));
constexpr int kPermanentAddress = 1;
constexpr size_t kShortestAddress = 12;

constexpr CodeText kLinkTechnologies[] = {{2, "Ethernet"}, {3, "IB"}, {4, "FC"}};
constexpr CodeText kVnicModes[] = {{0, "Disabled"},
                                   {1, "Tovar Virtual Fabric mode"},
                                   {2, "Switch Independent mode"},
                                   {3, "Unified Fabric Protocol Mode"}};
// IANA interface types.
constexpr CodeText kProtocols[] = {{6, "Ethernet"}, {56, "Fibre Channel"}, {199, "Infiniband"}};
constexpr CodeText kConnectionTypes[] = {
    {2, "Fibre Channel"}, {3, "Parallel SCSI"}, {4, "SSA"}, {5, "IEEE1394"},
    {6, "RDMA"},          {7, "iSCSI"},         {8, "SAS"}, {9, "ADT"}};
constexpr CodeText kRoles[] = {{2, "Initiator"}, {3, "Target"}, {4, "Both Initiator and Target"}};
static_assert(is_code_table(kLinkTechnologies) && is_code_table(kVnicModes) && is_code_table(kProtocols) &&
              is_code_table(kConnectionTypes) && is_code_table(kRoles));

constexpr const char* kByFunction = "PCIFuncKey";
constexpr const char* kByAdapter = "PCIKey";
constexpr int kAnyPhysicalPort = 255;

Next take_port(const Row& row, Port& port) {
  char address[sizeof(port.PermanentAddress)];
  if (row.text(kPermanentAddress, address) != ZELDB_OK || std::strlen(address) < kShortestAddress)
    return Next::Skip;
  row.fill(kFields.fields, &port);
  copy_text(port.LinkTechnologyText, text_of(kLinkTechnologies, port.LinkTechnology, "Unknown"));
  copy_text(port.vNICModeText, text_of(kVnicModes, port.vNICMode, "Unknown"));
  copy_text(port.ProtocolTypeText, text_of(kProtocols, port.ProtocolType, "Other"));
  copy_text(port.ConnectionTypeText, text_of(kConnectionTypes, port.ConnectionType, "Unknown"));
  copy_text(port.RoleText, text_of(kRoles, port.Role, "Unknown"));
  return Next::Keep;
}

int logical_ports(const char* key_column, unsigned int key, int physical_port,
                  _ZELDB_LogicalPort_List* list) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  const int shown = static_cast<int>(key);
  const Filter<128> filter = physical_port == kAnyPhysicalPort
                                 ? Filter<128>("%s=%d", key_column, shown)
                                 : Filter<128>("%s=%d AND PhyIdx=%d", key_column, shown, physical_port);
  return read_list(handle, list,
                   {.table = tables::kLogicalPorts, .columns = kFields.columns, .where = filter}, take_port,
                   {.skipped_rows_count = true, .empty_is_not_found = true});
}

}  // namespace

int zeldb_get_network_info(unsigned int funKey, _ZELDB_Network_Info* info) {
  static constexpr const char* kSums[] = {"sum(NumberofPhysicalPorts)", "sum(MaxNumberofLogicalPorts)"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (info == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<128> filter("PCIFuncKey=%d", static_cast<int>(funKey));
  return read_one(handle, {.table = tables::kNetwork, .columns = kSums, .where = filter},
                  [&](const Row& row) {
                    info->NumberofPhysicalPorts = row.number<uint8_t>(0);
                    info->MaxNumberofLogicalPorts = row.number<uint16_t>(1);
                  });
}

int zeldb_get_network_logical_port_list(unsigned int funKey, _ZELDB_LogicalPort_List* list) {
  return logical_ports(kByFunction, funKey, kAnyPhysicalPort, list);
}

int zeldb_get_network_logical_port_list2(unsigned int funKey, int phyIdx, _ZELDB_LogicalPort_List* list) {
  return logical_ports(kByFunction, funKey, phyIdx, list);
}

int zeldb_get_all_network_logical_port_list(unsigned int pciKey, _ZELDB_LogicalPort_List* list) {
  return logical_ports(kByAdapter, pciKey, kAnyPhysicalPort, list);
}
