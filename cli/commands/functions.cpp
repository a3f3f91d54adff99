// SPDX-License-Identifier: Apache-2.0
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/condition.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/words.h"

namespace zeldb::cli {

namespace {

struct Function {
  uint32_t FunKey;
  char Address[17];
  _ZELDB_PCI_Generic_Info Info;
  uint32_t FunType;
  char CardName[129];
  uint32_t AIMSupported;
  uint32_t OOBSrc;
  uint32_t HardwareId;
  uint8_t HardwareTypeId;
  _ZELDB_Network_Info Network;
};

#define INFO_COLUMN(Member, Heading, Help) ZELDB_COLUMN_IN(Function, Info, Member, Heading, Help)
constexpr Column kColumns[] = {
    hex(ZELDB_COLUMN(Function, FunKey, "FUNCTION", "Key of the function")),
    whole(ZELDB_COLUMN(Function, Address, "ADDRESS", "Segment, bus, device and function")),
    INFO_COLUMN(Location, "LOC", "0 on the system board, 1 an add-in slot, 2 a backplane bay"),
    INFO_COLUMN(SlotNo, "SLOT", "Number of the slot"),
    minor(hex(INFO_COLUMN(VendorId, "VENDOR", "PCI vendor id"))),
    minor(hex(INFO_COLUMN(DeviceId, "DEVICE", "PCI device id"))),
    minor(hex(INFO_COLUMN(SubVendorId, "SUBVENDOR", "PCI subsystem vendor id"))),
    minor(hex(INFO_COLUMN(SubDeviceId, "SUBDEVICE", "PCI subsystem id"))),
    in_words(hex(INFO_COLUMN(ClsCode, "CLASS", "Base class, subclass, programming interface"), 6),
             class_word),
    ZELDB_COLUMN(Function, CardName, "CARD", "Name of the card"),
    extra(INFO_COLUMN(SlotDesignation, "DESIGNATION", "Name of the slot")),
    extra(hex(INFO_COLUMN(DevKey, "ADAPTER", "Key of the adapter"))),
    extra(
        INFO_COLUMN(_id, "ID", "_id of the row; writers that follow the samples make it the function's key")),
    extra(without(INFO_COLUMN(BridgeId, "BRIDGE", "Id of the bridge above"), 0)),
    extra(INFO_COLUMN(SegNo, "SEGMENT", "PCI segment")),
    extra(INFO_COLUMN(BusNo, "BUS", "PCI bus")),
    extra(INFO_COLUMN(DeviceNo, "DEV", "PCI device")),
    extra(INFO_COLUMN(FunctionNo, "FUN", "PCI function")),
    extra(INFO_COLUMN(RevId, "REVISION", "PCI revision")),
    extra(INFO_COLUMN(SlotType, "SLOT TYPE", "SMBIOS slot type")),
    extra(INFO_COLUMN(SlotDataBusWidth, "SLOT WIDTH", "SMBIOS slot data bus width")),
    extra(in_words(INFO_COLUMN(Hotplug, "HOTPLUG", "Whether the slot supports hot plug"), yes_or_no)),
    extra(INFO_COLUMN(PCIType, "PCI TYPE", "Kind of bus")),
    extra(INFO_COLUMN(BladeSlotPort, "BLADE PORT", "Port of a blade slot")),
    extra(INFO_COLUMN(NodeIndex, "NODE", "Node that it belongs to")),
    extra(in_words(
        ZELDB_COLUMN(Function, FunType, "TYPE", "Kind of function: 2 Ethernet, 3 Fibre Channel, 4 GPU, ..."),
        function_kind_word)),
    extra(without(INFO_COLUMN(LanesInUse, "LANES", "PCIe lanes in use"), 0)),
    extra(without(INFO_COLUMN(MaxLanes, "MAX LANES", "PCIe lanes of the device"), 0)),
    extra(without(INFO_COLUMN(PCIeType, "PCIE", "PCIe generation in use"), 0)),
    extra(without(INFO_COLUMN(MaxPCIeType, "MAX PCIE", "Highest PCIe generation of the device"), 0)),
    extra(ZELDB_COLUMN(Function, AIMSupported, "AIM", "0 known without settings, 1 to 3 supported")),
    extra(ZELDB_COLUMN(Function, OOBSrc, "OOB", "Source of its out-of-band data")),
    extra(hex(
        ZELDB_COLUMN(Function, HardwareId, "HARDWARE", "Id of the hardware; as a rule the function's key"))),
    extra(
        ZELDB_COLUMN(Function, HardwareTypeId, "HARDWARE TYPE", "Kind of hardware: 2 disk, 3 PCI function")),
    extra(without(ZELDB_COLUMN_IN(Function, Network, NumberofPhysicalPorts, "PORTS", "Network ports"), 0)),
    extra(without(ZELDB_COLUMN_IN(Function, Network, MaxNumberofLogicalPorts, "LOGICAL",
                                  "Largest number of logical ports"),
                  0)),
};
#undef INFO_COLUMN

struct Packaging {
  uint32_t FunKey;
  _ZELDB_PCI_Misc_Info Misc;
};

#define MISC_COLUMN(Member, Heading, Help) ZELDB_COLUMN_IN(Packaging, Misc, Member, Heading, Help)
constexpr Column kPackagingColumns[] = {
    hex(ZELDB_COLUMN(Packaging, FunKey, "FUNCTION", "Key of the function")),
    MISC_COLUMN(PackageTypeText, "PACKAGE", "Type of package"),
    MISC_COLUMN(OtherPackageType, "OTHER PACKAGE", "Package type in the manufacturer's words"),
    MISC_COLUMN(ConnectorLayoutText, "CONNECTOR", "Layout of the connector"),
    MISC_COLUMN(MaxDataWidth, "LANES", "Largest data width"),
    MISC_COLUMN(FoDUid, "FOD UID", "Id for unlocking features"),
    extra(MISC_COLUMN(PackageType, "PACKAGE CODE", "Code of the package type")),
    extra(MISC_COLUMN(ConnectorLayout, "CONNECTOR CODE", "Code of the connector layout")),
    extra(MISC_COLUMN(AIMSpecVersion, "AIM SPEC", "Version of the adapter's interface")),
};
#undef MISC_COLUMN

struct Options {
  std::optional<Place> slot;
  std::optional<Place> drive;
  std::optional<HexPair> beside;
  Key adapter;
  Key key;
  std::string where;
};

std::vector<uint32_t> key_of_drive(const Place& place) {
  const std::string what = "drive " + place_text(place);
  require_inventory(what);
  uint32_t key = 0;
  const int status = zeldb_get_nvme_drv_funkey(static_cast<uint32_t>(place.location),
                                               static_cast<uint32_t>(place.number), &key);
  check(status == ZELDB_NO_HANDLE ? ZELDB_NO_MATCH : status, what);
  return {key};
}

std::vector<uint32_t> keys_beside(const HexPair& ids) {
  uint8_t slot = 0;
  check(zeldb_get_ctrl_slot(static_cast<uint32_t>(ids.first), static_cast<uint32_t>(ids.second), &slot),
        "a function with these ids");
  return functions_in_slot({1, slot});
}

// Functions that were asked for by key must exist.
std::vector<uint32_t> chosen_keys(const Options& options) {
  if (options.key) {
    read_function(*options.key);
    return {*options.key};
  }
  if (options.slot) {
    require_slot(*options.slot);
    return functions_in_slot(*options.slot);
  }
  if (options.drive) return key_of_drive(*options.drive);
  if (options.beside) return keys_beside(*options.beside);
  if (options.adapter) {
    auto keys = functions_of_adapter(*options.adapter);
    if (keys.empty()) fail_not_found("adapter " + key_text(*options.adapter));
    return keys;
  }
  if (options.where.empty()) return function_keys();
  return read_where(options.where, "PCIs", kColumns, [&options] { return function_keys(options.where); });
}

// Values that the adapter tables lack stay 0.
Function function_of(uint32_t key, const _ZELDB_PCI_Generic_Info& info) {
  Function row = {};
  row.FunKey = key;
  row.Info = info;
  copy_text(row.Address, pci_address(row.Info.SegNo, row.Info.BusNo, row.Info.DeviceNo, row.Info.FunctionNo));
  copy_text(row.CardName, card_name(key));
  row.FunType = info.FunType;
  if (row.FunType == 0) zeldb_get_pci_function_type(key, &row.FunType);  // which tells 0 from nothing
  if (may_have_adapter_row(key)) zeldb_get_pci_function_oob_type(key, &row.AIMSupported, &row.OOBSrc);
  const Hardware hardware = hardware_of(key);
  row.HardwareId = hardware.id;
  row.HardwareTypeId = hardware.type;
  if (may_have_network_row(key)) zeldb_get_network_info(key, &row.Network);
  return row;
}

std::vector<Function> functions_of(const std::vector<uint32_t>& keys) {
  std::vector<Function> rows;
  rows.reserve(keys.size());
  for (const uint32_t key : keys) {
    if (const auto info = find_function(key)) rows.push_back(function_of(key, *info));
  }
  return rows;
}

std::vector<Function> read_drive_functions() {
  std::vector<uint32_t> keys;
  for (const auto& drive : list_of<_ZELDB_PCI_Generic_Info_List>(
           "drives in slots", [](auto* list) { return zeldb_get_aic_drive_pci_info_list(list); })) {
    for (const uint32_t key : function_keys("_id=" + std::to_string(drive._id))) keys.push_back(key);
  }
  return functions_of(keys);
}

std::vector<Packaging> read_packaging(const std::vector<uint32_t>& keys) {
  std::vector<Packaging> rows;
  for (const uint32_t key : keys) {
    Packaging row{.FunKey = key, .Misc = {}};
    const int status = zeldb_get_pci_misc_info(key, &row.Misc);
    if (check_found(status, "function " + key_text(key))) rows.push_back(row);
  }
  return rows;
}

std::string bridge_above(const View& view, const Row& row) {
  const auto number = [&](const char* key) { return std::get<uint64_t>(value_of(view, row, key)); };
  if (number("BridgeId") == 0) return {};
  return "segment " + std::to_string(number("SegNo")) + ", bridge " + std::to_string(number("BridgeId"));
}

}  // namespace

void setup_functions(CLI::App& app) {
  auto options = std::make_shared<Options>();
  const std::vector<CLI::Option*> choices{
      add_place(app, "--slot", options->slot, "Functions in this slot"),
      add_key(app, "--adapter", options->adapter, "Functions of the adapter with this key"),
      add_key(app, "--key", options->key, "The function with this key"),
      add_place(app, "--drive", options->drive,
                "The function of the NVMe drive in a slot (1:N) or backplane bay (2:N)"),
      add_hex_pair(app, "--beside", options->beside, "D:SD",
                   "Functions in the slot of the first one with this device and subsystem id (hexadecimal)"),
      add_text(app, "--where", options->where, "CONDITION",
               "Functions that an SQL condition on PCIs selects"),
  };
  exclude_each_other(choices);
  Listing(app)
      .view(kColumns, [options] { return functions_of(chosen_keys(*options)); })
      .view("--packaging", "Packaging of functions", kPackagingColumns,
            [options] { return read_packaging(chosen_keys(*options)); })
      .view("--nvme", "NVMe drives of known vendors in slots", kColumns, read_drive_functions)
      .without(choices)
      .tree("Show functions as a tree, below their bridges", bridge_above);
}

}  // namespace zeldb::cli
