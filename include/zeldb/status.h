/* SPDX-License-Identifier: Apache-2.0
 *
 * Statuses of the exported functions. Any other value is a status of the table-access library, passed
 * through.
 */
#ifndef ZELDB_STATUS_H
#define ZELDB_STATUS_H

enum {
  ZELDB_OK = 0,
  ZELDB_FAILED = 1,               /* a failed insert-or-update; no row for a few single-record reads */
  ZELDB_INVALID_ARGUMENT = 3,     /* a null pointer, a negative count */
  ZEL_DB_STATUS_NO_MEMORY = 4,    /* content values, one of them, or an array could not be allocated */
  ZELDB_NO_HANDLE = 6,            /* the database cannot be reached; any failure of a few slot lookups */
  ZELDB_ROW = 9,                  /* a step has a row ready */
  ZELDB_NO_MORE_ROWS = 10,        /* nothing found */
  ZELDB_NO_MATCH = 11,            /* nothing, or not exactly one row, matches */
  ZELDB_COUNT_MISMATCH = 30,      /* the number of rows differs from the number announced */
  ZELDB_BIOS_WRITE_FAILED = 31,   /* the BIOS-configuration service refused the values */
  ZELDB_PARSE_IN_PROGRESS = 32,   /* a parser run is under way */
  ZELDB_SETTING_ID_NOT_FOUND = 33 /* a setting id does not exist */
};

#endif
