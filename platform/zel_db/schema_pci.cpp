// SPDX-License-Identifier: Apache-2.0
#include "zel_db/schema_families.h"

namespace zel_db {
namespace {

constexpr const char* kDiscovery = "the controller's discovery of PCI devices, which is not part of zeldb";
constexpr const char* kAdapterAgent = "the controller's adapter agent, which is not part of zeldb";

constexpr const char* kFunctionKey = "key of the function (`PCIs.FunKey`)";
constexpr const char* kAdapterKey = "key of the adapter: `Location` times 65536 plus `SlotNo`";
constexpr const char* kPlace = "0 on the system board, 1 in a slot, 2 in a backplane bay";
constexpr const char* kSlot = "number of the slot at that location";

constexpr Column kPciAdapter[] = {
    number("PCIKey", kAdapterKey, Index::Plain),
    number("PCIFuncKey", kFunctionKey, Index::Plain),
    number("NodeNo", "node that it belongs to"),
    number("SlotNo", kSlot, Index::Plain),
    number("SegNo", "PCI segment"),
    number("BusNo", "PCI bus"),
    number("DeviceNo", "PCI device"),
    number("FunctionNo", "PCI function"),
    number("Location", "0 on the system board, 1 in a slot"),
    // A row that is inserted without these has to be readable: readers take NULL for a broken row.
    number_or_zero("AIMSupported",
                   "0 known without settings, 1 and 2 supported by the agent, 3 by the merge"),
    number_or_zero("OOBSrc", "source of the out-of-band data, the agent's code"),
    number_or_zero("HealthStatus",
                   "health: 0 unknown, 1 other, 2 OK, 3 degraded, 4 stressed, 5 failing, 6 error"),
    text("ConnectorType",
         "code, decimal or `0x` hexadecimal: a connector layout if `AIMSupported` is 1 or `Location` "
         "is 0, else an SMBIOS slot type"),
    text("CardName", "name of the card"),
};

constexpr Column kPcis[] = {
    number("FunKey", "key of the function: location, bus, device and function, a byte each, from the top",
           Index::Plain),
    number("DevKey", kAdapterKey, Index::Plain),
    number("NodeIndex", "node that it belongs to"),
    number("SlotNo", kSlot, Index::Plain),
    number("SegNo", "PCI segment"),
    number("BusNo", "PCI bus"),
    number("DeviceNo", "PCI device"),
    number("FunctionNo", "PCI function"),
    number("Location", kPlace),
    number("VendorId", "PCI vendor id"),
    number("DeviceId", "PCI device id"),
    number("SubVendorId", "PCI subsystem vendor id"),
    number("SubDeviceId", "PCI subsystem id"),
    number("ClsCode", "class code: base class, subclass and programming interface, 24 bits"),
    number("RevId", "revision id"),
    number("BridgeId", "bridge above it, as the discovery numbers them"),
    number("SlotType", "SMBIOS slot type"),
    number("SlotDataBusWidth", "SMBIOS slot data bus width, a code"),
    number("Hotplug", "whether the slot is hot-pluggable"),
    number("PCIType", "kind of PCI device, the discovery's code"),
    number("BladeSlotPort", "port of a blade's slot"),
    number("FunType",
           "kind of function: 4 GPU, 16 accelerator, 24 unknown, others as the discovery has them"),
    number("LanesInUse", "PCIe lanes in use; NULL reads as 4"),
    number("MaxLanes", "most PCIe lanes; NULL reads as 16"),
    number("MaxPCIeType", "highest PCIe generation; NULL reads as 4"),
    number("PCIeType", "PCIe generation in use; NULL reads as 3"),
    number("HardwareId", "its id in `VPDs` and `Firmwares`: the function key"),
    number("HardwareTypeId", "3: a PCI function"),
    text("SlotDesignation", "name of the slot"),
};

constexpr Column kPciMisc[] = {
    number("PCIFuncKey", kFunctionKey, Index::Plain),
    text("FoDUid", "id for unlocking features"),
    number("MaxDataWidth", "widest data path, in lanes"),
    text("ConnectorLayout", 16,
         "code of the connector, decimal or `0x` hexadecimal; 0 and NULL: derived from `PCIs.Location`"),
    text("PackageType", 16, "code of the package as CIM_PhysicalPackage has it; 32768 on the board"),
    text("OtherPackageType", "package in words, if the code is 1"),
    text("AIMSpecVersion", 64, "version of the adapter's interface to the agent"),
};

constexpr Column kNcsiPackageId[] = {
    number("Location", "0 on the system board, 1 in a slot"),
    number("SlotNo", kSlot, Index::Plain),
    number("Type", "kind of NC-SI connection, the writer's code"),
    number("PackageID1", "first package; 255 without"),
    number("PackageID2", "second package; 255 without"),
};

constexpr Column kPciNetwork[] = {
    number("PCIKey", kAdapterKey, Index::Plain),
    number("PCIFuncKey", kFunctionKey, Index::Plain),
    number("NumberofPhysicalPorts", "physical ports"),
    number("MaxNumberofLogicalPorts", "most logical ports"),
};

constexpr Column kPciLogicalPort[] = {
    number("PCIKey", kAdapterKey, Index::Plain),
    number("PCIFuncKey", kFunctionKey, Index::Plain),
    number("MaxDataSize", "largest data size of a frame, in bytes"),
    text("PermanentAddress", "permanent address; a port with fewer than 12 characters is not listed"),
    text("NetworkAddresses", "addresses in use"),
    number("PhyIdx", "index of its physical port (`PCIPhysicalPort.Idx`)"),
    number("Idx", "index of the logical port"),
    text("LinkTechnology", 16, "2 Ethernet, 3 InfiniBand, 4 Fibre Channel; decimal or `0x` hexadecimal"),
    text("vNICMode", 16, "mode of the virtual NIC: 0 disabled, 1 to 3 modes; unreadable: 4"),
    unsigned64("MaxSpeed", "highest speed, in bit/s"),
    number("ProtocolType", "IANA interface type: 6 Ethernet, 56 Fibre Channel, 199 InfiniBand"),
    number("Ethernet", "1: Ethernet is enabled"),
    number("FCoEFC", "1: Fibre Channel, also over Ethernet, is enabled"),
    number("iSCSI", "1: iSCSI is enabled"),
    text("FCoEPermanentAddress", 64, "permanent address for FCoE; readers take 16 characters"),
    text("FCoENetworkAddressess", 64, "addresses in use for FCoE; readers take 16 characters"),
    text("ConnectionType", 16, "storage connection: 2 Fibre Channel, 3 SCSI, 6 RDMA, 7 iSCSI, 8 SAS, ..."),
    text("Role", 16, "2 initiator, 3 target, 4 both"),
    number("TargetRelativePortNumber", "relative port number as a target"),
};

constexpr Column kPciPhysicalPort[] = {
    number("PCIFuncKey", kFunctionKey, Index::Plain),
    text("ConnectorLayout", 16,
         "code of the connector, decimal or `0x` hexadecimal: 5 RJ45, 32775 SFP28, ..."),
    number("Idx", "index of the port"),
    number("NumberofLogicalPorts", "logical ports on it"),
    text("PermanentAddress", "permanent address"),
};

constexpr Column kPciPhysicalPortStat[] = {
    number("PCIFuncKey", kFunctionKey, Index::Plain),
    number("Idx", "index of the port"),
    number("LinkStatus", "1: the link is up"),
    number("LinkSpeed", "speed of the link, in Mbit/s"),
    number("TxUtil", "transmit utilisation, in percent"),
    number("RxUtil", "receive utilisation, in percent"),
};

constexpr Column kPciGpu[] = {
    number("PCIFuncKey", kFunctionKey, Index::Plain),
    text("VideoMemoryType", 16, "code of the memory's type, decimal or `0x` hexadecimal: 13 SGRAM, ..."),
    text("VideoMemorySize", 64, "size of the memory, a text with its unit"),
    number("TotalGPUChipNumber", "chips on the card"),
};

constexpr Column kPciGpuChip[] = {
    number("PCIFuncKey", kFunctionKey, Index::Plain),
    text("GPUChipName", "name"),
    text("GPUChipManufacturer", "manufacturer"),
    text("GPUChipModel", "model"),
    text("GPUChipPartNumber", "part number"),
    text("GPUChipSKU", "stock keeping unit"),
    text("GPUChipSerialNumber", "serial number"),
    text("GPUChipFamily", "family"),
    text("GPUChipUniqueID", "unique id"),
    text("GPUChipFormFactor", 16, "code of the form factor, decimal or `0x` hexadecimal: 21 BGA, ..."),
    number("GPUChipIndex", "index of the chip on its card"),
    number("GPUChipNumberOfEnabledCores", "cores that are enabled; readers take the low byte"),
    number("ExternalBusClockSpeed", "clock rate of the external bus, in MHz"),
    number("GPUChipMaxClockSpeed", "highest clock rate, in MHz"),
    number("GPUChipAddressWidth", "width of an address, in bits"),
    number("GPUChipDataWidth", "width of the data, in bits"),
};

constexpr Column kVpds[] = {
    number("HardwareId", "function key of a PCI function, `Disks._id` of a disk", Index::Plain),
    number("HardwareTypeId", "2 disk, 3 PCI function"),
    number("Location", kPlace),
    number("SlotNo", kSlot, Index::Plain),
    text("UUID", "32 hexadecimal digits"),
    text("ProductName", "name of the product"),
    text("Manufacture", "manufacturer"),
    text("SerialNo", "serial number"),
    text("PartNo", "part number"),
    text("Model", "model"),
    text("FRUNo", "FRU number, for a replacement"),
    text("L2PartNo", "part number of a disk for updates"),
    text("SupplierSN", "supplier's serial number"),
};

constexpr Table kTables[] = {
    {"PCIAdapter",
     kPciAdapter,
     {"The adapters that the management services show: one row per function, one adapter per `PCIKey`.",
      "the controller's adapter agent; `zeldb_merge_aim_ucm_pfa` (rows with `AIMSupported` 0 and 3), "
      "`zeldb_set_adapter_health_status` (`HealthStatus`), `zeldb_insert_or_update_vpd_info` "
      "(`CardName`)",
      "`zeldb_get_pci_adapter_list`, `zeldb_get_pci_funkey_list`, `zeldb_get_pci_function_oob_type`, "
      "`zeldb_get_pci_cardname_by_funkey`, `zeldb_get_adapter_health_status`, "
      "`zeldb_get_adapter_pcikey_by_slotNo`, `zeldb_set_pci_seg_bits`, `zeldb_merge_aim_ucm_pfa`"}},
    {"PCIs",
     kPcis,
     {"Every PCI function that was found. Writers that follow the samples make `_id` the function's key.",
      kDiscovery,
      "`zeldb_get_pci_keys`, the `zeldb_get_pci_funkey_list` functions, `zeldb_get_pci_generic_info` "
      "and its lists, `zeldb_get_pci_function_type`, `zeldb_get_pci_id_by_funkey`, "
      "`zeldb_get_pci_hardwareidtype_by_funkey`, `zeldb_get_pci_gpu_list`, `zeldb_get_pci_misc_info`, "
      "`zeldb_get_pci_adapter_list`, `zeldb_get_pldm_firmware`, the lists of drives, "
      "`zeldb_get_ctrl_slot`, `zeldb_get_nvme_drv_funkey`, `zeldb_get_marvell_ctrl_slots`, "
      "`zeldb_vroc_enabled`, `zeldb_get_vmd_count`, `zeldb_merge_aim_ucm_pfa`, and functions that build on "
      "these"}},
    {"PCIMisc", kPciMisc, {"Packaging of functions.", kAdapterAgent, "`zeldb_get_pci_misc_info`"}},
    {"NCSIPackageID",
     kNcsiPackageId,
     {"The NC-SI packages that answer for a slot.", "`zeldb_set_ncsi_id_by_slotNo`",
      "`zeldb_get_ncsi_id_list`, `zeldb_get_ncsi_id_by_slotNo`, `zeldb_get_pci_adapter_list`"}},
    {"PCINetwork",
     kPciNetwork,
     {"Numbers of ports of functions. A function may have several rows; their numbers add up.", kAdapterAgent,
      "`zeldb_get_network_info`, `zeldb_get_network_physical_port_list`, "
      "`zeldb_get_all_network_physical_port_list`"}},
    {"PCILogicalPort",
     kPciLogicalPort,
     {"Logical ports: the ports that an operating system sees of a physical one.", kAdapterAgent,
      "`zeldb_get_network_logical_port_list`, `zeldb_get_network_logical_port_list2`, "
      "`zeldb_get_all_network_logical_port_list`"}},
    // No index may reorder the rows of a function.
    {"PCIPhysicalPort",
     kPciPhysicalPort,
     {"Physical ports. Their rows and those of `PCIPhysicalPortStat` are paired by their position.",
      kAdapterAgent, "`zeldb_get_network_physical_port_list`, `zeldb_get_all_network_physical_port_list`"}},
    {"PCIPhysicalPortStat",
     kPciPhysicalPortStat,
     {"The state of links.",
      "the controller's adapter agent; `zeldb_set_network_physical_port_link_state` (of a row that is there)",
      "`zeldb_get_network_physical_port_link_state`, `zeldb_get_network_physical_port_list`, "
      "`zeldb_get_all_network_physical_port_list`"}},
    {"PCIGPU", kPciGpu, {"The memory of graphics cards.", kAdapterAgent, "`zeldb_get_gpu_device_info`"}},
    {"PCIGPUChip", kPciGpuChip, {"The chips of graphics cards.", kAdapterAgent, "`zeldb_get_gpu_chip_list`"}},
    {"VPDs",
     kVpds,
     {"Vital product data of functions and disks. A controller may keep that of its drives in a table "
      "of its own, `DiskHardwareInfo`, with columns `InterfaceTypeId` (5: a drive), `SerialNo` and "
      "`SupplierSN`; the lists of drives then look there.",
      "`zeldb_insert_or_update_vpd_info`; `zeldb_get_pci_vpd_info`, which completes missing texts "
      "from the property store; the controller's inventory of disks",
      "`zeldb_get_pci_vpd_info`, `zeldb_get_pldm_downstream_software_ids` (`L2PartNo`), the lists of "
      "drives (`SerialNo`, `SupplierSN`)"}},
};

}  // namespace

std::span<const Table> pci_tables() {
  return kTables;
}

}  // namespace zel_db
