/* SPDX-License-Identifier: Apache-2.0
 *
 * Processors and memory modules: one row of Processor per socket, one row of Memory per module (ordinary,
 * persistent, or on-package high-bandwidth memory).
 *
 * Records belong to the caller. A found row fills every field of its record, with 0 or an empty text where
 * the column is NULL or cannot be read, and with the low bits of a number that is wider than its field; a row
 * that is not found leaves the record as it was. Texts end with a NUL and are cut to their fields.
 *
 * Functions return 0 for success; ZELDB_NO_HANDLE when the inventory database cannot be reached, which is
 * looked at before the arguments unless a function says otherwise; ZELDB_INVALID_ARGUMENT for a null pointer;
 * ZEL_DB_STATUS_NO_MEMORY; or a status of the table-access library. They may be called from several threads
 * at once; nothing is transactional.
 */
#ifndef ZELDB_CPUMEM_H
#define ZELDB_CPUMEM_H

#include "zeldb/export.h"
#include "zeldb/status.h"

// NOLINTBEGIN(bugprone-reserved-identifier,modernize-use-using): fixed names of the interface, C header
typedef struct _zel_db_handle_t _zel_db_handle_t;
typedef struct _zel_db_param_t _zel_db_param_t;

/* Row ids (_id). The array is allocated by the function and released by the caller with free(). */
typedef struct _ZELDB_Id_List {
  uint32_t Count;
  uint32_t* Items;
} _ZELDB_Id_List;

/* One processor. */
typedef struct _ZELDB_Processor {
  uint32_t _id; /* the row to read */
  uint64_t ProcId;
  uint8_t ProcType;
  uint16_t Family;
  char Socket[65];
  char Manufacturer[65];
  char Version[65];
  uint8_t Voltage;
  uint16_t ExtClock;
  uint16_t MaxSpeed;
  uint16_t CurSpeed;
  uint8_t Status;
  uint8_t Upgrade;
  char SerialNo[65];
  char AssetTag[65];
  char PartNo[65];
  uint8_t CoreCount;
  uint8_t CoreEnabled;
  uint8_t ThreadCount;
  uint16_t Characteristics;
  uint16_t L1CacheMaxSize;
  uint16_t L1CacheInstalled;
  uint16_t L1CacheType;
  uint16_t L1CacheConfig;
  uint16_t L2CacheMaxSize;
  uint16_t L2CacheInstalled;
  uint16_t L2CacheType;
  uint16_t L2CacheConfig;
  uint16_t L3CacheMaxSize;
  uint16_t L3CacheInstalled;
  uint16_t L3CacheType;
  uint16_t L3CacheConfig;
  uint8_t NodeIndex;
} _ZELDB_Processor;

/* One memory module. The second half, from Capacity on, is known for persistent modules only. */
typedef struct _ZELDB_Memory {
  uint32_t _id;
  uint32_t ArrayId;
  uint16_t SlotNo;
  uint16_t TotalWidth;
  uint16_t DataWidth;
  uint32_t MemSize;
  uint8_t FormFactor;
  uint8_t MemType;
  uint16_t TypeDetail; /* bit 0x1000: non-volatile */
  uint16_t MaxSpeed;
  uint16_t ClockSpeed;
  char DevLocator[65];
  char BankLocator[65];
  char Manufacturer[65];
  char SerialNo[65];
  char AssetTag[65];
  char PartNo[65];
  uint8_t Attributes;
  uint8_t NodeIndex;
  uint64_t Capacity;    /* raw */
  uint64_t MemCapacity; /* in memory mode */
  uint64_t AppDirCap;   /* in app-direct mode */
  uint64_t UnconfigCap; /* not configured */
  uint64_t InaccCap;    /* not accessible */
  uint64_t ReservedCap; /* reserved */
  uint32_t Classification;
  uint32_t RemainingLife;
  uint32_t SecurityState; /* see bps_format_security_str */
  uint8_t HealthStatus;   /* see bps_format_hstate_str */
  uint8_t AlarmTrips;
  uint32_t LDShutdownCount; /* dirty shutdowns */
  uint8_t AITDRAMStatus;
  uint16_t HealthStatusReason;
  uint8_t LLShutdownStatus; /* of the last shutdown */
  uint8_t FIPSMode;         /* see bps_format_fips_str */
  uint8_t InfoMask;
  uint32_t CPUIndex;
  uint32_t iMCNum; /* memory controller */
  uint32_t ChannelNum;
  uint32_t DimmNum; /* on the channel */
  char FirmwareVersion[65];
  char SoftwareID[65];
  uint8_t MajorHealth;
  uint8_t MinorHealth;
  uint32_t RepairStatus;
} _ZELDB_Memory;
// NOLINTEND(bugprone-reserved-identifier,modernize-use-using)
ZELDB_LAYOUT_32BIT(_ZELDB_Id_List, 8);
ZELDB_LAYOUT(_ZELDB_Processor, 456);
ZELDB_OFFSET(_ZELDB_Processor, ProcId, 8);
ZELDB_OFFSET(_ZELDB_Processor, Voltage, 215);
ZELDB_OFFSET(_ZELDB_Processor, SerialNo, 224);
ZELDB_OFFSET(_ZELDB_Processor, CoreCount, 419);
ZELDB_OFFSET(_ZELDB_Processor, NodeIndex, 448);
ZELDB_LAYOUT(_ZELDB_Memory, 656);
ZELDB_OFFSET(_ZELDB_Memory, MemSize, 16);
ZELDB_OFFSET(_ZELDB_Memory, DevLocator, 28);
ZELDB_OFFSET(_ZELDB_Memory, Attributes, 418);
ZELDB_OFFSET(_ZELDB_Memory, Capacity, 424);
ZELDB_OFFSET(_ZELDB_Memory, LDShutdownCount, 488);
ZELDB_OFFSET(_ZELDB_Memory, CPUIndex, 500);
ZELDB_OFFSET(_ZELDB_Memory, FirmwareVersion, 516);
ZELDB_OFFSET(_ZELDB_Memory, MajorHealth, 646);

/* Kinds of data for zeldb_update_dcpmm_smart_info; not to be combined. */
enum { ZELDB_DCPMM_HEALTH = 1, ZELDB_DCPMM_SECURITY = 2, ZELDB_DCPMM_FIPS = 4 };

ZELDB_BEGIN_DECLS

/* The four lists leave the list record untouched when their query fails or the database cannot be reached, so
 * it should start zeroed; they set Count 0 and Items null when there is no row or memory is short. The caller
 * releases Items whatever the status is. Rows come in no particular order. */

/* The ids of all processors, or of all memory modules; rows whose id cannot be read are left out. When a step
 * fails its status is returned, and the list holds the ids before it. */
ZELDB_API int zeldb_get_processor_list(_ZELDB_Id_List* list);
ZELDB_API int zeldb_get_memory_list(_ZELDB_Id_List* list);

/* The ids of Intel's high-bandwidth memory ("Hbm" in the first 62 characters of DevLocator), or of Intel's
 * non-volatile modules (bit 0x1000 of TypeDetail). The array has room for every module of that vendor. Steps
 * that fail are not reported. */
ZELDB_API int zeldb_get_HBM_memory_list(_ZELDB_Id_List* list);
ZELDB_API int zeldb_get_AEP_memory_list(_ZELDB_Id_List* list);

/* The processor whose _id the record holds; ZELDB_FAILED when there is none, or its row cannot be stepped to.
 */
ZELDB_API int zeldb_get_processor(_ZELDB_Processor* processor);

/* The first module that filter selects: an SQL condition with exactly one "?", whose value is param.
 * ZELDB_FAILED when there is none, or its row cannot be stepped to. */
ZELDB_API int zeldb_get_memory_with_filter(_ZELDB_Memory* memory, const char* filter,
                                           const _zel_db_param_t* param);
/* The same by slot number, or by _id. */
ZELDB_API int zeldb_get_memory_by_slot(_ZELDB_Memory* memory, int32_t slot);
ZELDB_API int zeldb_get_memory_by_id(_ZELDB_Memory* memory, uint32_t id);

/* The health of the module in a slot. repair may be null; a null major or minor is ZELDB_INVALID_ARGUMENT
 * even without a database. An empty slot is ZELDB_NO_MORE_ROWS. */
ZELDB_API int zeldb_get_mpfa_health_by_slot(int32_t slot, uint32_t* major, uint32_t* minor, uint32_t* repair);

/* Adds a module: a new row, whatever is there already, of ArrayId to Attributes without _id; the other
 * columns stay NULL. A null record is ZELDB_INVALID_ARGUMENT; then a null handle, or no memory for all of
 * the values, ZELDB_NO_HANDLE. A refused insert is not reported. */
ZELDB_API int zeldb_insert_memory_info(_zel_db_handle_t* handle, const _ZELDB_Memory* memory);

/* Removes the modules with "HbmIo" in their DevLocator; none is a success. A null handle is ZELDB_NO_HANDLE.
 */
ZELDB_API int zeldb_hbm_memory_cleanup(_zel_db_handle_t* handle);

/* Stores what a persistent module has reported in the row of memory's _id: InfoMask and, of the kind,
 * RemainingLife, HealthStatus, AlarmTrips, LDShutdownCount, AITDRAMStatus, HealthStatusReason and
 * LLShutdownStatus (health), SecurityState (security), or FIPSMode. Another kind stores nothing and yields
 * the library's status for an update without values. A row that does not exist is a success and is not
 * created. A null record is ZELDB_INVALID_ARGUMENT even without a database. Alone of these functions it logs
 * something: that memory was short. */
ZELDB_API int zeldb_update_dcpmm_smart_info(const _ZELDB_Memory* memory, int kind);

/* The text of a code, cut to size bytes with its NUL. A null buffer or a size of 0 does nothing. */
ZELDB_API void bps_format_fips_str(uint32_t code, char* buffer, uint32_t size);
ZELDB_API void bps_format_hstate_str(uint32_t code, char* buffer, uint32_t size);
/* code is a set of bits; the first of not supported, frozen, locked, disabled and enabled that applies. */
ZELDB_API void bps_format_security_str(uint32_t code, char* buffer, uint32_t size);

ZELDB_END_DECLS

#endif
