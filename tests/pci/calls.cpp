// SPDX-License-Identifier: Apache-2.0
//
// The functions that the transcripts call.
#include <map>
#include <string>

#include "tests/support/transcript.h"
#include "zeldb/pci.h"

namespace zeldb_test {

ZELDB_RECORD(_ZELDB_PCI_Generic_Info, _id, BridgeId, SegNo, BusNo, DeviceNo, FunctionNo, VendorId, DeviceId,
             ClsCode, RevId, SubVendorId, SubDeviceId, SlotNo, Location, SlotDesignation, SlotType,
             SlotDataBusWidth, Hotplug, PCIType, BladeSlotPort, NodeIndex, FunType, LanesInUse, MaxLanes,
             MaxPCIeType, PCIeType, DevKey);
ZELDB_RECORD(_ZELDB_PCI_Misc_Info, FoDUid, MaxDataWidth, ConnectorLayout, ConnectorLayoutText, PackageType,
             PackageTypeText, OtherPackageType, AIMSpecVersion);
ZELDB_RECORD(_ZELDB_PCI_Adapter, PCIKey, NodeNo, SlotNo, SegNo, BusNo, DeviceNo, ConnectorType,
             ConnectorTypeText, CardName, AIMSupported, Location, HealthStatus, NCSIPresent, PackageID1,
             PackageID2);
ZELDB_RECORD(_ZELDB_NCSI_Id, SlotNo, Location, PackageID1, PackageID2);
ZELDB_RECORD(_ZELDB_Network_Info, NumberofPhysicalPorts, MaxNumberofLogicalPorts);
ZELDB_RECORD(_ZELDB_LogicalPort, MaxDataSize, PermanentAddress, NetworkAddresses, PhyIdx, Idx, LinkTechnology,
             LinkTechnologyText, vNICMode, vNICModeText, MaxSpeed, ProtocolType, ProtocolTypeText, Ethernet,
             FCoEFC, iSCSI, FCoEPermanentAddress, FCoENetworkAddressess, ConnectionType, ConnectionTypeText,
             Role, RoleText, TargetRelativePortNumber);
ZELDB_RECORD(_ZELDB_PhysicalPort, Idx, ConnectorLayout, ConnectorLayoutText, NumberofLogicalPorts,
             PermanentAddress, LinkStatus, LinkSpeed, TxUtil, RxUtil);
ZELDB_RECORD(_ZELDB_PhysicalPort_LinkState, LinkStatus, LinkSpeed, TxUtil, RxUtil, Idx);
ZELDB_RECORD(_ZELDB_HC_Card, VendorId, DeviceId, SubVendorId, SubDeviceId, CardName, SecondaryText,
             ManufacturerName, Rating);
ZELDB_RECORD(_ZELDB_PCI_GPU, FunType, FunKey, DevKey, VendorId, DeviceId, SubVendorId, SubDeviceId);
ZELDB_RECORD(_ZELDB_GPU_Device_Info, VideoMemoryType, VideoMemoryTypeText, VideoMemorySize,
             TotalGPUChipNumber);
ZELDB_RECORD(_ZELDB_GPU_Chip, GPUChipName, GPUChipManufacturer, GPUChipModel, GPUChipPartNumber, GPUChipSKU,
             GPUChipSerialNumber, GPUChipFamily, GPUChipUniqueID, GPUChipFormFactor, GPUChipFormFactorText,
             GPUChipIndex, GPUChipNumberOfEnabledCores, ExternalBusClockSpeed, GPUChipMaxClockSpeed,
             GPUChipAddressWidth, GPUChipDataWidth);
ZELDB_RECORD(_ZELDB_PCIVpdInfo, UUID, ProductName, Manufacture, SerialNo, PartNo, Model, FRUNo);

namespace {

// The place in the table, and the card.
int find_card(unsigned vendor, unsigned device, unsigned subVendor, unsigned subDevice, _ZELDB_HC_Card* out) {
  const _ZELDB_HC_Card* const card = zeldb_find_hc_card(vendor, device, subVendor, subDevice);
  if (card != nullptr) *out = *card;
  return card != nullptr ? static_cast<int>(card - hc_card_table) : -1;
}

int gpu_property(const char* base, const char* item, unsigned slot, Buffer* out) {
  return get_gpu_pci_vpd_info(base, item, slot, out != nullptr ? *out : nullptr);
}

unsigned missing_vpd(_ZELDB_PCIVpdInfo* record, unsigned slot) {
  const Side ours(false);
  std::map<std::string, std::string> changes;
  under_test([&] { set_missing_gpu_vpd_info(record, slot, changes); });
  return static_cast<unsigned>(changes.size());
}

void set_is_amd(uint8_t known) {
  is_amd_platform = known;
}

}  // namespace

#define F(function) ZELDB_CALL(function)
const Family kFamily = {
    ZELDB_TRANSCRIPTS,
    calls(F(zeldb_get_pci_keys), F(zeldb_get_pci_funkey_list_by_filter), F(zeldb_get_pci_funkey_list_by_slot),
          F(zeldb_get_pci_funkey_list), F(zeldb_get_pci_function_oob_type), F(zeldb_get_pci_function_type),
          F(zeldb_get_pci_hardwareidtype_by_funkey), F(zeldb_get_pci_id_by_funkey),
          call("card_name", into_buffer<zeldb_get_pci_cardname_by_funkey, unsigned, int>),
          F(zeldb_get_pci_generic_info), F(zeldb_get_pci_generic_info_list),
          F(zeldb_get_aic_drive_pci_info_list), F(zeldb_get_pci_misc_info), F(zeldb_get_pci_adapter_list),
          F(zeldb_get_ncsi_id_list), F(zeldb_get_network_info), F(zeldb_get_network_logical_port_list),
          F(zeldb_get_network_logical_port_list2), F(zeldb_get_all_network_logical_port_list),
          F(zeldb_get_network_physical_port_list), F(zeldb_get_all_network_physical_port_list),
          F(zeldb_get_network_physical_port_link_state), F(zeldb_set_network_physical_port_link_state),
          F(zeldb_get_pci_gpu_list), F(zeldb_get_gpu_device_info), F(zeldb_get_gpu_chip_list),
          F(zeldb_get_pci_vpd_info), F(gpu_property), F(missing_vpd), F(zeldb_get_adapter_health_status),
          F(zeldb_set_adapter_health_status), F(zeldb_get_adapter_pcikey_by_slotNo),
          F(zeldb_get_ncsi_id_by_slotNo), F(zeldb_set_ncsi_id_by_slotNo), F(set_is_amd), F(zeldb_is_amd),
          F(zeldb_get_pci_seg_bits), F(zeldb_set_pci_seg_bits), F(zeldb_get_hc_card_count), F(find_card))};

}  // namespace zeldb_test
