/* SPDX-License-Identifier: Apache-2.0
 *
 * Storage inventory: drives, what their vital product data says, the controllers they sit behind and the
 * backplanes that hold them.
 *
 * Two tables hold drives: AimDisks, and NVMeDrives for those known from their management interface. A place
 * is a kind (LocationId: 1 PCIe slot, 2 backplane bay, 3 M.2 bay, 4 7 mm bay) and a number; its text is
 * "Slot 3", "Bay 3", "M.2 Bay3" or "7MM Bay3".
 *
 * Lists: the caller owns the list record, the function allocates the array that Items points to, the caller
 * releases it with free(). The list is zeroed first and set only on success, but left as it was when the
 * function returns ZELDB_NO_HANDLE, so it should start zeroed. A list without drives is a success. Filters
 * are SQL conditions, pasted as they stand; a null one selects every row.
 *
 * Functions return 0 for success; ZELDB_NO_HANDLE when the inventory database cannot be reached, which is
 * looked at before the arguments; ZELDB_INVALID_ARGUMENT for a null pointer; ZEL_DB_STATUS_NO_MEMORY; or a
 * status of the table-access library. An update that matches no row is a success. They log to syslog, as
 * user.info, but that memory for a row was short to the in-house log, and may be called from several threads
 * at once.
 */
#ifndef ZELDB_STORAGE_H
#define ZELDB_STORAGE_H

#include "zeldb/export.h"
#include "zeldb/status.h"

// NOLINTBEGIN(bugprone-reserved-identifier,modernize-use-using): fixed names of the interface, C header
typedef struct _zel_db_handle_t _zel_db_handle_t;

enum _AimDiskFormFactor {
  AimDiskFormNone = 0,
  AimDiskFormBay = 16,
  AimDiskFormCard = 32,
  AimDiskFormM2 = 48,
  AimDiskFormEdsff = 80
};

/* One drive. Numbers that cannot be read are 0, texts empty, unless said otherwise. */
typedef struct aim_disk_info_t {
  uint32_t PCIFuncKey;  /* function key of the drive, or of the on-board controller it sits behind */
  uint16_t SlotNo;      /* of its controller, for drives in M.2 and 7 mm bays */
  uint8_t CtrlType;     /* 3: behind an on-board controller */
  uint16_t BayNo;       /* the number of its place, at most 0xFF; 0xFF when it cannot be read */
  uint8_t LocationId;   /* the kind of its place */
  uint8_t DriveTypeId;  /* 1 SATA, 2 SAS, 3 NVMe, 4 and 5 SATA and NVMe in M.2, 6 and 7 in 7 mm bays */
  uint32_t FormFactor;  /* an enum _AimDiskFormFactor */
  uint8_t HealthStatus; /* of the drive's sensor; 2 without one */
  char Location[17];    /* the text of its place */
  char DriveType[17];
  char MediaType[17];    /* "SSD" or "HDD" */
  uint16_t RotationRate; /* per minute; 0 for an SSD and where it is not known */
  char FruNo[33];
  char PartNo[33];
  char SerialNo[33];
  char Model[65];
  char UUID[65];
  char Manufacture[17];
  char FwVersion[17];
  char Capacity[17]; /* such as "960GB" or "3.84TB" */
  uint8_t SFlags;
  uint8_t Warning;
  uint8_t Temperature;
  uint8_t RemainLife;
  uint16_t InfoMask;
  uint8_t Reserved[4];
} aim_disk_info_t;

typedef struct aim_disk_list_t {
  uint32_t Count;
  aim_disk_info_t* Items;
} aim_disk_list_t;
// NOLINTEND(bugprone-reserved-identifier,modernize-use-using)
ZELDB_LAYOUT(aim_disk_info_t, 360);
ZELDB_OFFSET(aim_disk_info_t, FormFactor, 12);
ZELDB_OFFSET(aim_disk_info_t, Location, 17);
ZELDB_OFFSET(aim_disk_info_t, RotationRate, 68);
ZELDB_OFFSET(aim_disk_info_t, FruNo, 70);
ZELDB_OFFSET(aim_disk_info_t, Manufacture, 299);
ZELDB_OFFSET(aim_disk_info_t, SFlags, 350);
ZELDB_OFFSET(aim_disk_info_t, InfoMask, 354);
ZELDB_OFFSET(aim_disk_info_t, Reserved, 356);
ZELDB_LAYOUT_32BIT(aim_disk_list_t, 8);

ZELDB_BEGIN_DECLS

/* ---- Identity of a drive. No database; the functions below return what their comments say. ---- */

/* Fills FruNo, PartNo, SerialNo, Model, Manufacture and Capacity of a record from the image of an NVMe
 * drive's vital product data, and leaves the other fields alone; BayNo names the drive in the log. Fields
 * that the image lacks stay as they were: the record should start zeroed. Returns 0, or -1 for a null
 * argument, an image of fewer than 256 bytes, an unknown layout, or a product area at 0. Bytes from len on
 * are never read and count as 0. One line to syslog for each drive of the standard layout and for each
 * refused image.
 */
ZELDB_API int32_t parse_nvme_drive_vpd(const uint8_t* image, uint32_t len, aim_disk_info_t* out);

/* Ends a text field of length bytes at its first control character (below 0x20, or 0x7F), or at the first of
 * two blanks in a row, unless they stand at its beginning. Bytes from 0x80 on are kept. */
ZELDB_API void rm_invalid_chars(char* field, uint32_t length);

/* The vendor of a drive by the beginning of its model, a static text: empty when it is not known, null for
 * null. */
ZELDB_API const char* driveModel2Manufacture(const char* model);

/* The model without leading blanks and without a leading vendor word, as a pointer into the model. */
ZELDB_API char* trim_drive_model(char* model);

/* The day, in local time, of a manufacture date: three bytes, little-endian, of minutes since 1996-01-01 UTC.
 * Null bytes write nothing; an output may be null. */
ZELDB_API void get_manuf_date(const uint8_t* bytes, int* year, int* month, int* day);

/* "2020-12-28" for a code of two digits week and two digits year, cut to size. Weeks and years out of range
 * are brought into it; a code of four bytes 0xFF is 1996-01-01. A null argument writes nothing. */
ZELDB_API void vpd_manuf_date_to_ymd(const char* code, char* dst, uint32_t size);

/* ---- Readers ---- */

/* The drives in AimDisks that filter selects, completed with what that table does not hold: texts of the
 * type and the medium, form factor, health, and the function key where the table has none. */
ZELDB_API int32_t zeldb_get_disk_list_with_filter(aim_disk_list_t* list, const char* filter);

/* The drives in NVMeDrives that filter selects, completed in the same way. Location, drive type and capacity
 * texts are made from the numbers of that table; SlotNo is its CtrlSlot, BayNo its SlotNo. */
ZELDB_API int zeldb_get_nvme_disk_list_from_mi_filter(aim_disk_list_t* list, const char* filter);

/* Every drive that is present, and the present SATA drives, from AimDisks. */
ZELDB_API int zeldb_get_disk_list(aim_disk_list_t* list);
ZELDB_API int zeldb_get_onboard_sata_disk_list(aim_disk_list_t* list);

/* The one NVMe drive in a place of kind 1 to 3, from AimDisks. ZELDB_INVALID_ARGUMENT when the record is
 * null, the kind another one, or no drive found, whatever the reason; ZELDB_NO_HANDLE, which is logged, when
 * several are. The record is then left alone. */
ZELDB_API int zeldb_get_nvme_aim_disk(int location, uint32_t number, aim_disk_info_t* disk);

/* The drives behind the controller in a slot: from NVMeDrives, or when it has none, from AimDisks. */
ZELDB_API int zeldb_get_mv_disk_list(int slot, aim_disk_list_t* list);

/* The drives in 7 mm bays: from AimDisks alone when the 7 mm controller is of type 2; otherwise from
 * NVMeDrives, or when it has none, from AimDisks. exclude other than 0 leaves out those with a serial number
 * that the product-data table has, except with type 2. The list is left as it was when the controller's type
 * cannot be read; that status is returned. */
ZELDB_API int zeldb_get_7mm_disk_list(aim_disk_list_t* list, uint32_t exclude);

/* The M.2 drives of NVMeDrives, then those of AimDisks whose bay NVMeDrives does not have. exclude as above.
 * On a palomir machine 4 is subtracted from a BayNo above 3, and from the number in the Location of drives
 * of NVMeDrives. 0, also when neither table could be read; ZELDB_INVALID_ARGUMENT or
 * ZEL_DB_STATUS_NO_MEMORY. */
ZELDB_API int zeldb_get_m2_disk_list(aim_disk_list_t* list, uint32_t exclude);

/* The NVMe drives in backplane bays and PCIe slots: those of AimDisks, then those of NVMeDrives in other
 * places, without those whose serial number the product-data table has. A table or the list of NVMe bays that
 * cannot be read is logged and taken for empty. Statuses as above. */
ZELDB_API int zeldb_get_u2_aic_nvme_disk_list(aim_disk_list_t* list);

/* All drives: M.2, 7 mm, backplane bays and PCIe slots, on-board SATA, in this order. A part that cannot be
 * read is logged and left out; without any drive, or when memory is short, the list is empty. Nothing happens
 * for a null list. */
ZELDB_API void zeldb_get_merged_disk_list(aim_disk_list_t* list);

/* The drives of all with a function key. ZELDB_INVALID_ARGUMENT for a null list; ZELDB_NO_MATCH when there is
 * none, for whatever reason. */
ZELDB_API int zeldb_get_disk_list_funkey(uint32_t funKey, aim_disk_list_t* list);

/* ---- Controllers ---- */

/* Whether the board has an Intel RAID controller that is (selector not 0) or is not (0) device 0x28C0: 1 or
 * 0. The flag is cleared first. */
ZELDB_API int zeldb_vroc_enabled(uint32_t selector, uint32_t* enabled);

/* How many functions on the board are Intel RAID controllers 0x28C0, over the caller's handle, or with null
 * the inventory's. Every failure of the database is ZELDB_NO_HANDLE; the count is then left alone. */
ZELDB_API int zeldb_get_vmd_count(_zel_db_handle_t* handle, uint32_t* count);

/* The slot of the first function with these ids, 0xFF when it cannot be read. ZELDB_NO_MORE_ROWS when there
 * is none; the slot is then left alone. */
ZELDB_API int zeldb_get_ctrl_slot(uint32_t deviceId, uint32_t subDeviceId, uint8_t* slot);

/* The function key of the NVMe controller in a slot (location 1) or backplane bay (2). ZELDB_NO_HANDLE also
 * when there is none; the key is then left alone. */
ZELDB_API int zeldb_get_nvme_drv_funkey(uint32_t location, uint32_t slot, uint32_t* funKey);

/* The type of the M.2 (controller 0) or 7 mm (any other) controller from the property database, 0 when it is
 * not recorded. ZELDB_NO_HANDLE, and the type left alone, when that cannot be opened, which is looked at
 * before the argument. */
ZELDB_API int zeldb_get_mvl_ctrl_type(uint8_t* type, uint32_t controller);

/* Slots and function keys of the on-board storage controllers, side by side. *count: in, how many fit, which
 * must not be 0; out, how many were delivered. */
ZELDB_API int zeldb_get_marvell_ctrl_slots(uint8_t* slots, uint32_t* funKeys, uint32_t* count);

/* ---- Writers. Null texts are ZELDB_INVALID_ARGUMENT. ---- */

/* The firmware version of the drives in a place, in NVMeDrives. */
ZELDB_API int zeldb_update_nvme_disk_firmware_version(uint32_t location, uint32_t slot, const char* version);

/* The presence of the drives in a place, in AimDisks, where it changes. */
ZELDB_API int zeldb_update_aim_disk_presence(uint32_t locationId, uint32_t bayNo, uint16_t presence);

/* The identity of the drives in a place, in AimDisks. */
ZELDB_API int zeldb_update_aim_disk_vpd_info(uint32_t locationId, uint32_t bayNo, const char* model,
                                             const char* serialNo, const char* partNo, const char* fruNo,
                                             const char* manufacture, const char* fwVersion);

/* SFlags, Warning, Temperature, RemainLife and InfoMask of the drive with the record's Location, in AimDisks,
 * where one of them changes; a change of the temperature by 2 degrees or less is none. An empty Location is
 * made from LocationId and BayNo; ZELDB_INVALID_ARGUMENT when that is no known kind. */
ZELDB_API int zeldb_update_aim_disk_smart_info(const aim_disk_info_t* disk);

/* The controller type of the drive in a place of kind 1 to 4, in AimDisks, where it changes.
 * ZELDB_INVALID_ARGUMENT for another kind. */
ZELDB_API int zeldb_update_aim_disk_ctrl_type(uint32_t locationId, uint32_t number, uint8_t ctrlType);

/* Updates the first row of AimDisks with the record's LocationId and BayNo, or inserts one; the drive becomes
 * present, and empty texts become NULL. HealthStatus and FormFactor are not stored. ZELDB_FAILED, which the
 * in-house log explains, when the row could not be written. */
ZELDB_API int zeldb_add_update_nvme_aim_disk(const aim_disk_info_t* disk);

/* ---- Backplanes ---- */

/* Adds up the bays and the installed drives of all backplanes that are present, from the property database.
 * Totals wrap at 256. They are zeroed first, but left alone for a null pointer or when the database cannot be
 * opened (ZELDB_NO_HANDLE). One line to the in-house log for each backplane. */
ZELDB_API int32_t zeldb_get_bp_drive_count(uint8_t* maxDrives, uint8_t* installedDrives);

ZELDB_END_DECLS

#endif
