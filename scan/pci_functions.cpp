// SPDX-License-Identifier: Apache-2.0
#include "scan/pci_functions.h"

extern "C" {
#include <pci/pci.h>
}

#include <algorithm>
#include <csetjmp>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>

#include "db/tables.h"

namespace zeldb::scan {

namespace {

// The error handler must not return to libpci, and C++ exceptions cannot pass through C on all targets.
std::jmp_buf on_error;
char error_text[256];

void keep_text(char* format, va_list arguments) {
  std::vsnprintf(error_text, sizeof(error_text), format, arguments);
  error_text[std::strcspn(error_text, "\n")] = '\0';
}
// As libpci declares it.
__attribute__((noreturn)) void fail(char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  keep_text(format, arguments);
  va_end(arguments);
  std::longjmp(on_error, 1);  // NOLINT(cert-err52-cpp): see above
}
void ignore(char* /*format*/, ...) {}

// False, with a text in error_text, if libpci fails in the call, which must hold nothing that needs release.
template <typename Argument>
[[gnu::noinline]] bool survives(void (*call)(pci_access*, Argument*), pci_access* access,
                                Argument* argument) {
  if (setjmp(on_error) != 0) return false;  // NOLINT(cert-err52-cpp): see above
  call(access, argument);
  return true;
}

void start(pci_access* access, const void* /*unused*/) {
  pci_init(access);
  pci_scan_bus(access);
}
// Before the first name is looked up, where an error of the list would have nowhere to go.
void load_names(pci_access* access, const void* /*unused*/) {
  pci_load_name_list(access);
}
void fill(pci_access* /*access*/, pci_dev* device) {
  pci_fill_info(device, PCI_FILL_IDENT | PCI_FILL_CLASS | PCI_FILL_CAPS | PCI_FILL_NUMA_NODE);
}

struct Access {
  Access(const Machine& machine, const std::string& dump) : access(pci_alloc()) {
    access->error = fail;
    access->warning = ignore;
    access->debug = ignore;
    const std::string sys = machine.path("sys/bus/pci");
    access->method = dump.empty() ? PCI_ACCESS_SYS_BUS_PCI : PCI_ACCESS_DUMP;
    std::string name = dump.empty() ? "sysfs.path" : "dump.name";
    std::string value = dump.empty() ? sys : dump;
    pci_set_param(access, name.data(), value.data());
    // A recorded machine may have its own list of names.
    const std::string names = "usr/share/misc/pci.ids";
    if (!machine.is_running_system() && machine.has(names))
      pci_set_name_list_path(access, strdup(machine.path(names).c_str()), 1);
  }
  Access(const Access&) = delete;
  Access& operator=(const Access&) = delete;
  ~Access() { pci_cleanup(access); }

  pci_access* access;
};

using Devices = std::map<Address, pci_dev*>;

Address address_of_device(const pci_dev& device) {
  return {.segment = static_cast<unsigned>(device.domain),
          .bus = device.bus,
          .device = device.dev,
          .function = device.func};
}

std::string folder_of(const Address& address) {
  return "sys/bus/pci/devices/" + text_of(address) + "/";
}

constexpr unsigned kBridge = 0x06;
unsigned base_class(const pci_dev& device) {
  return device.device_class >> 8U;
}

// The bridge above each bus.
std::map<std::pair<unsigned, unsigned>, Address> bridges_of(const Devices& devices) {
  std::map<std::pair<unsigned, unsigned>, Address> bridges;
  for (const auto& [address, device] : devices) {
    const unsigned header = pci_read_byte(device, PCI_HEADER_TYPE) & 0x7FU;
    const unsigned bus = pci_read_byte(device, PCI_SECONDARY_BUS);
    if (base_class(*device) == kBridge && header == PCI_HEADER_TYPE_BRIDGE && bus > address.bus)
      bridges.try_emplace({address.segment, bus}, address);
  }
  return bridges;
}

struct Link {
  std::optional<uint64_t> lanes, most_lanes, generation, highest_generation;
};

std::optional<uint64_t> generation_of(const std::optional<std::string>& speed) {
  constexpr std::string_view kSpeeds[] = {"2.5", "5", "8", "16", "32", "64"};
  for (size_t nth = 0; speed && nth < std::size(kSpeeds); ++nth) {
    // "8 GT/s" or "8.0 GT/s PCIe"
    const std::string_view number = kSpeeds[nth];
    const char after = speed->size() > number.size() ? (*speed)[number.size()] : '\0';
    if (speed->starts_with(number) && (after == '.' || after == ' ')) return nth + 1;
  }
  return std::nullopt;
}

std::optional<uint64_t> known(uint64_t number, uint64_t most) {
  return number == 0 || number > most ? std::nullopt : std::optional(number);
}

Link link_of(const Machine& machine, bool is_dump, pci_dev* device) {
  constexpr uint64_t kMostLanes = 32;
  constexpr uint64_t kMostGeneration = 7;
  Link link;
  if (pci_cap* const express = pci_find_cap(device, PCI_CAP_ID_EXP, PCI_CAP_NORMAL)) {
    const auto at = static_cast<int>(express->addr);
    const unsigned able = pci_read_long(device, at + PCI_EXP_LNKCAP);
    const unsigned now = pci_read_word(device, at + PCI_EXP_LNKSTA);
    link.most_lanes = known(able >> 4U & 0x3FU, kMostLanes);
    link.highest_generation = known(able & 0xFU, kMostGeneration);
    link.lanes = known(now >> 4U & 0x3FU, kMostLanes);
    link.generation = known(now & 0xFU, kMostGeneration);
  }
  if (is_dump) return link;
  // For users who may not read all of the configuration.
  const std::string folder = folder_of(address_of_device(*device));
  const auto lanes = [&](const char* file) {
    return known(machine.number(folder + file).value_or(0), kMostLanes);
  };
  if (!link.most_lanes) link.most_lanes = lanes("max_link_width");
  if (!link.lanes) link.lanes = lanes("current_link_width");
  if (!link.highest_generation)
    link.highest_generation = generation_of(machine.text(folder + "max_link_speed"));
  if (!link.generation) link.generation = generation_of(machine.text(folder + "current_link_speed"));
  return link;
}

// The slot number in the capabilities of a port.
std::optional<unsigned> slot_of_port(pci_dev* port) {
  constexpr unsigned kImplemented = 0x100;
  pci_cap* const express = pci_find_cap(port, PCI_CAP_ID_EXP, PCI_CAP_NORMAL);
  if (express == nullptr) return std::nullopt;
  const auto at = static_cast<int>(express->addr);
  if ((pci_read_word(port, at + PCI_EXP_FLAGS) & kImplemented) == 0) return std::nullopt;
  const unsigned number = pci_read_long(port, at + PCI_EXP_SLTCAP) >> 19U;
  return number == 0 || number == 0x1FFF ? std::nullopt : std::optional(number);
}

// Without root the kernel gives the first 64 bytes alone; libpci makes ones of the others.
bool hides_capabilities(pci_dev* device) {
  constexpr unsigned kUnreadable = 0xFF;
  const unsigned first = pci_read_byte(device, PCI_CAPABILITY_LIST);
  return (pci_read_word(device, PCI_STATUS) & PCI_STATUS_CAP_LIST) != 0 &&
         pci_read_byte(device, static_cast<int>(first)) == kUnreadable;
}

class Places {
 public:
  Places(const Machine& machine, const PciQuestion& question, const Devices& devices)
      : question_(question), devices_(devices), bridges_(bridges_of(devices)) {
    if (!question.dump.empty()) return;
    const std::string folder = "sys/bus/pci/slots/";
    for (const std::string& name : machine.names(folder)) {
      const auto address = machine.text(folder + name + "/address");
      const auto number = machine.number(folder + name + "/address") ? std::nullopt : number_of(name);
      if (address && number) slots_[*address] = *number;
    }
  }

  std::optional<Address> bridge_above(const Address& address) const {
    const auto found = bridges_.find({address.segment, address.bus});
    return found != bridges_.end() ? std::optional(found->second) : std::nullopt;
  }

  Placement of(const Address& address) const {
    if (question_.hides_slots) {
      const auto found = question_.last.find(address);
      if (found != question_.last.end()) return found->second;
    }
    // A slot may hold a bridge with functions below it. The table of slots is trusted most.
    std::vector<Address> path;
    for (std::optional<Address> at = address; at; at = bridge_above(*at)) path.push_back(*at);
    for (const Address& at : path) {
      if (const Slot* const slot = slot_with(at, address)) return placement_of(*slot);
    }
    for (const Address& at : path) {
      if (const auto number = number_in_sys(at)) return numbered(*number);
    }
    for (size_t above = 1; above < path.size(); ++above) {
      pci_dev* const port = devices_.at(path[above]);
      if (const auto number = slot_of_port(port)) return numbered(*number);
      if (!hides_capabilities(port)) continue;
      hidden_ = hidden_.value_or(path[above]);
      const auto before = question_.last.find(address);
      if (before != question_.last.end()) return before->second;
    }
    return {};
  }

  // A port whose slot capability could not be read.
  const std::optional<Address>& hidden() const { return hidden_; }

 private:
  static std::optional<unsigned> number_of(const std::string& name) {
    constexpr size_t kDigits = 5;
    if (name.size() > kDigits || name.find_first_not_of("0123456789") != std::string::npos)
      return std::nullopt;
    return static_cast<unsigned>(std::stoul(name));
  }

  // The table names the function in the slot, or the port above it: a port on the root bus is not in the
  // slot.
  const Slot* slot_with(const Address& at, const Address& asked) const {
    for (const Slot& slot : question_.slots) {
      if (slot.segment != at.segment || slot.bus != at.bus || slot.device != at.device) continue;
      const bool is_on_root = !bridge_above(at);
      const bool is_root_port = is_on_root && base_class(*devices_.at(at)) == kBridge;
      if (!is_root_port || at != asked) return &slot;
    }
    return nullptr;
  }

  static Placement numbered(unsigned slot) {
    return {.location = 1, .slot = slot, .designation = {}, .type = {}, .width = {}, .hotplug = {}};
  }

  static Placement placement_of(const Slot& slot) {
    return {.location = 1,
            .slot = slot.number,
            .designation = text_value(slot.designation),
            .type = value_of(slot.type),
            .width = value_of(slot.width),
            .hotplug = value_of(slot.hotplug)};
  }

  std::optional<unsigned> number_in_sys(const Address& at) const {
    std::string name = text_of(at);
    name.erase(name.rfind('.'));
    const auto found = slots_.find(name);
    return found != slots_.end() ? std::optional(found->second) : std::nullopt;
  }

  const PciQuestion& question_;
  const Devices& devices_;
  std::map<std::pair<unsigned, unsigned>, Address> bridges_;
  std::map<std::string, unsigned> slots_;
  mutable std::optional<Address> hidden_;
};

// The kinds that the readers distinguish; other functions have no number.
enum : unsigned { kEthernetType = 2, kFibreChannelType = 3, kGpuType = 4, kAcceleratorType = 16 };
bool holds_gpu(const Value& type) {
  const auto* const number = std::get_if<uint64_t>(&type);
  return number != nullptr && *number == kGpuType;
}
Value function_type(const pci_dev& device, const Placement& placement) {
  const bool is_card = placement.location != 0;
  switch (device.device_class) {
    case 0x0200:
      return uint64_t{kEthernetType};
    case 0x0C04:
      return uint64_t{kFibreChannelType};
    case 0x0300:
      return is_card ? Value(uint64_t{kGpuType}) : Value();
    case 0x0302:
      return uint64_t{kGpuType};
    default:
      return device.device_class >> 8U == 0x12 ? Value(uint64_t{kAcceleratorType}) : Value();
  }
}

void add_place(Row& row, const Address& address, const Placement& place) {
  row.add("SlotNo", value_of(place.slot));
  row.add("SegNo", uint64_t{address.segment});
  row.add("BusNo", uint64_t{address.bus});
  row.add("DeviceNo", uint64_t{address.device});
  row.add("FunctionNo", uint64_t{address.function});
  row.add("Location", uint64_t{place.location});
}

Row function_row(const Machine& machine, bool is_dump, pci_dev* device, const Function& function,
                 const std::optional<Address>& bridge) {
  const Address address = address_of_device(*device);
  const Placement& place = function.placement;
  const Link link = link_of(machine, is_dump, device);
  const bool has_subsystem = (pci_read_byte(device, PCI_HEADER_TYPE) & 0x7FU) == PCI_HEADER_TYPE_NORMAL &&
                             pci_read_word(device, PCI_SUBSYSTEM_VENDOR_ID) != 0;
  const auto subsystem = [&](int at) {
    return has_subsystem ? Value(uint64_t{pci_read_word(device, at)}) : Value();
  };
  Row row(tables::kFunctions, kPci, text_of(address), {"FunKey"});
  row.add("FunKey", uint64_t{function.key});
  row.add("DevKey", value_of(adapter_key(place)));
  row.add("NodeIndex", device->numa_node >= 0 ? Value(static_cast<uint64_t>(device->numa_node)) : Value());
  add_place(row, address, place);
  row.add("VendorId", uint64_t{device->vendor_id});
  row.add("DeviceId", uint64_t{device->device_id});
  row.add("SubVendorId", subsystem(PCI_SUBSYSTEM_VENDOR_ID));
  row.add("SubDeviceId", subsystem(PCI_SUBSYSTEM_ID));
  row.add("ClsCode", uint64_t{device->device_class} << 8U | pci_read_byte(device, PCI_CLASS_PROG));
  row.add("RevId", uint64_t{pci_read_byte(device, PCI_REVISION_ID)});
  row.add("BridgeId",
          bridge ? Value(uint64_t{bridge->bus} << 8U | bridge->device << 3U | bridge->function) : Value());
  row.add("SlotType", place.type);
  row.add("SlotDataBusWidth", place.width);
  row.add("Hotplug", place.hotplug);
  row.add("FunType", function_type(*device, place));
  row.add("LanesInUse", value_of(link.lanes));
  row.add("MaxLanes", value_of(link.most_lanes));
  row.add("MaxPCIeType", value_of(link.highest_generation));
  row.add("PCIeType", value_of(link.generation));
  row.add("HardwareId", uint64_t{function.key});
  row.add("HardwareTypeId", uint64_t{3});
  row.add("SlotDesignation", place.designation);
  return row;
}

// NULL if the list of names does not have the device.
Value name_of(pci_access* access, const pci_dev& device) {
  char text[512];
  const char* const name =
      pci_lookup_name(access, text, sizeof(text),
                      PCI_LOOKUP_VENDOR | PCI_LOOKUP_DEVICE | PCI_LOOKUP_NO_NUMBERS | PCI_LOOKUP_NO_HWDB,
                      device.vendor_id, device.device_id);
  return name != nullptr ? text_value(name) : Value();
}

// The kernel counts the errors that a device reports; without the counters its health is unknown. Counts
// begin anew with the device.
Value health_of(const Machine& machine, const Address& address) {
  constexpr uint64_t kError = 6;
  const std::string counts = machine.bytes(folder_of(address) + "aer_dev_fatal").value_or("");
  const std::string total = "TOTAL_ERR_FATAL ";
  const size_t at = counts.find(total);
  if (at == std::string::npos) return Kept();
  if (counts.find_first_of("123456789", at) != at + total.size()) return Withdrawn{kError};
  return kError;
}

// Without access there are no names.
Row adapter_row(const Machine& machine, pci_access* access, bool is_dump, pci_dev* device,
                const Function& function) {
  const Address address = address_of_device(*device);
  const Placement& place = function.placement;
  Row row(tables::kAdapters, kPci, text_of(address), {"PCIFuncKey"});
  row.add("PCIKey", value_of(adapter_key(place)));
  row.add("PCIFuncKey", uint64_t{function.key});
  // The list of adapters omits those without a node, so a machine that gives none gets one node.
  row.add("NodeNo", static_cast<uint64_t>(std::max(device->numa_node, 0)));
  add_place(row, address, place);
  row.add("AIMSupported", uint64_t{0});
  row.add("HealthStatus", is_dump ? Value(Kept()) : health_of(machine, address));
  row.add("ConnectorType", Value());
  row.add("CardName", access != nullptr ? name_of(access, *device) : Value(Kept()));
  if (const auto* const type = std::get_if<uint64_t>(&place.type))
    row.cells[row.cells.size() - 2].value = std::to_string(*type);
  return row;
}

Row packaging_row(const Machine& machine, bool is_dump, pci_dev* device, const Function& function) {
  const char* const package = function.placement.location == 0 ? "32768" : "9";  // on the board, a card
  Row row(tables::kPackaging, kPci, text_of(address_of_device(*device)), {"PCIFuncKey"});
  row.add("PCIFuncKey", uint64_t{function.key});
  row.add("MaxDataWidth", value_of(link_of(machine, is_dump, device).most_lanes));
  row.add("PackageType", std::string(package));
  return row;
}

// The memory of a card, which some drivers report.
Value memory_of(const Machine& machine, bool is_dump, const Address& address) {
  constexpr uint64_t kGibibyte = 1U << 30U;
  if (is_dump) return Kept();
  const uint64_t bytes = machine.number(folder_of(address) + "mem_info_vram_total").value_or(0);
  const uint64_t size = bytes / kGibibyte + (bytes % kGibibyte) * 2 / kGibibyte;
  if (size == 0) return {};
  return std::to_string(size) + " GB";
}

Row gpu_row(const Machine& machine, bool is_dump, const Address& address, const Function& function) {
  Row row(tables::kGpus, kPci, text_of(address), {"PCIFuncKey"});
  row.add("PCIFuncKey", uint64_t{function.key});
  row.add("VideoMemorySize", memory_of(machine, is_dump, address));
  return row;
}

void add_vpd(const Machine& machine, const Address& address, const Function& function, Findings& findings) {
  constexpr size_t kLargest = 32768;
  const std::string file = folder_of(address) + "vpd";
  const auto bytes = machine.bytes(file, kLargest);
  if (!bytes && machine.has(file)) findings.unread.emplace(tables::kVpds, text_of(address));
  const auto vpd = bytes ? decode_vpd(*bytes) : std::nullopt;
  if (!vpd) return;
  Row row(tables::kVpds, kPci, text_of(address), {"HardwareId", "HardwareTypeId"});
  row.add("HardwareId", uint64_t{function.key});
  row.add("HardwareTypeId", uint64_t{3});
  row.add("Location", uint64_t{function.placement.location});
  row.add("SlotNo", value_of(function.placement.slot));
  row.add("ProductName", text_value(vpd->name));
  row.add("Manufacture", text_value(vpd->maker));
  row.add("SerialNo", text_value(vpd->serial));
  row.add("PartNo", text_value(vpd->part));
  findings.rows.push_back(std::move(row));
}

// One line for all functions: a user who may not read the data of one may not read those of the others.
void tell_unread_vpd(const Machine& machine, const Functions& functions, Findings& findings) {
  for (const auto& [address, function] : functions) {
    const std::string file = folder_of(address) + "vpd";
    const auto trouble = machine.trouble(file);
    if (!trouble) continue;
    findings.troubles.push_back("vital product data: " + file + ": " + *trouble);
    return;
  }
}

bool may_be_read(const Machine& machine, const PciQuestion& question, Findings& findings) {
  if (!question.dump.empty()) return true;
  const std::string folder = "sys/bus/pci/devices";
  if (const auto trouble = machine.trouble(folder)) {
    findings.troubles.push_back("PCI functions: " + folder + ": " + *trouble);
    return false;
  }
  for (const std::string& name : machine.names(folder)) {
    const std::string one = folder + "/" + name;
    if (!machine.leads_outside(one)) continue;
    findings.troubles.push_back("PCI functions: " + one + ": leads out of the folder");
    return false;
  }
  return true;
}

// The highest domain that fits its column.
constexpr unsigned kLastSegment = 0xFFFF;

// A key has no room for the domain: functions come in the order of domains, and the first one has it.
unsigned key_of(const Address& address, const Placement& placement) {
  return placement.location << 24U | address.bus << 16U | address.device << 8U | address.function;
}

// One line, however many they are.
void tell_left_out(const std::string& why, const std::vector<Address>& left_out, Findings& findings) {
  constexpr size_t kNamed = 3;
  if (left_out.empty()) return;
  std::string line = "PCI functions left out, which " + why + ":";
  for (size_t nth = 0; nth < std::min(left_out.size(), kNamed); ++nth)
    line += (nth == 0 ? " " : ", ") + text_of(left_out[nth]);
  if (left_out.size() > kNamed) line += " and " + std::to_string(left_out.size() - kNamed) + " more";
  findings.troubles.push_back(std::move(line));
}

}  // namespace

bool can_read_functions() {
  return true;
}

Functions read_functions(const Machine& machine, const PciQuestion& question, Findings& findings) {
  Functions functions;
  if (!may_be_read(machine, question, findings)) return functions;
  const bool is_dump = !question.dump.empty();
  const bool has_devices = machine.has("sys/bus/pci/devices");
  if (!is_dump && !has_devices) {
    findings.complete.insert(kPci);
    return functions;
  }
  const Access access(machine, question.dump);
  if (!survives<const void>(start, access.access, nullptr)) {
    findings.troubles.push_back(std::string("PCI functions: ") + error_text);
    return functions;
  }
  bool is_complete = !is_dump || access.access->devices != nullptr;
  if (!is_complete) findings.troubles.push_back("PCI functions: " + question.dump + ": has none");
  Devices devices;
  for (pci_dev* device = access.access->devices; device != nullptr; device = device->next) {
    const Address address = address_of_device(*device);
    if (survives(fill, access.access, device)) {
      devices.emplace(address, device);
    } else {
      findings.troubles.push_back("function " + text_of(address) + ": " + error_text);
      is_complete = false;
    }
  }
  pci_access* names = access.access;
  if (!survives<const void>(load_names, names, nullptr)) {
    findings.troubles.push_back(std::string("names of functions: ") + error_text);
    names = nullptr;
  }
  const Places places(machine, question, devices);
  std::set<unsigned> keys;
  std::vector<Address> twins;
  std::vector<Address> far;
  for (const auto& [address, device] : devices) {
    const Placement placement = places.of(address);
    if (address.segment > kLastSegment) {
      far.push_back(address);
      continue;
    }
    const unsigned key = key_of(address, placement);
    if (!keys.insert(key).second) {
      twins.push_back(address);
      continue;
    }
    const Function& function = functions.emplace(address, Function{key, placement}).first->second;
    findings.rows.push_back(function_row(machine, is_dump, device, function, places.bridge_above(address)));
    if (base_class(*device) != kBridge) {
      findings.rows.push_back(adapter_row(machine, names, is_dump, device, function));
      findings.rows.push_back(packaging_row(machine, is_dump, device, function));
    }
    if (holds_gpu(function_type(*device, placement)))
      findings.rows.push_back(gpu_row(machine, is_dump, address, function));
    if (!is_dump) add_vpd(machine, address, function, findings);
  }
  tell_left_out("have the key of one in a lower domain", twins, findings);
  tell_left_out("are in domains beyond ffff", far, findings);
  if (places.hidden() && !question.hides_slots)
    findings.troubles.push_back("slots: the capabilities of port " + text_of(*places.hidden()) +
                                " cannot be read");
  if (!is_dump) tell_unread_vpd(machine, functions, findings);
  if (is_complete) findings.complete.insert(kPci);
  return functions;
}

}  // namespace zeldb::scan
