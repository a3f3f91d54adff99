/* SPDX-License-Identifier: Apache-2.0
 *
 * PCI inventory: which functions and adapters exist, and what they are.
 *
 * A function key identifies one PCI function, a PCI key one adapter (location times 65536 plus slot number);
 * both are opaque 32-bit numbers of the tables PCIs and PCIAdapter. Location 0 is the system board, 1 an
 * add-in slot.
 *
 * Lists: the caller owns the list record, the function allocates the array that Items points to, the caller
 * releases it with free(). Count and Items are zeroed first and set only on success, unless a function says
 * otherwise; a function that returns ZELDB_NO_HANDLE leaves them as they were, so a list should start zeroed.
 * A list without entries is a success.
 *
 * Functions return 0 for success; ZELDB_NO_HANDLE when the inventory database cannot be reached, which is
 * looked at before the arguments; ZELDB_INVALID_ARGUMENT for a null pointer; ZEL_DB_STATUS_NO_MEMORY;
 * ZELDB_NO_MORE_ROWS when a single record is not found, which leaves the outputs untouched; or a status of
 * the table-access library. They log nothing, unless a function says so, and may be called from several
 * threads at once.
 */
#ifndef ZELDB_PCI_H
#define ZELDB_PCI_H

#include "zeldb/export.h"
#include "zeldb/status.h"

// NOLINTBEGIN(bugprone-reserved-identifier,modernize-use-using): fixed names of the interface, C header
typedef struct _ZELDB_PCI_FunKey_List {
  uint32_t Count;
  uint32_t* Items;
} _ZELDB_PCI_FunKey_List;

/* One PCI function: where it is, what it is, and its slot and link. */
typedef struct _ZELDB_PCI_Generic_Info {
  uint32_t _id; /* of the row in PCIs; the function's key where writers follow the samples */
  uint32_t BridgeId;
  uint8_t SegNo;
  uint8_t BusNo;
  uint8_t DeviceNo;
  uint8_t FunctionNo;
  uint16_t VendorId;
  uint16_t DeviceId;
  uint32_t ClsCode; /* base class, subclass, programming interface; 24 bits */
  uint8_t RevId;
  uint16_t SubVendorId;
  uint16_t SubDeviceId;
  uint16_t SlotNo;
  uint8_t Location; /* 0 on the system board, 1 in a slot */
  char SlotDesignation[65];
  uint8_t SlotType;
  uint8_t SlotDataBusWidth;
  uint8_t Hotplug;
  uint8_t PCIType;
  uint8_t BladeSlotPort;
  uint8_t NodeIndex;
  uint32_t FunType;
  uint8_t LanesInUse;  /* 4 when it cannot be read */
  uint8_t MaxLanes;    /* 16 when it cannot be read */
  uint8_t MaxPCIeType; /* 4 when it cannot be read */
  uint8_t PCIeType;    /* 3 when it cannot be read */
  uint32_t DevKey;     /* the adapter's PCI key; not filled in lists */
} _ZELDB_PCI_Generic_Info;

typedef struct _ZELDB_PCI_Generic_Info_List {
  uint32_t Count;
  _ZELDB_PCI_Generic_Info* Items;
} _ZELDB_PCI_Generic_Info_List;

/* How one function is packaged. */
typedef struct _ZELDB_PCI_Misc_Info {
  char FoDUid[33];
  uint16_t MaxDataWidth;
  uint16_t ConnectorLayout;
  uint16_t PackageType;
  char ConnectorLayoutText[65];
  char PackageTypeText[65];
  char OtherPackageType[65];
  char AIMSpecVersion[9];
} _ZELDB_PCI_Misc_Info;

/* One adapter, from a row of one of its functions in PCIAdapter. */
typedef struct _ZELDB_PCI_Adapter {
  uint32_t PCIKey; /* never 0 */
  uint16_t NodeNo;
  uint16_t SlotNo;
  uint16_t SegNo;
  uint16_t BusNo;
  uint16_t DeviceNo;
  uint16_t
      ConnectorType; /* a connector layout code where AIMSupported is 1 or Location 0, else a slot type */
  char ConnectorTypeText[65]; /* of either */
  char CardName[129];
  uint8_t AIMSupported;
  uint8_t Location; /* 0 on the system board, 1 in a slot */
  uint8_t HealthStatus;
  uint8_t NCSIPresent; /* 1 when the slot has NC-SI package ids */
  uint8_t PackageID1;  /* 0xFF without */
  uint8_t PackageID2;  /* 0xFF without */
} _ZELDB_PCI_Adapter;

typedef struct _ZELDB_PCI_Adapter_List {
  uint32_t Count;
  _ZELDB_PCI_Adapter* Items;
} _ZELDB_PCI_Adapter_List;

/* The NC-SI package ids of one slot. */
typedef struct _ZELDB_NCSI_Id {
  uint16_t SlotNo;
  uint8_t Location;
  uint8_t Reserved;
  uint8_t PackageID1;
  uint8_t PackageID2;
} _ZELDB_NCSI_Id;

typedef struct _ZELDB_NCSI_Id_List {
  uint8_t Count; /* wraps beyond 255 */
  _ZELDB_NCSI_Id* Items;
} _ZELDB_NCSI_Id_List;

typedef struct _ZELDB_Network_Info {
  uint8_t NumberofPhysicalPorts;
  uint16_t MaxNumberofLogicalPorts;
} _ZELDB_Network_Info;

typedef struct _ZELDB_LogicalPort {
  uint32_t MaxDataSize;
  char PermanentAddress[65];
  char NetworkAddresses[65];
  uint16_t PhyIdx; /* of the physical port it belongs to */
  uint16_t Idx;    /* its own */
  uint16_t LinkTechnology;
  uint8_t vNICMode; /* 4 when it cannot be read */
  uint64_t MaxSpeed;
  uint16_t ProtocolType; /* an IANA interface type */
  uint8_t Ethernet;
  uint8_t FCoEFC;
  uint8_t iSCSI;
  char FCoEPermanentAddress[17];
  char FCoENetworkAddressess[17];
  uint16_t ConnectionType;
  uint16_t Role;
  uint32_t TargetRelativePortNumber;
  char LinkTechnologyText[65];
  char vNICModeText[65];
  char ProtocolTypeText[65]; /* "Other" for a code without a text */
  char ConnectionTypeText[65];
  char RoleText[65];
} _ZELDB_LogicalPort;

typedef struct _ZELDB_LogicalPort_List {
  uint32_t Count;
  _ZELDB_LogicalPort* Items;
} _ZELDB_LogicalPort_List;

typedef struct _ZELDB_PhysicalPort {
  uint16_t ConnectorLayout;
  uint16_t Idx;
  uint16_t NumberofLogicalPorts;
  char PermanentAddress[65];
  char ConnectorLayoutText[65];
  uint32_t LinkStatus;
  uint32_t LinkSpeed;
  uint32_t TxUtil;
  uint32_t RxUtil;
} _ZELDB_PhysicalPort;

typedef struct _ZELDB_PhysicalPort_List {
  uint32_t Count;
  _ZELDB_PhysicalPort* Items;
} _ZELDB_PhysicalPort_List;

typedef struct _ZELDB_PhysicalPort_LinkState {
  uint32_t LinkStatus;
  uint32_t LinkSpeed;
  uint32_t TxUtil;
  uint32_t RxUtil;
  uint16_t Idx;
} _ZELDB_PhysicalPort_LinkState;

/* A known card. Texts are padded with NULs to their fields' ends. */
typedef struct _ZELDB_HC_Card {
  uint16_t VendorId;
  uint16_t DeviceId;
  uint16_t SubVendorId;
  uint16_t SubDeviceId;
  char CardName[128];
  char SecondaryText[24];
  char ManufacturerName[64];
  uint16_t Rating; /* board power in watts; 0 where it is not known */
} _ZELDB_HC_Card;

typedef struct _ZELDB_PCI_GPU {
  uint32_t FunType;
  uint32_t FunKey;
  uint32_t DevKey;
  uint16_t VendorId;
  uint16_t DeviceId;
  uint16_t SubVendorId;
  uint16_t SubDeviceId;
} _ZELDB_PCI_GPU;

typedef struct _ZELDB_PCI_GPU_List {
  uint32_t Count; /* at most 255: it wraps */
  _ZELDB_PCI_GPU* Items;
} _ZELDB_PCI_GPU_List;

typedef struct _ZELDB_GPU_Device_Info {
  uint8_t VideoMemoryType;
  char VideoMemoryTypeText[65];
  char VideoMemorySize[17];
  uint8_t TotalGPUChipNumber;
} _ZELDB_GPU_Device_Info;

typedef struct _ZELDB_GPU_Chip {
  char GPUChipName[33];
  char GPUChipManufacturer[17];
  char GPUChipModel[17];
  char GPUChipPartNumber[17];
  char GPUChipSKU[17];
  char GPUChipSerialNumber[17];
  char GPUChipFamily[33];
  char GPUChipUniqueID[17];
  char GPUChipFormFactorText[65];
  uint8_t GPUChipFormFactor;
  uint8_t GPUChipIndex;
  uint8_t GPUChipNumberOfEnabledCores;
  uint32_t ExternalBusClockSpeed;
  uint32_t GPUChipMaxClockSpeed;
  uint16_t GPUChipAddressWidth;
  uint16_t GPUChipDataWidth;
} _ZELDB_GPU_Chip;

typedef struct _ZELDB_GPU_Chip_List {
  uint32_t Count;
  _ZELDB_GPU_Chip* Items;
} _ZELDB_GPU_Chip_List;

/* The vital product data of one function. */
typedef struct _ZELDB_PCIVpdInfo {
  char UUID[33];
  char ProductName[129];
  char Manufacture[33];
  char SerialNo[17];
  char PartNo[17];
  char Model[193];
  char FRUNo[17];
} _ZELDB_PCIVpdInfo;
// NOLINTEND(bugprone-reserved-identifier,modernize-use-using)
ZELDB_LAYOUT_32BIT(_ZELDB_PCI_FunKey_List, 8);
ZELDB_LAYOUT(_ZELDB_PCI_Generic_Info, 112);
ZELDB_OFFSET(_ZELDB_PCI_Generic_Info, SlotDesignation, 29);
ZELDB_OFFSET(_ZELDB_PCI_Generic_Info, FunType, 100);
ZELDB_OFFSET(_ZELDB_PCI_Generic_Info, DevKey, 108);
ZELDB_LAYOUT_32BIT(_ZELDB_PCI_Generic_Info_List, 8);
ZELDB_LAYOUT(_ZELDB_PCI_Misc_Info, 244);
ZELDB_LAYOUT(_ZELDB_PCI_Adapter, 216);
ZELDB_OFFSET(_ZELDB_PCI_Adapter, CardName, 81);
ZELDB_LAYOUT_32BIT(_ZELDB_PCI_Adapter_List, 8);
ZELDB_LAYOUT(_ZELDB_NCSI_Id, 6);
ZELDB_LAYOUT_32BIT(_ZELDB_NCSI_Id_List, 8);
ZELDB_LAYOUT(_ZELDB_Network_Info, 4);
ZELDB_LAYOUT(_ZELDB_LogicalPort, 528);
ZELDB_OFFSET(_ZELDB_LogicalPort, MaxSpeed, 144);
ZELDB_OFFSET(_ZELDB_LogicalPort, LinkTechnologyText, 200);
ZELDB_LAYOUT_32BIT(_ZELDB_LogicalPort_List, 8);
ZELDB_LAYOUT(_ZELDB_PhysicalPort, 152);
ZELDB_LAYOUT_32BIT(_ZELDB_PhysicalPort_List, 8);
ZELDB_LAYOUT(_ZELDB_PhysicalPort_LinkState, 20);
ZELDB_LAYOUT(_ZELDB_HC_Card, 226);
ZELDB_OFFSET(_ZELDB_HC_Card, SecondaryText, 136);
ZELDB_OFFSET(_ZELDB_HC_Card, ManufacturerName, 160);
ZELDB_OFFSET(_ZELDB_HC_Card, Rating, 224);
ZELDB_LAYOUT(_ZELDB_PCI_GPU, 20);
ZELDB_LAYOUT_32BIT(_ZELDB_PCI_GPU_List, 8);
ZELDB_LAYOUT(_ZELDB_GPU_Device_Info, 84);
ZELDB_LAYOUT(_ZELDB_GPU_Chip, 248);
ZELDB_OFFSET(_ZELDB_GPU_Chip, GPUChipFormFactor, 233);
ZELDB_LAYOUT_32BIT(_ZELDB_GPU_Chip_List, 8);
ZELDB_LAYOUT(_ZELDB_PCIVpdInfo, 439);

enum { ZELDB_HC_CARD_COUNT = 61, ZELDB_GPU_PROPERTY_SIZE = 256 };

ZELDB_BEGIN_DECLS

/* The distinct PCI keys (DevKey) of the functions in PCIs that filter selects; null selects all. filter is an
 * SQL condition of at most 112 characters; a longer one is cut. A key that cannot be read is 0 and counted.
 * A null list is ZELDB_INVALID_ARGUMENT even without a database. Only Count is zeroed first: without entries,
 * or when the query fails, Items stays as it was. When memory is short the result is 0 with Count 0 and Items
 * null. */
ZELDB_API int zeldb_get_pci_keys(_ZELDB_PCI_FunKey_List* list, char* filter);

/* The function keys of one slot, ascending. */
ZELDB_API int zeldb_get_pci_funkey_list_by_slot(int location, int slotNo, _ZELDB_PCI_FunKey_List* list);

/* The function keys of one adapter, from PCIAdapter when its AIMSupported is 1 to 3; otherwise its first
 * function, if PCIs has it too. PCI key 0 stands for every adapter that has an Intel RAID controller (vendor
 * 0x8086, class 0x010400) in a slot other than 0. ZELDB_NO_MORE_ROWS when the adapter has no row, or for key
 * 0 when there is no such adapter. A first row of which the key or AIMSupported cannot be read fails the call
 * with the status of that read; later keys that cannot be read are left out. */
ZELDB_API int zeldb_get_pci_funkey_list(int pciKey, _ZELDB_PCI_FunKey_List* list);

/* How the adapter inventory knows a function: AIMSupported 0 known without settings, 1 to 3 supported; OOBSrc
 * the source of its out-of-band data. Either output may be null, not both; they are zeroed before the query.
 * A value that cannot be read gives the status of that read; with both outputs, that of OOBSrc alone. */
ZELDB_API int zeldb_get_pci_function_oob_type(unsigned int funKey, unsigned int* aimSupported,
                                              unsigned int* oobSrc);

/* The function's type (FunType). The output is 24 when it cannot be found or read. */
ZELDB_API int zeldb_get_pci_function_type(unsigned int funKey, unsigned int* type);

/* The PCI ids of a function. Returns 0 and leaves the outputs untouched when the function is unknown. */
ZELDB_API int zeldb_get_pci_id_by_funkey(int funKey, uint16_t* vendor, uint16_t* device, uint16_t* subVendor,
                                         uint16_t* subDevice);

/* The function's card name, cut to size - 1 bytes. A size below 1 is ZELDB_INVALID_ARGUMENT; a name that
 * cannot be read gives the status of that read and an empty text. */
ZELDB_API int zeldb_get_pci_cardname_by_funkey(unsigned int funKey, char* buffer, int size);

/* The data of one function. */
ZELDB_API int zeldb_get_pci_generic_info(unsigned int funKey, _ZELDB_PCI_Generic_Info* record);

/* The functions that filter, an SQL condition, selects; null selects all. The list is not zeroed first: a
 * failed query leaves it as it was, and without entries only Count is set. Rows read before a failure are a
 * success. Slot designations are cut to 63 characters. */
ZELDB_API int zeldb_get_pci_generic_info_list(_ZELDB_PCI_Generic_Info_List* list, char* filter);

/* The NVMe controllers (class 0x010802) of known drive vendors that sit in slots; as
 * zeldb_get_pci_generic_info_list. */
ZELDB_API int zeldb_get_aic_drive_pci_info_list(_ZELDB_PCI_Generic_Info_List* list);

/* The packaging of one function. A connector layout that is not recorded is derived from the function's
 * location. */
ZELDB_API int zeldb_get_pci_misc_info(unsigned int funKey, _ZELDB_PCI_Misc_Info* record);

/* All adapters, over a connection of its own: a null list is
 * ZELDB_INVALID_ARGUMENT only when that could be opened. Adapters with a column that cannot be read are left
 * out (a connector type that is NULL counts as 0), and so are those with PCI key 0 or "Hot Swap SSD" in the
 * card name. */
ZELDB_API int zeldb_get_pci_adapter_list(_ZELDB_PCI_Adapter_List* list);

/* The NC-SI package ids of all slots; rows with a column that cannot be read are left out. A failed query
 * leaves the list as it was. */
ZELDB_API int zeldb_get_ncsi_id_list(_ZELDB_NCSI_Id_List* list);

/* How many ports a function has; an unknown function has none. */
ZELDB_API int zeldb_get_network_info(unsigned int funKey, _ZELDB_Network_Info* info);

/* The logical ports of a function, of one of its physical ports (255 stands for any), or of an adapter. Ports
 * whose permanent address cannot be read or has fewer than 12 characters are left out; when none is left,
 * ZELDB_NO_MORE_ROWS. */
ZELDB_API int zeldb_get_network_logical_port_list(unsigned int funKey, _ZELDB_LogicalPort_List* list);
ZELDB_API int zeldb_get_network_logical_port_list2(unsigned int funKey, int phyIdx,
                                                   _ZELDB_LogicalPort_List* list);
ZELDB_API int zeldb_get_all_network_logical_port_list(unsigned int pciKey, _ZELDB_LogicalPort_List* list);

/* The physical ports of a function or of an adapter, as many as its functions announce in PCINetwork at most.
 * Statistics are paired with ports by their places. ZELDB_NO_MATCH when no port is announced. */
ZELDB_API int zeldb_get_network_physical_port_list(unsigned int funKey, _ZELDB_PhysicalPort_List* list);
ZELDB_API int zeldb_get_all_network_physical_port_list(unsigned int pciKey, _ZELDB_PhysicalPort_List* list);

/* The link state of a function's port by its index; -1 stands for the only port. ZELDB_NO_MATCH when there is
 * no such port, or with -1 not exactly one. Each port passed over is logged as an error, and so is -1 without
 * exactly one port. */
ZELDB_API int zeldb_get_network_physical_port_link_state(unsigned int funKey,
                                                         _ZELDB_PhysicalPort_LinkState* state, int portIndex);

/* Writes the link state (its index aside) of a port that zeldb_get_network_physical_port_link_state finds;
 * otherwise returns its status and writes nothing. A refused update is logged. */
ZELDB_API int zeldb_set_network_physical_port_link_state(unsigned int funKey,
                                                         _ZELDB_PhysicalPort_LinkState* state, int portIndex);

/* Health of the adapter in a slot. A null output is ZELDB_INVALID_ARGUMENT even without a database;
 * ZELDB_NO_MATCH when the slot has no adapter. */
ZELDB_API int zeldb_get_adapter_health_status(int location, int slotNo, unsigned char* status);
/* A slot without adapter stays without, which is a success. A failure is logged. */
ZELDB_API int zeldb_set_adapter_health_status(int location, int slotNo, unsigned int status);

/* The PCI key of the adapter in a slot. Every failure is ZELDB_NO_HANDLE, but a key that cannot be read. */
ZELDB_API int zeldb_get_adapter_pcikey_by_slotNo(int location, int slotNo, uint32_t* pciKey);

/* The NC-SI package ids of a slot; an id that cannot be read leaves its output untouched. Every failure is
 * ZELDB_NO_HANDLE. */
ZELDB_API int zeldb_get_ncsi_id_by_slotNo(int location, int slotNo, unsigned char* id1, unsigned char* id2);
/* Updates the ids of a slot, or records the slot with its type. A failure is logged. */
ZELDB_API int zeldb_set_ncsi_id_by_slotNo(int location, int slotNo, unsigned char type, unsigned char id1,
                                          unsigned char id2);

/* 1 on a platform with AMD processors, 0 on others, 0xFF while it is not determined. */
extern ZELDB_API unsigned char is_amd_platform;
/* is_amd_platform, determined on the first call. */
ZELDB_API unsigned char zeldb_is_amd(void);

/* The number of bits of a PCI segment number that the platform uses, 0 to 3: 0 on AMD platforms; else the
 * value that zeldb_set_pci_seg_bits stored; else, if probe is not 0, the processor's answer over PECI, or
 * 0xFF without one (after three attempts of a second each); else 0. A missing value or answer is noted in
 * syslog. */
ZELDB_API unsigned char zeldb_get_pci_seg_bits(int probe);
/* Determines the segment bits over PECI, or else from the segments in PCIAdapter, stores them in the
 * configuration of the adapter inventory and returns them. On AMD platforms 0, and nothing is stored. Noted
 * in syslog. */
ZELDB_API unsigned char zeldb_set_pci_seg_bits(void);

extern ZELDB_API const _ZELDB_HC_Card hc_card_table[ZELDB_HC_CARD_COUNT];

ZELDB_API int zeldb_get_hc_card_count(void);

/* The known card with these PCI ids, of which the low 16 bits are compared, or null. */
ZELDB_API const _ZELDB_HC_Card* zeldb_find_hc_card(unsigned int vendor, unsigned int device,
                                                   unsigned int subVendor, unsigned int subDevice);

/* The GPU and accelerator functions (FunType 4 and 16) that sit in slots. Places and count are kept in one
 * byte: beyond 255 functions they wrap, and the first ones are overwritten. */
ZELDB_API int zeldb_get_pci_gpu_list(_ZELDB_PCI_GPU_List* list);

ZELDB_API int zeldb_get_gpu_device_info(unsigned int funKey, _ZELDB_GPU_Device_Info* record);

ZELDB_API int zeldb_get_gpu_chip_list(unsigned int funKey, _ZELDB_GPU_Chip_List* list);

/* The vital product data of a function. Texts that are missing or "N/A" are completed from the property
 * store, and what was completed is written back to every row of VPDs with that slot number.
 * A write-back that the database refuses is logged and still a success. After 33 failures in a row, which a
 * few functions without data in the store use up, a process asks it no more, not for a GPU either: see
 * get_gpu_pci_vpd_info. ZELDB_INVALID_ARGUMENT when the function's hardware id cannot be found. */
ZELDB_API int zeldb_get_pci_vpd_info(unsigned int funKey, _ZELDB_PCIVpdInfo* record);

ZELDB_END_DECLS

#ifdef __cplusplus

#include <map>
#include <string>

/* The function keys in PCIs that filter selects, in the order that orderBy (may be null) gives; keys that
 * cannot be read are left out. A null filter is ZELDB_NO_HANDLE. */
ZELDB_API int zeldb_get_pci_funkey_list_by_filter(char* filter, char* orderBy, _ZELDB_PCI_FunKey_List* list);

/* The hardware id and hardware type id of a function, each 0 where it cannot be read. */
ZELDB_API int zeldb_get_pci_hardwareidtype_by_funkey(unsigned int funKey, unsigned int* hardwareId,
                                                     unsigned char* hardwareTypeId);

/* Completes the record's missing texts ("" or "N/A") from the property store. Each column that was completed
 * is set in changes; other entries stay. */
ZELDB_API void set_missing_gpu_vpd_info(_ZELDB_PCIVpdInfo* record, unsigned int slotNo,
                                        std::map<std::string, std::string>& changes);

/* The text of the property BASE/SLOT/ITEM, into ZELDB_GPU_PROPERTY_SIZE bytes at out. 0 when it was found; -1
 * for a null argument, or when the store is not asked any more after 33 failures in a row (a success in
 * between starts the count again); -2 when it was not found. out stays untouched unless it was. */
ZELDB_API int get_gpu_pci_vpd_info(const char* base, const char* item, unsigned int slotNo, char* out);

#endif
#endif
