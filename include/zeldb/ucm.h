/* SPDX-License-Identifier: Apache-2.0
 *
 * Configuration settings of PCI functions: what the parser stores in PCISetting, and the merge of the
 * adapters that the settings name into PCIAdapter.
 *
 * Records belong to the caller. Functions return 0 for success, ZELDB_NO_HANDLE when the inventory database
 * cannot be reached, ZELDB_INVALID_ARGUMENT for a null pointer or a negative count, ZEL_DB_STATUS_NO_MEMORY
 * when memory is short, or a status of the table-access library. They may be called from several threads at
 * once; nothing is transactional, rows written before a failure stay.
 */
#ifndef ZELDB_UCM_H
#define ZELDB_UCM_H

#include "zeldb/export.h"
#include "zeldb/status.h"

// NOLINTBEGIN(bugprone-reserved-identifier,modernize-use-using): fixed names of the interface, C header
/* One setting of one PCI function, the image of a row of PCISetting; packed. Texts end with a NUL. */
#pragma pack(push, 1)
typedef struct PCISetting_info {
  unsigned char SettingID[129]; /* collection name, ".", attribute name */
  unsigned char SettingName[65];
  uint32_t PfaKey; /* function key: location, bus, device, function, most significant byte first */
  unsigned char CurrentValue[257];
  unsigned char PendingValue[257];
  unsigned char SuppressIf[1025];
  unsigned char GrayIf[1025];
  unsigned char GroupID[257];
  unsigned char GroupName[257];
  unsigned char GroupSuppressIf[1025];
  unsigned char GroupGrayIf[1025];
  unsigned char Mriname[65];
  unsigned char ShortDesc[129];
  unsigned char FullDesc[257];
  uint32_t Type; /* 3 number, 4 text, 5 without fields of its own, others a choice */
  uint32_t Flags;
  int32_t Mininstances;
  int32_t Maxinstances;
  unsigned char Defvalue[65];
  unsigned char Mfg_default[65];
  unsigned char Defaultaction[65];
  unsigned char RecordId[65];
  uint32_t Minim; /* Minim, Maxim, Step: numbers only */
  uint32_t Maxim;
  uint32_t Step;
  uint32_t Mins; /* Mins, Maxs, Pattern: texts only */
  uint32_t Maxs;
  unsigned char Pattern[129];
  int32_t Numchoices; /* Numchoices, Choices: choices only */
  unsigned char Choices[1025];
} PCISetting_info;

/* A new pending value of a setting; packed. Texts end with a NUL. */
typedef struct _ZELDB_PCI_ConfigSet_Entry {
  char SettingID[65];
  char PendingValue[69];
} _ZELDB_PCI_ConfigSet_Entry;
#pragma pack(pop)
// NOLINTEND(bugprone-reserved-identifier,modernize-use-using)
ZELDB_LAYOUT(PCISetting_info, 7231);
ZELDB_OFFSET(PCISetting_info, PfaKey, 194);
ZELDB_OFFSET(PCISetting_info, CurrentValue, 198);
ZELDB_OFFSET(PCISetting_info, PendingValue, 455);
ZELDB_OFFSET(PCISetting_info, SuppressIf, 712);
ZELDB_OFFSET(PCISetting_info, GroupID, 2762);
ZELDB_OFFSET(PCISetting_info, GroupSuppressIf, 3276);
ZELDB_OFFSET(PCISetting_info, GroupGrayIf, 4301);
ZELDB_OFFSET(PCISetting_info, Mriname, 5326);
ZELDB_OFFSET(PCISetting_info, FullDesc, 5520);
ZELDB_OFFSET(PCISetting_info, Type, 5777);
ZELDB_OFFSET(PCISetting_info, Defvalue, 5793);
ZELDB_OFFSET(PCISetting_info, Minim, 6053);
ZELDB_OFFSET(PCISetting_info, Pattern, 6073);
ZELDB_OFFSET(PCISetting_info, Numchoices, 6202);
ZELDB_OFFSET(PCISetting_info, Choices, 6206);
ZELDB_LAYOUT(_ZELDB_PCI_ConfigSet_Entry, 134);

ZELDB_BEGIN_DECLS

/* Stores one setting as the row of its SettingID: inserted when there is none, updated when a value differs,
 * left alone otherwise, but for a row with a negative Numchoices, Mininstances or Maxinstances, which is
 * written again. Empty texts are stored as NULL; an empty SettingID is inserted by each call. Texts are
 * pasted into conditions as they stand: a lone double quote in one cannot be stored over an existing row, in
 * a SettingID not at all. A null record is 0 and stores nothing. Returns ZELDB_FAILED, which is logged, when
 * the row could not be stored. */
ZELDB_API unsigned extract_PCISetting_info(const PCISetting_info* rec);

/* Reconciles PCIAdapter with PCISetting: every function that has settings gets a row marked AIMSupported 3,
 * unless its row has 1 or 2 there, which stays as it is; it is made from its row of PCIs and a row of its
 * adapter; rows marked 3 whose function has no settings any more are unmarked, or removed when the function
 * is gone. Functions are handled in ascending order of their keys; the first that has no row in PCIs, or
 * whose adapter has none in PCIAdapter, ends the merge, which is a success. */
ZELDB_API int zeldb_merge_aim_ucm_pfa(void);

/* A configuration set is the settings of one function whose ids share a prefix, the collection's name. While
 * a parser run is in progress (the regular file /tmp/dp.ucmparsing can be read) the three readers answer
 * ZELDB_PARSE_IN_PROGRESS, before they look at their arguments. A prefix is the beginning of a setting id,
 * null for any; "_" and "%" in it are wildcards, and one of more than 86 to 96 characters, by the length of
 * the key's decimal text, fails. */

/* Appends the names of a function's sets to out, which must hold a text, with ":" between them; neighbouring
 * settings of one set give its name once. out is not bounded: 128 bytes for each setting of the function are
 * room enough. */
ZELDB_API int zeldb_get_pci_configID(int funkey, char* out);

/* The number of settings, modulo 65536; 0 for functions of vendor 0x1000. A function that PCIs does not know
 * is ZELDB_NO_MORE_ROWS. count stays untouched on failure. */
ZELDB_API int zeldb_get_pci_configSet_count(int funkey, char* prefix, unsigned short* count);

/* The settings themselves, into announced records of the caller's. ZELDB_COUNT_MISMATCH, and nothing is
 * written, when there are not exactly that many. With onlyFlagged those without flag 2 are left out; so are
 * those whose flags cannot be read; stored tells how many records hold a setting, modulo 65536. Rows read
 * before a failure are a success. */
ZELDB_API int zeldb_get_pci_configSet_list(int funkey, unsigned char* prefix, int announced,
                                           PCISetting_info* records, unsigned short onlyFlagged,
                                           unsigned short* stored);

/* Stores new pending values, first in PCISetting, then with the BIOS-configuration service in one request; a
 * run in progress is not looked at. Ids and values are pasted between single quotes as they stand; an entry
 * that is not terminated is ZELDB_INVALID_ARGUMENT. ZELDB_SETTING_ID_NOT_FOUND, and nothing is written, when
 * one of the ids does not exist or cannot be looked up; ZELDB_BIOS_WRITE_FAILED when the service refused,
 * which leaves the table changed. A row without a pending value keeps none. Failures are logged. */
ZELDB_API int zeldb_save_pci_configSet_list(_ZELDB_PCI_ConfigSet_Entry* entries, int count);

ZELDB_END_DECLS

#ifdef __cplusplus

#include <string>

/* The condition that a text column differs from value: (C IS NULL OR C!="value"), or C IS NOT NULL for an
 * empty one. The value is pasted as it stands. Empty when memory is short. */
ZELDB_API std::string get_sql_str(const char* column, const unsigned char* value);

/* Whether the regular file can be opened for reading. Anything other than a regular file is not opened. */
ZELDB_API bool fileexist(const std::string& path);

#endif
#endif
