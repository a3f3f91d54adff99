/* SPDX-License-Identifier: Apache-2.0
 *
 * Firmware inventory: PLDM components, firmware of adapters and embedded devices, vital product data, DPUs,
 * and the firmware update of PCIe retimers.
 *
 * PldmDeviceFirmware has one row per component that the update agent found on a device, Firmwares one per
 * image of a piece of hardware (hardware type 2: a disk, 3: a PCI function, whose hardware id is its function
 * key), EmbeddedDeviceFirmware one per device of the controller itself, DPUEvents one per event of a DPU.
 *
 * Records and lists belong to the caller; the array that a function allocates for Items is released with
 * free(). A list should start zeroed: a function that returns ZELDB_NO_HANDLE leaves it as it was. Texts end
 * with a NUL and are cut to their fields; where a record that is only read lacks a NUL, a text ends with its
 * field. A column that is NULL or cannot be read is 0 or an empty text.
 *
 * Functions return 0 for success; ZELDB_NO_HANDLE when the inventory database cannot be reached, which is
 * looked at before the arguments; ZELDB_INVALID_ARGUMENT for a null pointer; ZEL_DB_STATUS_NO_MEMORY; or a
 * status of the table-access library. Where a function says otherwise, that holds.
 *
 * The functions may be called from several threads at once. Nothing is transactional: what was written before
 * a failure stays.
 */
#ifndef ZELDB_FIRMWARE_H
#define ZELDB_FIRMWARE_H

#include <stdalign.h>

#include "zeldb/export.h"
#include "zeldb/pci.h"
#include "zeldb/status.h"

// NOLINTBEGIN(bugprone-reserved-identifier,modernize-use-using): fixed names of the interface, C header
/* One PLDM component. */
typedef struct _ZELDB_PldmFirmware {
  char DeviceName[129];
  uint32_t DeviceType;
  uint32_t PCIKey;
  uint32_t PCIFuncKey;
  uint8_t Location; /* 0 on the system board, 1 in a slot */
  uint16_t SlotNo;
  char Manufacture[33];
  char SoftwareID[9]; /* eight hexadecimal digits */
  char VersionString[33];
  char PendingVersionString[33];
  char PkgVersionString[33];
  char ReleaseDate[17];
  char PendingReleaseDate[17];
  uint8_t UpdateSupport; /* 0: cannot be updated */
  uint8_t Updated;       /* not 0: has been through an update */
  uint16_t UpdateMethod; /* bit 0x40: through the devices behind it */
  uint8_t UpdateAuxInfo;
  uint8_t UpdateErrCode; /* 0: no error */
  char UpdateErrString[129];
  uint32_t Status; /* 2: an update waits for its activation */
} _ZELDB_PldmFirmware;

typedef struct _ZELDB_PldmFirmware_List {
  uint32_t Count;
  _ZELDB_PldmFirmware* Items;
} _ZELDB_PldmFirmware_List;

/* One firmware image of an adapter. */
typedef struct _ZELDB_AdapterFirmware {
  char FirmwareName[33];
  char VersionString[33];
  char Description[129];
  char ReleaseDate[17];
  uint16_t Classification;     /* 1 to 13 as DMTF CIM has them, from 0x8000 on the system's own */
  char ClassificationText[65]; /* not stored */
  char Manufacture[33];
  char SoftwareID[17];
} _ZELDB_AdapterFirmware;

typedef struct _ZELDB_AdapterFirmware_List {
  uint32_t Count;
  _ZELDB_AdapterFirmware* Items;
} _ZELDB_AdapterFirmware_List;

/* The firmware of one embedded device of the controller. */
typedef struct _ZELDB_EmbeddedFirmware {
  char DeviceName[129];
  uint8_t DeviceIndex;
  uint8_t StructRev;
  uint8_t Version;
  char SoftwareID[17];
  uint16_t Class;
  uint8_t Category;
  uint8_t SubCategory;
  uint8_t Checksum;
} _ZELDB_EmbeddedFirmware;

typedef struct _ZELDB_EmbeddedFirmware_List {
  uint32_t Count;
  _ZELDB_EmbeddedFirmware* Items;
} _ZELDB_EmbeddedFirmware_List;

/* One event of a DPU. */
typedef struct _ZELDB_DpuLog {
  uint32_t _id;
  alignas(8) uint64_t Timestamp; /* the low 32 bits are stored */
  char GenID[32];
  char Message[256];
} _ZELDB_DpuLog;

typedef struct _ZELDB_DpuLog_List {
  int32_t Count;
  _ZELDB_DpuLog* Items;
} _ZELDB_DpuLog_List;

/* A retimer update as the update proxy takes it; packed. Its meaning is between the caller and the proxy. */
#pragma pack(push, 1)
typedef struct retimer_fw_req_t {
  uint8_t RequestBlock[128];
  uint32_t FirstValue32;
  uint32_t SecondValue32;
  uint16_t FirstValue16;
  uint16_t SecondValue16;
  uint8_t Reserved; /* sent as 0 */
} retimer_fw_req_t;
#pragma pack(pop)

typedef struct retimer_fw_progress_t {
  uint32_t Stage;
  uint32_t Progress;
} retimer_fw_progress_t;
// NOLINTEND(bugprone-reserved-identifier,modernize-use-using)
ZELDB_LAYOUT(_ZELDB_PldmFirmware, 464);
ZELDB_OFFSET(_ZELDB_PldmFirmware, DeviceType, 132);
ZELDB_OFFSET(_ZELDB_PldmFirmware, SlotNo, 146);
ZELDB_OFFSET(_ZELDB_PldmFirmware, UpdateSupport, 323);
ZELDB_OFFSET(_ZELDB_PldmFirmware, UpdateMethod, 326);
ZELDB_OFFSET(_ZELDB_PldmFirmware, Status, 460);
ZELDB_LAYOUT_32BIT(_ZELDB_PldmFirmware_List, 8);
ZELDB_LAYOUT(_ZELDB_AdapterFirmware, 330);
ZELDB_OFFSET(_ZELDB_AdapterFirmware, Classification, 212);
ZELDB_OFFSET(_ZELDB_AdapterFirmware, SoftwareID, 312);
ZELDB_LAYOUT_32BIT(_ZELDB_AdapterFirmware_List, 8);
ZELDB_LAYOUT(_ZELDB_EmbeddedFirmware, 156);
ZELDB_OFFSET(_ZELDB_EmbeddedFirmware, SoftwareID, 132);
ZELDB_OFFSET(_ZELDB_EmbeddedFirmware, Class, 150);
ZELDB_OFFSET(_ZELDB_EmbeddedFirmware, Checksum, 154);
ZELDB_LAYOUT_32BIT(_ZELDB_EmbeddedFirmware_List, 8);
ZELDB_LAYOUT(_ZELDB_DpuLog, 304);
ZELDB_OFFSET(_ZELDB_DpuLog, Timestamp, 8);
ZELDB_OFFSET(_ZELDB_DpuLog, Message, 48);
ZELDB_LAYOUT_32BIT(_ZELDB_DpuLog_List, 8);
ZELDB_LAYOUT(retimer_fw_req_t, 141);
ZELDB_OFFSET(retimer_fw_req_t, FirstValue32, 128);
ZELDB_OFFSET(retimer_fw_req_t, Reserved, 140);
ZELDB_LAYOUT(retimer_fw_progress_t, 8);

ZELDB_BEGIN_DECLS

/* PLDM components.
 *
 * The lists are zeroed before the query and set only on success; a list without entries is a success, with
 * Items null. Rows come in the database's order. A device name, manufacturer or version that is missing (""
 * or "N/A") is completed from the property store, which keeps these of the GPU in the component's slot, and
 * written back to every component with that slot number; a lookup or write that fails leaves the record as it
 * was read. */

/* All components. */
ZELDB_API int zeldb_get_pldm_firmware_list(_ZELDB_PldmFirmware_List* list);
/* Components that filter, an SQL condition, selects; null selects all. */
ZELDB_API int zeldb_get_filtered_pldm_firmware_list(_ZELDB_PldmFirmware_List* list, const char* filter);
/* Components with an update that waits for its activation. */
ZELDB_API int zeldb_get_pldm_firmware_pending_list(_ZELDB_PldmFirmware_List* list);
/* Components that have been through an update, and of these the ones whose update failed or succeeded. */
ZELDB_API int zeldb_get_pldm_firmware_updated_list(_ZELDB_PldmFirmware_List* list);
ZELDB_API int zeldb_get_pldm_firmware_update_failure_list(_ZELDB_PldmFirmware_List* list);
ZELDB_API int zeldb_get_pldm_firmware_update_success_list(_ZELDB_PldmFirmware_List* list);
/* Components of the system vendor's own storage controllers (PCI vendor 0x1B4B, devices 0x9230 and 0x2241).
 */
ZELDB_API int zeldb_get_pldm_firmware_marvell_ctrl_list(_ZELDB_PldmFirmware_List* list);

/* The component of a slot, or of one device in it when neither bus nor device is negative. Of two components
 * the first that can be updated is taken, or else the first; ZELDB_NO_MATCH when there is none, or more than
 * two. A null record is ZELDB_INVALID_ARGUMENT even without a database. record stays untouched on failure. */
ZELDB_API int zeldb_get_pldm_firmware(int location, int slot, _ZELDB_PldmFirmware* record, int bus,
                                      int device);

/* Records the outcome of an update: the three versions, the two dates and the update fields (from
 * UpdateSupport on) of the components with the record's location, slot and SoftwareID, and with its
 * PCIFuncKey when matchFunction is not 0. Keys from 0x80000000 on are matched by no row. A slot without such
 * a component is a success. location and slot must be the record's, or else ZELDB_INVALID_ARGUMENT. The six
 * texts are terminated in the record itself. A failure is logged. */
ZELDB_API int zeldb_update_pldm_firmware(int location, int slot, _ZELDB_PldmFirmware* record,
                                         int matchFunction);

/* Sets Status to 0 wherever it is 2. A failure is logged. */
ZELDB_API int zeldb_clear_all_pldm_firmware_pending_status(void);

/* Deletes the components of one device type. Without a database ZELDB_INVALID_ARGUMENT. */
ZELDB_API int zeldb_clear_pldm_firmware_by_type(int deviceType);

/* Stores a component that was discovered: a row of its DeviceType, SlotNo and Location is updated when it
 * differs, or else a new row is inserted. Names, keys, place, SoftwareID, VersionString, ReleaseDate and
 * UpdateSupport are written, empty texts are not. A PCIKey of 0 becomes location times 65536 plus slot, in
 * the record too. A row differs when its PCIKey is not that one (for a record with a key of its own: not 0),
 * or its SoftwareID is not the record's, which stands in the condition without quotes: an id that reads as a
 * decimal number, also with leading zeros or an exponent (12E45678), is compared digit by digit; with any
 * other the database refuses to update the row. Returns 0 whether or not the row could be stored, which is
 * logged. */
ZELDB_API int zeldb_insert_or_update_pldm_firmware(uint32_t vendorId, uint32_t deviceId, uint32_t subVendorId,
                                                   uint32_t subDeviceId, _ZELDB_PldmFirmware* record);

/* Firmware of adapters. */

/* Sets the version, or the release date, of all images in Firmwares with this hardware id, of whatever
 * hardware type, and of all PLDM components with this function key. Returns the status of the second write; a
 * failure is logged and does not keep the second from being tried. A text for which the statement has no room
 * (more than about 110 characters) is ZELDB_INVALID_ARGUMENT. */
ZELDB_API int zeldb_update_firmware(uint32_t hardwareId, const char* version);
ZELDB_API int zeldb_update_firmware_release_date(uint32_t hardwareId, const char* releaseDate);

/* The version of the only image with this hardware id, cut to 31 characters; ZELDB_NO_MATCH when there is not
 * exactly one. size must be positive. The rest of the buffer is filled with NULs; a version that fills it is
 * not terminated. buffer stays untouched on failure. */
ZELDB_API int zeldb_get_firmware_version(int hardwareId, char* buffer, int size);

/* Stores the list's images for every function of an adapter, under the function's hardware id and type. An
 * image is known by these, its SoftwareID and its Classification: its release date and version are updated,
 * or else it is inserted, unless onlyUpdate is not 0. adapterKey is a PCI key as zeldb_get_pci_funkey_list
 * takes it, whose failures are returned. A function whose hardware id cannot be found is left out; when it is
 * the adapter's last one, that status is returned. The first write that fails ends the call with its status.
 * Inserts, omissions and failures are logged. All texts of the images but ClassificationText are
 * terminated in the list itself. */
ZELDB_API int zeldb_update_adapter_firmware_list(int adapterKey, _ZELDB_AdapterFirmware_List* list,
                                                 int onlyUpdate);

/* Stores one image under a function key: the row with that hardware id and Classification, of whatever
 * hardware type, is updated, or else a new one is inserted. ZELDB_FAILED, which is logged, when it could not
 * be stored. */
ZELDB_API int zeldb_insert_or_update_firmware_info(uint32_t functionKey, const _ZELDB_AdapterFirmware* image);

/* The part numbers of the disks behind the RAID controller in a slot whose component is updated through the
 * devices behind it. count is the room in ids and becomes the number of part numbers. ZELDB_FAILED when the
 * database cannot be reached or queried; null pointers and a negative count are ZELDB_INVALID_ARGUMENT before
 * that. A slot is taken to have one component: of two, SQLite looks at the first, while MariaDB refuses the
 * query, which is ZELDB_FAILED. The filter and the progress of the call go to syslog. */
ZELDB_API int zeldb_get_pldm_downstream_software_ids(int location, int slot, char (*ids)[32], int* count);

/* Stores a function's vital product data: the product name as the card name of its row in PCIAdapter (an
 * adapter without one is logged), and all of it in the row of VPDs with that hardware id, which is updated or
 * else inserted. Empty UUID and Model are not written; PartNo gets the FRU number. pciKey tells location and
 * slot. ZELDB_FAILED, which is logged, when the data could not be stored. */
ZELDB_API int zeldb_insert_or_update_vpd_info(uint32_t functionKey, uint32_t pciKey,
                                              const _ZELDB_PCIVpdInfo* record);

/* Embedded devices of the controller. */

/* All of them, as a list of PLDM components is filled. */
ZELDB_API int zeldb_get_embedded_firmware_list(_ZELDB_EmbeddedFirmware_List* list);

/* Stores one device: the row with its SoftwareID and DeviceIndex is updated when a value differs, or else a
 * new one is inserted. Empty texts are stored as NULL, so that a device without SoftwareID is inserted each
 * time. */
ZELDB_API int zeldb_insert_or_update_embedded_firmware_info(const _ZELDB_EmbeddedFirmware* record);

ZELDB_API int zeldb_clear_all_embedded_firmware_info(void);

/* DPUs: BlueField-2 units, PCI vendor 0x15B3, device 0xA2D6. */

/* The PCI keys of the DPUs; statuses and list as zeldb_get_pci_keys has them. */
ZELDB_API int zeldb_get_dpu_keys(_ZELDB_PCI_FunKey_List* list);

/* Records the version (at most 31 characters; null is an empty one) of the UEFI on the DPU in a slot, as an
 * image of each of its functions and as a PLDM component of device type 15. The only component of the slot is
 * the model for that component; of several the one of type 15 is stored again with the new version, and
 * ZELDB_INVALID_ARGUMENT is returned when there is none; without a component none is stored. ZELDB_NO_MATCH
 * when the slot has no DPU, or when that cannot be found out. An image that cannot be stored is logged. */
ZELDB_API int zeldb_update_dpu_uefi_version(uint32_t slot, const char* version);

/* The event log of the DPU in a slot. A slot below 1 and null pointers are ZELDB_INVALID_ARGUMENT even
 * without a database. */

ZELDB_API int dpu_clear_logs_by_slot(int slot);

/* Appends an event (its _id is not looked at); from 256 events on, the oldest makes room. nextId becomes the
 * id that the new row is expected to have: one more than the slot's newest. */
ZELDB_API int dpu_insert_log(int slot, const _ZELDB_DpuLog* event, int32_t* nextId);

/* The events of a slot in the database's order. An event that cannot be read is left out; Count is the number
 * of rows all the same, and the entries at the end are zero. When reading fails halfway the list holds what
 * was read so far, in as many entries. */
ZELDB_API int dpu_get_log_by_slot(int slot, _ZELDB_DpuLog_List* list);

/* Retimers. These two do not use the database. */

/* Hands an update to the retimer configuration proxy on this machine, waits up to an hour for its answer and
 * returns the answer's result code. Failures, which are logged: -1 the answer is incomplete (or request is
 * null, which is not logged), -2 no socket, -3 no proxy, -4 the request could not be written, -5 waiting
 * failed, -6 no answer in time. An answer is incomplete when it ends early, when five seconds pass without
 * more of it, or when a signal arrives while the rest is waited for; signals neither end nor prolong the wait
 * for its beginning. SIGPIPE is ignored from then on in the whole process. */
ZELDB_API int retimer_update_fw(const retimer_fw_req_t* request);

/* Stage and progress of the update that runs on a slot's retimer. -1 when none is recorded in a regular file,
 * which is logged, or when it runs on another slot; progress stays untouched then. */
ZELDB_API int retimer_get_fw_update_progress(uint32_t slot, retimer_fw_progress_t* progress);

ZELDB_END_DECLS

#endif
