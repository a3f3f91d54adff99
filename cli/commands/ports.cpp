// SPDX-License-Identifier: Apache-2.0
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/words.h"

namespace zeldb::cli {

namespace {

// A port of the function, or of the whole adapter, with this key.
template <typename Record>
struct Of {
  uint32_t Key;
  char CardName[129];
  Record Port;
};
using Physical = Of<_ZELDB_PhysicalPort>;
using Logical = Of<_ZELDB_LogicalPort>;
using Link = Of<_ZELDB_PhysicalPort_LinkState>;

constexpr const char* kKeyHelp = "Key of the function; with --adapter, of the adapter";

#define PORT_COLUMN(Member, Heading, Help) ZELDB_COLUMN_IN(Physical, Port, Member, Heading, Help)
constexpr Column kPhysicalColumns[] = {
    hex(ZELDB_COLUMN(Physical, Key, "KEY", kKeyHelp)),
    ZELDB_COLUMN(Physical, CardName, "CARD", "Name of the card"),
    PORT_COLUMN(Idx, "PORT", "Index of the port"),
    whole(PORT_COLUMN(PermanentAddress, "ADDRESS", "Permanent address")),
    minor(PORT_COLUMN(ConnectorLayoutText, "CONNECTOR", "Layout of the connector")),
    in_words(PORT_COLUMN(LinkStatus, "LINK", "1 if the link is up"), link_word),
    without(PORT_COLUMN(LinkSpeed, "MBIT/S", "Speed of the link in Mbit/s"), 0),
    minor(only_if(PORT_COLUMN(TxUtil, "TX %", "Transmit utilisation in percent"), "LinkStatus")),
    minor(only_if(PORT_COLUMN(RxUtil, "RX %", "Receive utilisation in percent"), "LinkStatus")),
    extra(PORT_COLUMN(ConnectorLayout, "CONNECTOR CODE", "Code of the connector's layout")),
    extra(PORT_COLUMN(NumberofLogicalPorts, "LOGICAL", "Number of logical ports on it")),
};
#undef PORT_COLUMN

#define PORT_COLUMN(Member, Heading, Help) ZELDB_COLUMN_IN(Logical, Port, Member, Heading, Help)
constexpr Column kLogicalColumns[] = {
    hex(ZELDB_COLUMN(Logical, Key, "KEY", kKeyHelp)),
    ZELDB_COLUMN(Logical, CardName, "CARD", "Name of the card"),
    PORT_COLUMN(PhyIdx, "PORT", "Index of the physical port"),
    PORT_COLUMN(Idx, "LOGICAL", "Index of the logical port"),
    whole(PORT_COLUMN(PermanentAddress, "ADDRESS", "Permanent address")),
    minor(PORT_COLUMN(NetworkAddresses, "NETWORK", "Network addresses")),
    minor(PORT_COLUMN(LinkTechnologyText, "TECHNOLOGY", "Technology of the link")),
    PORT_COLUMN(ProtocolTypeText, "PROTOCOL", "Protocol"),
    without(PORT_COLUMN(MaxSpeed, "MAX BIT/S", "Highest speed in bit/s"), 0),
    extra(PORT_COLUMN(LinkTechnology, "TECHNOLOGY CODE", "Code of the technology of the link")),
    extra(PORT_COLUMN(ProtocolType, "PROTOCOL CODE", "IANA interface type")),
    extra(without(PORT_COLUMN(MaxDataSize, "MTU", "Largest data size of a frame in bytes"), 0)),
    extra(PORT_COLUMN(vNICMode, "VNIC CODE", "Code of the virtual NIC mode")),
    extra(PORT_COLUMN(vNICModeText, "VNIC", "Virtual NIC mode")),
    extra(in_words(PORT_COLUMN(Ethernet, "ETHERNET", "1 if Ethernet is enabled"), yes_or_no)),
    extra(in_words(PORT_COLUMN(FCoEFC, "FCOE", "1 if Fibre Channel is enabled"), yes_or_no)),
    extra(in_words(PORT_COLUMN(iSCSI, "ISCSI", "1 if iSCSI is enabled"), yes_or_no)),
    extra(whole(PORT_COLUMN(FCoEPermanentAddress, "FCOE ADDRESS", "Permanent FCoE address"))),
    extra(whole(PORT_COLUMN(FCoENetworkAddressess, "FCOE NETWORK", "FCoE network addresses"))),
    extra(PORT_COLUMN(ConnectionType, "CONNECTION CODE", "Code of the Fibre Channel connection")),
    extra(PORT_COLUMN(ConnectionTypeText, "CONNECTION", "Fibre Channel connection")),
    extra(PORT_COLUMN(Role, "ROLE CODE", "Code of the Fibre Channel role")),
    extra(PORT_COLUMN(RoleText, "ROLE", "Fibre Channel role")),
    extra(
        without(PORT_COLUMN(TargetRelativePortNumber, "TARGET PORT", "Relative port number as a target"), 0)),
};
#undef PORT_COLUMN

#define PORT_COLUMN(Member, Heading, Help) ZELDB_COLUMN_IN(Link, Port, Member, Heading, Help)
constexpr Column kLinkColumns[] = {
    hex(ZELDB_COLUMN(Link, Key, "KEY", "Key of the function")),
    PORT_COLUMN(Idx, "PORT", "Index of the port"),
    in_words(PORT_COLUMN(LinkStatus, "LINK", "1 if the link is up"), link_word),
    without(PORT_COLUMN(LinkSpeed, "MBIT/S", "Speed of the link in Mbit/s"), 0),
    only_if(PORT_COLUMN(TxUtil, "TX %", "Transmit utilisation in percent"), "LinkStatus"),
    only_if(PORT_COLUMN(RxUtil, "RX %", "Receive utilisation in percent"), "LinkStatus"),
};
#undef PORT_COLUMN

struct Options {
  Key function;
  Key adapter;
  std::optional<Place> slot;
  Number port;
};

template <typename List, typename Read>
void add_ports(std::vector<Of<std::remove_reference_t<decltype(*List::Items)>>>& rows, uint32_t key,
               const std::string& card, Read read) {
  // The library does not distinguish an unknown function from one without ports.
  for (const auto& port :
       list_of<List>("ports of " + key_text(key), read, {ZELDB_NO_MATCH, ZELDB_NO_MORE_ROWS})) {
    auto& row = rows.emplace_back();
    row.Key = key;
    copy_text(row.CardName, card);
    row.Port = port;
  }
}

// The name of an adapter; throws if it is not there.
std::string adapter_name(uint32_t key) {
  for (const _ZELDB_PCI_Adapter& adapter : all_adapters()) {
    if (adapter.PCIKey == key) return adapter.CardName;
  }
  const auto functions = functions_of_adapter(key);
  if (functions.empty()) fail_not_found("adapter " + key_text(key));
  return card_name(functions.front());
}

// The index of a port is one of its names.
template <typename Rows>
Rows found(Rows rows, const Options& options) {
  if (options.port && rows.empty()) fail_not_found("port " + std::to_string(*options.port));
  return rows;
}

std::vector<Physical> read_physical(const Options& options) {
  std::vector<Physical> rows;
  if (options.adapter) {
    add_ports<_ZELDB_PhysicalPort_List>(
        rows, *options.adapter, adapter_name(*options.adapter),
        [&](auto* list) { return zeldb_get_all_network_physical_port_list(*options.adapter, list); });
    return rows;
  }
  for (const uint32_t key : chosen_functions(options.function, options.slot)) {
    if (!may_have_network_row(key)) continue;
    add_ports<_ZELDB_PhysicalPort_List>(rows, key, card_name(key), [&](auto* list) {
      return zeldb_get_network_physical_port_list(key, list);
    });
  }
  if (options.port) std::erase_if(rows, [&](const Physical& row) { return row.Port.Idx != *options.port; });
  return found(std::move(rows), options);
}

std::vector<Logical> read_logical(const Options& options) {
  std::vector<Logical> rows;
  if (options.adapter) {
    add_ports<_ZELDB_LogicalPort_List>(
        rows, *options.adapter, adapter_name(*options.adapter),
        [&](auto* list) { return zeldb_get_all_network_logical_port_list(*options.adapter, list); });
    return rows;
  }
  for (const uint32_t key : chosen_functions(options.function, options.slot)) {
    add_ports<_ZELDB_LogicalPort_List>(rows, key, card_name(key), [&](auto* list) {
      return options.port ? zeldb_get_network_logical_port_list2(key, static_cast<int>(*options.port), list)
                          : zeldb_get_network_logical_port_list(key, list);
    });
  }
  return found(std::move(rows), options);
}

std::vector<Link> read_link(const Options& options) {
  if (!options.function) throw WrongUse("--link: needs a function's KEY");
  constexpr int kOnlyPort = -1;
  Link row{.Key = *options.function, .CardName = {}, .Port = {}};
  check(zeldb_get_network_physical_port_link_state(
            row.Key, &row.Port, options.port ? static_cast<int>(*options.port) : kOnlyPort),
        "port of " + key_text(row.Key));
  return {row};
}

}  // namespace

void setup_ports(CLI::App& app) {
  auto options = std::make_shared<Options>();
  CLI::Option* function = add_key(app, "KEY", options->function,
                                  "The ports of the function with this key; without it, of all functions");
  CLI::Option* adapter =
      add_key(app, "--adapter", options->adapter, "The ports of all functions of the adapter with this key");
  CLI::Option* slot =
      add_place(app, "--slot", options->slot, "The ports of all functions in this slot, by function");
  CLI::Option* port = add_number(app, "--port", options->port, "N", "The port with this index");
  exclude_each_other({function, adapter, slot});
  exclude_each_other({adapter, port});
  Listing(app)
      .view(kPhysicalColumns, [options] { return read_physical(*options); })
      .view("--logical", "Logical ports", kLogicalColumns, [options] { return read_logical(*options); })
      .view("--link", "The link of the port that --port names, or of the only port", kLinkColumns,
            [options] { return read_link(*options); })
      .without({adapter, slot});
}

}  // namespace zeldb::cli
