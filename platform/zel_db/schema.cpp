// SPDX-License-Identifier: Apache-2.0
#include "zel_db/schema.h"

#include <algorithm>
#include <iterator>

#include "zel_db/engine.h"

namespace zel_db {
namespace {

constexpr Column number(const char* name, Index index = Index::None) {
  return {name, Kind::Integer, 0, index};
}
constexpr Column number_or_zero(const char* name) {
  return {name, Kind::Integer, 0, Index::None, Default::Zero};
}
constexpr Column unsigned64(const char* name) {
  return {name, Kind::Unsigned64, 0};
}
constexpr Column text(const char* name, uint16_t size = 255, Index index = Index::None) {
  return {name, Kind::Text, size, index};
}
constexpr Column blob(const char* name, uint16_t size) {
  return {name, Kind::Blob, size};
}

// The BIOS settings of PCI functions, as the parser stores them.
constexpr Column kPciSetting[] = {
    text("SettingID", 255, Index::Unique),
    text("SettingName"),
    text("PendingValue", 512),
    text("CurrentValue", 512),
    number("PfaKey", Index::Plain),
    text("SuppressIf", 2048),
    text("GrayIf", 2048),
    text("GroupID", 512),
    text("GroupName", 512),
    text("GroupSuppressIf", 2048),
    text("GroupGrayIf", 2048),
    text("Mriname"),
    text("ShortDesc"),
    text("FullDesc", 512),
    text("Defvalue"),
    text("Mfg_default"),
    text("Defaultaction"),
    text("RecordId"),
    number("Type"),
    number("Flags"),
    number("Minim"),
    number("Maxim"),
    number("Step"),
    number("Mins"),
    number("Maxs"),
    text("Pattern"),
    number("Numchoices"),
    text("Choices", 2048),
    number("Mininstances"),
    number("Maxinstances"),
};

// The adapters that the management services show, one row per function.
constexpr Column kPciAdapter[] = {
    number("PCIKey", Index::Plain),
    number("PCIFuncKey", Index::Plain),
    number("NodeNo"),
    number("SlotNo", Index::Plain),
    number("SegNo"),
    number("BusNo"),
    number("DeviceNo"),
    number("FunctionNo"),
    number("Location"),
    // A row that is inserted without these has to be readable: readers take NULL for a broken row.
    number_or_zero("AIMSupported"),
    number_or_zero("OOBSrc"),
    number_or_zero("HealthStatus"),
    text("ConnectorType"),
    text("CardName"),
};

// Every PCI function that was found.
constexpr Column kPcis[] = {
    number("FunKey", Index::Plain),
    number("DevKey", Index::Plain),
    number("NodeIndex"),
    number("SlotNo", Index::Plain),
    number("SegNo"),
    number("BusNo"),
    number("DeviceNo"),
    number("FunctionNo"),
    number("Location"),
    number("VendorId"),
    number("DeviceId"),
    number("SubVendorId"),
    number("SubDeviceId"),
    number("ClsCode"),
    number("RevId"),
    number("BridgeId"),
    number("SlotType"),
    number("SlotDataBusWidth"),
    number("Hotplug"),
    number("PCIType"),
    number("BladeSlotPort"),
    number("FunType"),
    number("LanesInUse"),
    number("MaxLanes"),
    number("MaxPCIeType"),
    number("PCIeType"),
    number("HardwareId"),
    number("HardwareTypeId"),
    text("SlotDesignation"),
};

// Vital product data of functions and disks.
constexpr Column kVpds[] = {
    number("HardwareId"), number("HardwareTypeId"),
    number("Location"),   number("SlotNo", Index::Plain),
    text("UUID"),         text("ProductName"),
    text("Manufacture"),  text("SerialNo"),
    text("PartNo"),       text("Model"),
    text("FRUNo"),        text("L2PartNo"),
    text("SupplierSN"),
};

// Firmware components that the update agent has found on devices.
constexpr Column kPldmDeviceFirmware[] = {
    text("DeviceName"),         number("DeviceType"),
    number("PCIKey"),           number("PCIFuncKey"),
    number("VendorId"),         number("SubVendorId"),
    number("DeviceId"),         number("SubDeviceId"),
    number("Location"),         number("SlotNo", Index::Plain),
    text("Manufacture"),        text("SoftwareID"),
    text("VersionString"),      text("PendingVersionString"),
    text("PkgVersionString"),   text("ReleaseDate"),
    text("PendingReleaseDate"), number("UpdateSupport"),
    number("Updated"),          number("UpdateMethod"),
    number("UpdateAuxInfo"),    number("UpdateErrCode"),
    text("UpdateErrString"),    number("Status"),
};

// How functions are packaged.
constexpr Column kPciMisc[] = {
    number("PCIFuncKey", Index::Plain), text("FoDUid"),          number("MaxDataWidth"),
    text("ConnectorLayout", 16),        text("PackageType", 16), text("OtherPackageType"),
    text("AIMSpecVersion", 64),
};

// Which NC-SI packages answer for a slot.
constexpr Column kNcsiPackageId[] = {
    number("Location"),   number("SlotNo", Index::Plain), number("Type"),
    number("PackageID1"), number("PackageID2"),
};

// How many ports functions have; a function may be announced more than once.
constexpr Column kPciNetwork[] = {
    number("PCIKey", Index::Plain),
    number("PCIFuncKey", Index::Plain),
    number("NumberofPhysicalPorts"),
    number("MaxNumberofLogicalPorts"),
};

constexpr Column kPciLogicalPort[] = {
    number("PCIKey", Index::Plain),
    number("PCIFuncKey", Index::Plain),
    number("MaxDataSize"),
    text("PermanentAddress"),
    text("NetworkAddresses"),
    number("PhyIdx"),
    number("Idx"),
    text("LinkTechnology", 16),
    text("vNICMode", 16),
    unsigned64("MaxSpeed"),
    number("ProtocolType"),
    number("Ethernet"),
    number("FCoEFC"),
    number("iSCSI"),
    text("FCoEPermanentAddress", 64),
    text("FCoENetworkAddressess", 64),
    text("ConnectionType", 16),
    text("Role", 16),
    number("TargetRelativePortNumber"),
};

// Ports and their statistics are paired by their places: no index may reorder the rows of a function.
constexpr Column kPciPhysicalPort[] = {
    number("PCIFuncKey", Index::Plain), text("ConnectorLayout", 16), number("Idx"),
    number("NumberofLogicalPorts"),     text("PermanentAddress"),
};
constexpr Column kPciPhysicalPortStat[] = {
    number("PCIFuncKey", Index::Plain),
    number("Idx"),
    number("LinkStatus"),
    number("LinkSpeed"),
    number("TxUtil"),
    number("RxUtil"),
};

constexpr Column kPciGpu[] = {
    number("PCIFuncKey", Index::Plain),
    text("VideoMemoryType", 16),
    text("VideoMemorySize", 64),
    number("TotalGPUChipNumber"),
};

constexpr Column kPciGpuChip[] = {
    number("PCIFuncKey", Index::Plain),
    text("GPUChipName"),
    text("GPUChipManufacturer"),
    text("GPUChipModel"),
    text("GPUChipPartNumber"),
    text("GPUChipSKU"),
    text("GPUChipSerialNumber"),
    text("GPUChipFamily"),
    text("GPUChipUniqueID"),
    text("GPUChipFormFactor", 16),
    number("GPUChipIndex"),
    number("GPUChipNumberOfEnabledCores"),
    number("ExternalBusClockSpeed"),
    number("GPUChipMaxClockSpeed"),
    number("GPUChipAddressWidth"),
    number("GPUChipDataWidth"),
};

// Firmware images of functions and disks.
constexpr Column kFirmwares[] = {
    number("HardwareId", Index::Plain),
    number("HardwareTypeId"),
    text("Classification", 16),
    text("FirmwareName"),
    text("VersionString"),
    text("Description"),
    text("ReleaseDate"),
    text("Manufacture"),
    text("SoftwareID"),
};

// The controller's own devices.
constexpr Column kEmbeddedDeviceFirmware[] = {
    text("DeviceName"),
    number("DeviceIndex"),
    number("StructRev"),
    number("Version"),
    text("SoftwareID", 255, Index::Plain),
    number("Class"),
    number("Category"),
    number("SubCategory"),
    number("Checksum"),
};

// What DPUs report, a bounded number of events per slot.
constexpr Column kDpuEvents[] = {
    number("Slot", Index::Plain),
    text("GenID"),
    text("Message", 512),
    number("Timestamp"),
};

// Processor sockets.
constexpr Column kProcessor[] = {
    unsigned64("ProcId"),
    number("ProcType"),
    number("Family"),
    text("Socket"),
    text("Manufacturer"),
    text("Version"),
    number("Voltage"),
    number("ExtClock"),
    number("MaxSpeed"),
    number("CurSpeed"),
    number("Status"),
    number("Upgrade"),
    text("SerialNo"),
    text("AssetTag"),
    text("PartNo"),
    number("CoreCount"),
    number("CoreEnabled"),
    number("ThreadCount"),
    number("Characteristics"),
    number("L1CacheMaxSize"),
    number("L1CacheInstalled"),
    number("L1CacheType"),
    number("L1CacheConfig"),
    number("L2CacheMaxSize"),
    number("L2CacheInstalled"),
    number("L2CacheType"),
    number("L2CacheConfig"),
    number("L3CacheMaxSize"),
    number("L3CacheInstalled"),
    number("L3CacheType"),
    number("L3CacheConfig"),
    number("NodeIndex"),
};

// Memory modules. Sizes from 2^31 on are written as negative numbers. Few rows, and listed by their ids
// alone, which an index would give in its own order.
constexpr Column kMemory[] = {
    unsigned64("ArrayId"),      number("SlotNo"),
    number("TotalWidth"),       number("DataWidth"),
    number("MemSize"),          number("FormFactor"),
    number("MemType"),          number("TypeDetail"),
    number("MaxSpeed"),         number("ClockSpeed"),
    text("DevLocator"),         text("BankLocator"),
    text("Manufacturer"),       text("SerialNo"),
    text("AssetTag"),           text("PartNo"),
    number("Attributes"),       number("NodeIndex"),
    unsigned64("Capacity"),     unsigned64("MemCapacity"),
    unsigned64("AppDirCap"),    unsigned64("UnconfigCap"),
    unsigned64("InaccCap"),     unsigned64("ReservedCap"),
    number("Classification"),   number("RemainingLife"),
    number("SecurityState"),    number("HealthStatus"),
    number("AlarmTrips"),       number("LDShutdownCount"),
    number("AITDRAMStatus"),    number("HealthStatusReason"),
    number("LLShutdownStatus"), number("FIPSMode"),
    number("InfoMask"),         number("CPUIndex"),
    number("iMCNum"),           number("ChannelNum"),
    number("DimmNum"),          text("FirmwareVersion"),
    text("SoftwareID"),         number("MajorHealth"),
    number("MinorHealth"),      number("RepairStatus"),
};

// Which disks belong to which controller.
constexpr Column kDisks[] = {
    number("RAIDCtrlId"),
};

constexpr Column kRaidControllers[] = {
    number("ControllerUID"),
};

// Drives. The services that watch them compare these numbers before they write, which NULL would never let
// them. Few rows, and read by conditions of which an index would change the order: the place's text alone has
// one.
constexpr Column kAimDisks[] = {
    number("PCIFuncKey"),
    number("SlotNo"),
    number_or_zero("CtrlType"),
    number("BayNo"),
    number("LocationId"),
    text("Location", 255, Index::Plain),
    text("DriveTypeId"),
    text("MediaTypeId"),
    text("FruNo"),
    text("PartNo"),
    text("SerialNo"),
    text("Model"),
    text("UUID"),
    text("Manufacture"),
    text("FwVersion"),
    text("Capacity"),
    number_or_zero("SFlags"),
    number_or_zero("Warning"),
    number_or_zero("Temperature"),
    number_or_zero("RemainLife"),
    number_or_zero("InfoMask"),
    number_or_zero("Presence"),
};

// NVMe drives that their management interface tells about.
constexpr Column kNvmeDrives[] = {
    number("Location"),
    number("SlotNo"),
    number("CtrlSlot"),
    unsigned64("Capacity"),
    text("FruNo"),
    text("PartNo"),
    text("SupplierSN"),
    text("Model"),
    text("UUID"),
    text("Manufacture"),
    text("FwVer"),
    number_or_zero("SFlags"),
    number_or_zero("Warning"),
    number_or_zero("Temperature"),
    number_or_zero("RemainLife"),
    number_or_zero("InfoMask"),
};

// Which sensor stands for which drive. Of several, the last one counts.
constexpr Column kSensorSlotMap[] = {
    number("HardwareTypeId"),
    number("SlotNo"),
    number("HealthStatusId"),
};

// The controller's property store.
constexpr Column kProperties[] = {
    text("propName", 255, Index::Unique),
    blob("propValue", 1024),
};

constexpr Column kVersion[] = {
    number("Version"),
};

constexpr Table kInventoryTables[] = {
    {"ZeldbSchema", kVersion, false},
    {"PCISetting", kPciSetting},
    {"PCIAdapter", kPciAdapter},
    {"PCIs", kPcis},
    {"PCIMisc", kPciMisc},
    {"NCSIPackageID", kNcsiPackageId},
    {"PCINetwork", kPciNetwork},
    {"PCILogicalPort", kPciLogicalPort},
    {"PCIPhysicalPort", kPciPhysicalPort},
    {"PCIPhysicalPortStat", kPciPhysicalPortStat},
    {"PCIGPU", kPciGpu},
    {"PCIGPUChip", kPciGpuChip},
    {"VPDs", kVpds},
    {"PldmDeviceFirmware", kPldmDeviceFirmware},
    {"Firmwares", kFirmwares},
    {"EmbeddedDeviceFirmware", kEmbeddedDeviceFirmware},
    {"DPUEvents", kDpuEvents},
    {"Processor", kProcessor},
    {"Memory", kMemory},
    {"Disks", kDisks},
    {"RAIDControllers", kRaidControllers},
    {"AimDisks", kAimDisks},
    {"NVMeDrives", kNvmeDrives},
    {"SensorSlotMap", kSensorSlotMap},
};

constexpr Table kPropertyTables[] = {
    {"ZeldbSchema", kVersion, false},
    {"propertiesDCTbl", kProperties},
};

std::string table_definition(const Table& table, const Dialect& dialect) {
  std::string sql = std::string("CREATE TABLE IF NOT EXISTS ") + table.name + " (";
  if (table.has_row_id) sql.append("_id ").append(dialect.row_id).append(", ");
  for (const Column& column : table.columns) {
    sql.append(column.name).append(" ").append(dialect.type(column));
    if (column.value == Default::Zero) sql.append(" DEFAULT 0");
    sql.append(", ");
  }
  sql.resize(sql.size() - 2);
  return sql.append(")").append(dialect.table_options);
}

std::string index_definition(const Table& table, const Column& column) {
  const char* unique = column.index == Index::Unique ? "UNIQUE " : "";
  const std::string name = std::string(table.name) + "_" + column.name;
  return std::string("CREATE ") + unique + "INDEX IF NOT EXISTS " + name + " ON " + table.name + " (" +
         column.name + ")";
}

}  // namespace

bool has_row_ids(std::string_view name) {
  const auto is_it = [&](const Table& table) { return table.name == name && table.has_row_id; };
  return std::any_of(std::begin(kInventoryTables), std::end(kInventoryTables), is_it) ||
         std::any_of(std::begin(kPropertyTables), std::end(kPropertyTables), is_it);
}

std::vector<std::string> definitions(std::string_view database, const Dialect& dialect) {
  std::vector<std::string> statements;
  const std::span<const Table> tables = database == kDatabases[0] ? std::span<const Table>(kInventoryTables)
                                                                  : std::span<const Table>(kPropertyTables);
  for (const Table& table : tables) {
    statements.push_back(table_definition(table, dialect));
    for (const Column& column : table.columns) {
      if (column.index != Index::None) statements.push_back(index_definition(table, column));
    }
  }
  return statements;
}

}  // namespace zel_db
