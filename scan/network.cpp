// SPDX-License-Identifier: Apache-2.0
#include "scan/network.h"

#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

#include "db/tables.h"

namespace zeldb::scan {

namespace {

constexpr struct Technology {
  uint64_t type;
  const char* technology;
  uint64_t protocol;
} kTechnologies[] = {{1, "2", 6}, {32, "3", 199}};  // Ethernet, InfiniBand
constexpr uint64_t kEthernet = 1;

struct Interface {
  std::string name;
  std::string folder;
  uint64_t port;  // of its function, from 0
  bool is_virtual_function;
};

// Values that only the drivers of the running system know.
class Ethtool {
 public:
  Ethtool() : socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
  Ethtool(const Ethtool&) = delete;
  Ethtool& operator=(const Ethtool&) = delete;
  ~Ethtool() { close(socket_); }

  std::optional<std::string> firmware(const std::string& name) const {
    ethtool_drvinfo info = {};
    info.cmd = ETHTOOL_GDRVINFO;
    if (!ask(name, &info)) return std::nullopt;
    return std::string(info.fw_version, strnlen(info.fw_version, sizeof(info.fw_version)));
  }

  std::optional<std::string> permanent_address(const std::string& name) const {
    constexpr size_t kLongest = 32;
    alignas(ethtool_perm_addr) char buffer[sizeof(ethtool_perm_addr) + kLongest] = {};
    auto* const address = reinterpret_cast<ethtool_perm_addr*>(buffer);
    address->cmd = ETHTOOL_GPERMADDR;
    address->size = kLongest;
    if (!ask(name, address) || address->size > kLongest) return std::nullopt;
    std::string text;
    bool is_set = false;
    for (size_t at = 0; at < address->size; ++at) {
      const auto byte = static_cast<unsigned char>(buffer[sizeof(ethtool_perm_addr) + at]);
      char digits[4];
      std::snprintf(digits, sizeof(digits), "%s%02X", at != 0 ? ":" : "", byte);
      text += digits;
      is_set = is_set || byte != 0;
    }
    return is_set ? std::optional(text) : std::nullopt;
  }

 private:
  bool ask(const std::string& name, void* question) const {
    ifreq request = {};
    if (name.size() >= sizeof(request.ifr_name)) return false;
    std::memcpy(request.ifr_name, name.c_str(), name.size());
    request.ifr_data = static_cast<char*>(question);
    return ioctl(socket_, SIOCETHTOOL, &request) == 0;
  }

  int socket_;
};

std::optional<std::string> upper(std::optional<std::string> text) {
  if (text)
    std::transform(text->begin(), text->end(), text->begin(),
                   [](unsigned char character) { return static_cast<char>(std::toupper(character)); });
  return text;
}

// The permanent address as the driver reports it, or the one in use if that is the permanent one.
std::optional<std::string> permanent_address(const Machine& machine, const Ethtool& ethtool,
                                             const Interface& interface) {
  if (machine.is_running_system()) {
    if (auto address = ethtool.permanent_address(interface.name)) return address;
  }
  if (machine.number(interface.folder + "addr_assign_type") != uint64_t{0}) return std::nullopt;
  return upper(machine.text(interface.folder + "address"));
}

std::string key_of(const Address& address, const Interface& interface) {
  return text_of(address) + "/" + std::to_string(interface.port);
}

Row logical_port(const Machine& machine, const Address& address, const Function& function,
                 const Interface& interface, const std::optional<std::string>& permanent) {
  const auto type = machine.number(interface.folder + "type");
  Value technology;
  Value protocol;
  for (const Technology& one : kTechnologies) {
    if (type != one.type) continue;
    technology = std::string(one.technology);
    protocol = one.protocol;
  }
  Row row(tables::kLogicalPorts, kNetwork, key_of(address, interface), {"PCIFuncKey", "Idx"});
  row.add("PCIKey", value_of(adapter_key(function.placement)));
  row.add("PCIFuncKey", uint64_t{function.key});
  row.add("MaxDataSize", value_of(machine.number(interface.folder + "mtu")));
  row.add("PermanentAddress", value_of(permanent));
  row.add("NetworkAddresses", value_of(upper(machine.text(interface.folder + "address"))));
  row.add("PhyIdx", interface.is_virtual_function ? Value() : Value(interface.port + 1));
  row.add("Idx", interface.port + 1);
  row.add("LinkTechnology", technology);
  row.add("ProtocolType", protocol);
  row.add("Ethernet", type == kEthernet ? Value(uint64_t{1}) : Value());
  return row;
}

// An interface that is down reports neither.
std::optional<uint64_t> link_status(const Machine& machine, const Interface& interface) {
  if (const auto carrier = machine.number(interface.folder + "carrier")) return carrier;
  if (machine.text(interface.folder + "operstate") == "down") return 0;
  return std::nullopt;
}

void add_physical_port(const Machine& machine, const Address& address, const Function& function,
                       const Interface& interface, const std::optional<std::string>& permanent,
                       std::vector<Row>& rows) {
  const uint64_t number = interface.port + 1;
  auto speed = machine.number(interface.folder + "speed");  // -1: not known
  if (speed == uint64_t{0} || speed > uint64_t{0x7FFFFFFF}) speed.reset();
  Row port(tables::kPhysicalPorts, kNetwork, key_of(address, interface), {"PCIFuncKey", "Idx"});
  port.add("PCIFuncKey", uint64_t{function.key});
  port.add("Idx", number);
  port.add("NumberofLogicalPorts", uint64_t{1});
  port.add("PermanentAddress", value_of(permanent));
  rows.push_back(std::move(port));
  Row state(tables::kPortStatistics, kNetwork, key_of(address, interface), {"PCIFuncKey", "Idx"});
  state.add("PCIFuncKey", uint64_t{function.key});
  state.add("Idx", number);
  state.add("LinkStatus", value_of(link_status(machine, interface)));
  state.add("LinkSpeed", value_of(speed));
  rows.push_back(std::move(state));
}

void add_firmware(const Ethtool& ethtool, const Address& address, const Function& function,
                  const Interface& interface, std::vector<Row>& rows) {
  const auto version = ethtool.firmware(interface.name);
  const Value text = value_of(version);
  if (std::holds_alternative<std::monostate>(text) || version == "N/A") return;
  Row row(tables::kImages, kFirmware, text_of(address), {"HardwareId", "HardwareTypeId"});
  row.add("HardwareId", uint64_t{function.key});
  row.add("HardwareTypeId", uint64_t{3});
  row.add("Classification", std::string("10"));
  row.add("VersionString", text);
  rows.push_back(std::move(row));
}

std::map<Address, std::vector<Interface>> interfaces_of(const Machine& machine) {
  const std::string folder = "sys/class/net/";
  std::map<Address, std::vector<Interface>> interfaces;
  for (const std::string& name : machine.names(folder)) {
    const std::string own = folder + name + "/";
    const auto device = machine.target(own + "device");
    const auto address = device ? function_on_path(*device) : std::nullopt;
    if (!address) continue;
    std::vector<Interface>& ports = interfaces[*address];
    uint64_t port = machine.number(own + "dev_port").value_or(0);
    // Some drivers give all of their ports the same number.
    while (std::any_of(ports.begin(), ports.end(), [port](const Interface& one) { return one.port == port; }))
      ++port;
    const bool is_virtual = machine.has("sys/bus/pci/devices/" + text_of(*address) + "/physfn");
    ports.push_back({name, own, port, is_virtual});
  }
  return interfaces;
}

}  // namespace

void read_network(const Machine& machine, const Functions& functions, Findings& findings) {
  // An incomplete list is discarded: a missing port would look as if it had been removed.
  if (const auto trouble = machine.trouble_in("sys/class/net")) {
    findings.troubles.push_back("network ports: " + *trouble);
    return;
  }
  const Ethtool ethtool;
  for (const auto& [address, interfaces] : interfaces_of(machine)) {
    const auto found = functions.find(address);
    if (found == functions.end()) continue;
    const Function& function = found->second;
    const auto ports = std::count_if(interfaces.begin(), interfaces.end(),
                                     [](const Interface& one) { return !one.is_virtual_function; });
    if (ports > 0) {
      Row row(tables::kNetwork, kNetwork, text_of(address), {"PCIFuncKey"});
      row.add("PCIKey", value_of(adapter_key(function.placement)));
      row.add("PCIFuncKey", uint64_t{function.key});
      row.add("NumberofPhysicalPorts", static_cast<uint64_t>(ports));
      findings.rows.push_back(std::move(row));
    }
    for (const Interface& interface : interfaces) {
      const auto permanent = permanent_address(machine, ethtool, interface);
      findings.rows.push_back(logical_port(machine, address, function, interface, permanent));
      if (!interface.is_virtual_function)
        add_physical_port(machine, address, function, interface, permanent, findings.rows);
    }
    if (machine.is_running_system())
      add_firmware(ethtool, address, function, interfaces.front(), findings.rows);
  }
  findings.complete.insert(kNetwork);
  if (machine.is_running_system()) findings.complete.insert(kFirmware);
}

}  // namespace zeldb::scan
