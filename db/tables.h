// SPDX-License-Identifier: Apache-2.0
//
// The tables that the families read and write.
#ifndef DB_TABLES_H
#define DB_TABLES_H

namespace zeldb::tables {

inline constexpr const char* kFunctions = "PCIs";
inline constexpr const char* kAdapters = "PCIAdapter";
inline constexpr const char* kPackaging = "PCIMisc";
inline constexpr const char* kNcsiIds = "NCSIPackageID";
inline constexpr const char* kNetwork = "PCINetwork";
inline constexpr const char* kLogicalPorts = "PCILogicalPort";
inline constexpr const char* kPhysicalPorts = "PCIPhysicalPort";
inline constexpr const char* kPortStatistics = "PCIPhysicalPortStat";
inline constexpr const char* kGpus = "PCIGPU";
inline constexpr const char* kGpuChips = "PCIGPUChip";
inline constexpr const char* kSettings = "PCISetting";

inline constexpr const char* kVpds = "VPDs";
inline constexpr const char* kImages = "Firmwares";
inline constexpr const char* kComponents = "PldmDeviceFirmware";
inline constexpr const char* kEmbeddedDevices = "EmbeddedDeviceFirmware";
inline constexpr const char* kDpuEvents = "DPUEvents";

inline constexpr const char* kProcessors = "Processor";
inline constexpr const char* kModules = "Memory";

inline constexpr const char* kDisks = "AimDisks";
inline constexpr const char* kNvmeDrives = "NVMeDrives";
inline constexpr const char* kDiskHardware = "DiskHardwareInfo";
inline constexpr const char* kSensors = "SensorSlotMap";

inline constexpr const char* kProperties = "propertiesDCTbl";

}  // namespace zeldb::tables

#endif
