/* SPDX-License-Identifier: Apache-2.0
 *
 * Table access: opens the controller's databases, runs queries with filters and bound parameters and raw
 * SQL, steps results, gives typed column access, inserts, updates and deletes.
 *
 * One environment variable, ZEL_DB_URL, chooses the databases:
 *   sqlite:///DIRECTORY   files dmdb.sqlite and propertiesdb.sqlite in DIRECTORY (default /var/lib/zeldb);
 *                         a path to a file serves both databases from that file
 *   mariadb://[USER[:PASSWORD]@]HOST[:PORT][,HOST2...]/?socket=PATH&prefix=TEXT
 *                         databases dmdb and propertiesdb, with the prefix before both names
 *
 * All functions return 0 for success unless they say otherwise. Statuses of the library itself:
 *   2 SQL error, 3 invalid argument, 4 out of memory, 5 busy, 7 NULL value, 8 not convertible,
 *   12 no such column index, 13 constraint, 14 connection lost, 15 read-only; zel_db_result_step: 9 row, 10
 * no more rows. Handles may be used from several threads at once. A result belongs to one thread at a time.
 */
#ifndef PLATFORM_ZEL_DB_H
#define PLATFORM_ZEL_DB_H

#include <stdalign.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// NOLINTBEGIN(bugprone-reserved-identifier,modernize-use-using): fixed names of the interface, C header
typedef struct _zel_db_handle_t _zel_db_handle_t;
typedef struct zel_db_result_t zel_db_result_t;
typedef struct zel_db_content_values_t zel_db_content_values_t;

/* The value of one "?" of a filter. */
typedef struct _zel_db_param_t {
  uint32_t Type;     /* 2 signed 32-bit, 3 unsigned 32-bit */
  uint32_t Reserved; /* 0 */
  uint32_t Count;    /* 1 */
  alignas(8) uint64_t Value;
} _zel_db_param_t;
#ifdef __cplusplus
static_assert(sizeof(_zel_db_param_t) == 24 && offsetof(_zel_db_param_t, Value) == 16);
#else
_Static_assert(sizeof(_zel_db_param_t) == 24, "another size");
#endif
// NOLINTEND(bugprone-reserved-identifier,modernize-use-using)

/* The process-wide handle of the inventory database, never to be closed; null when it cannot be reached.
 * A later call may succeed again. The arguments of the command line are accepted and not looked at. */
_zel_db_handle_t* get_dmdb_handle(int argc, char** argv, int flags);

/* A connection of its own, null when it cannot be opened; user and password apply where ZEL_DB_URL names
 * none. Released with zel_db_close. */
_zel_db_handle_t* zel_db_open(const char* host, const char* user, const char* password, const char* database,
                              unsigned flags);
int zel_db_close(_zel_db_handle_t* handle);

/* Columns, where and order are pasted as they stand. Null columns with count 0 select all columns, a null or
 * empty where all rows, a null or empty order leaves the order to the database. The result is complete when
 * the call returns; it may come back non-null with a failing status and is released in either case. */
int zel_db_query(_zel_db_handle_t* handle, const char* table, const char* const* columns, int ncolumns,
                 const char* where, const _zel_db_param_t* params, int nparams, const char* order,
                 zel_db_result_t** out);

/* Runs one statement, which ends at its NUL or at the capacity, whichever comes first. out may be null. */
int zel_db_raw_query(_zel_db_handle_t* handle, const char* sql, int capacity, zel_db_result_t** out);

/* 9: a row is ready; 10: no more rows, for ever; any other value is an error. */
int zel_db_result_step(zel_db_result_t* result);
unsigned zel_db_result_row_count(zel_db_result_t* result);
/* Rewinds to before the first row. */
int zel_db_result_reset(zel_db_result_t* result);

/* Typed access by the 0-based place in the column array of the query. A NULL column, or one that is no
 * number, is non-zero and leaves the output alone; a value wider than the output is narrowed modulo its
 * width. */
int zel_db_result_column_int(zel_db_result_t* result, int column, int32_t* out);
int zel_db_result_column_uint(zel_db_result_t* result, int column, uint32_t* out);
int zel_db_result_column_uint64(zel_db_result_t* result, int column, uint64_t* out);
int zel_db_result_column_int64(zel_db_result_t* result, int column, int64_t* out);
int zel_db_result_column_short_uint(zel_db_result_t* result, int column, uint16_t* out);
int zel_db_result_column_uchar(zel_db_result_t* result, int column, uint8_t* out);
/* The text is cut to capacity - 1 bytes and always terminated; NULL is non-zero and an empty text. */
int zel_db_result_column_text(zel_db_result_t* result, int column, char* buffer, unsigned capacity);
/* Raw bytes: *size is the buffer's size on entry, the number of bytes copied on return. */
int zel_db_result_column_blob(zel_db_result_t* result, int column, void* buffer, unsigned* size);
int zel_db_result_column_bytes(zel_db_result_t* result, int column, void* buffer, unsigned* size);
/* Non-zero when the value is NULL. */
int zel_db_result_column_is_null(zel_db_result_t* result, int column);
void zel_db_free_result(zel_db_result_t* result);

/* Access by column name to the current row. */
int extract_uint_column_from_result(zel_db_result_t* result, const char* column, uint32_t* out);
int extract_uint64_column_from_result(zel_db_result_t* result, const char* column, uint64_t* out);
int extract_str_column_from_result(zel_db_result_t* result, const char* column, char* buffer,
                                   unsigned capacity);

/* flags is 0; id (may be null) receives the new row's _id. Values may be empty. */
int zel_db_insert(_zel_db_handle_t* handle, const char* table, const zel_db_content_values_t* values,
                  int flags, int64_t* id);
/* Empty values are status 3 and touch nothing; matching nothing is 0. updated may be null. */
int zel_db_update(_zel_db_handle_t* handle, const char* table, const zel_db_content_values_t* values,
                  const char* where, const _zel_db_param_t* params, int nparams, int64_t* updated);
int zel_db_delete(_zel_db_handle_t* handle, const char* table, const char* where,
                  const _zel_db_param_t* params, int nparams, int64_t* deleted);

/* An ordered column-to-value set, null when memory is short. A second put of a column replaces in place; a
 * null text is NULL. */
zel_db_content_values_t* zel_db_get_content_values(_zel_db_handle_t* handle);
int zel_db_content_put_text(zel_db_content_values_t* values, const char* column, const char* value);
int zel_db_content_put_int(zel_db_content_values_t* values, const char* column, int32_t value);
int zel_db_content_put_uint(zel_db_content_values_t* values, const char* column, uint32_t value);
int zel_db_content_put_uint64(zel_db_content_values_t* values, const char* column, uint64_t value);
int zel_db_content_put_short_uint(zel_db_content_values_t* values, const char* column, uint16_t value);
int zel_db_content_put_uchar(zel_db_content_values_t* values, const char* column, uint8_t value);
int zel_db_content_put_null(zel_db_content_values_t* values, const char* column);
void zel_db_content_clear(zel_db_content_values_t* values);
void zel_db_free_content_values(zel_db_content_values_t* values);

/* A fixed text for each status. */
const char* zel_db_get_error_str(int status);

#ifdef __cplusplus
}
#endif

#endif
