// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "db/code_text.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

using R = _ZELDB_LogicalPort;

constexpr FieldTable kFields{ZELDB_FIELD(R, MaxDataSize),
                             ZELDB_FIELD(R, PermanentAddress),
                             ZELDB_FIELD(R, NetworkAddresses),
                             ZELDB_FIELD(R, PhyIdx),
                             ZELDB_FIELD(R, Idx),
                             ZELDB_CODE_FIELD(R, LinkTechnology, 0),
                             ZELDB_CODE_FIELD(R, vNICMode, 4),
                             ZELDB_FIELD(R, MaxSpeed),
                             ZELDB_FIELD(R, ProtocolType),
                             ZELDB_FIELD(R, Ethernet),
                             ZELDB_FIELD(R, FCoEFC),
                             ZELDB_FIELD(R, iSCSI),
                             ZELDB_FIELD(R, FCoEPermanentAddress),
                             ZELDB_FIELD(R, FCoENetworkAddressess),
                             ZELDB_CODE_FIELD(R, ConnectionType, 0),
                             ZELDB_CODE_FIELD(R, Role, 0),
                             ZELDB_FIELD(R, TargetRelativePortNumber)};
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

Next take_port(const Row& row, R& port) {
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
                                 : Filter<128>("%s=%d AND %s=%d", key_column, shown, "PhyIdx", physical_port);
  return read_list(handle, list, {.table = "PCILogicalPort", .columns = kFields.columns, .where = filter},
                   take_port, {.skipped_rows_count = true, .empty_is_not_found = true});
}

}  // namespace

int zeldb_get_network_info(unsigned int funKey, _ZELDB_Network_Info* info) {
  static constexpr const char* kSums[] = {"sum(NumberofPhysicalPorts)", "sum(MaxNumberofLogicalPorts)"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (info == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<128> filter("%s=%d", kByFunction, static_cast<int>(funKey));
  return read_one(handle, {.table = "PCINetwork", .columns = kSums, .where = filter}, [&](const Row& row) {
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
