/* SPDX-License-Identifier: Apache-2.0
 *
 * Record helpers: row-level operations on the tables behind a table-access handle (platform/zel_db.h).
 *
 * Handles, content values and parameters belong to the caller and are neither kept nor released. A row id is
 * the table's _id column; failures give a value below 1. Refusals of the database are logged through
 * vrel_log; null arguments are not. Where and filter texts are SQL conditions, pasted as they stand.
 *
 * The functions may be called from several threads at once. Nothing is transactional.
 */
#ifndef ZELDB_DB_H
#define ZELDB_DB_H

#include "zeldb/export.h"
#include "zeldb/status.h"

// NOLINTBEGIN(bugprone-reserved-identifier,modernize-use-using): fixed names of the interface, C header
typedef struct _zel_db_handle_t _zel_db_handle_t;
typedef struct zel_db_content_values_t zel_db_content_values_t;
typedef struct _zel_db_param_t _zel_db_param_t;
// NOLINTEND(bugprone-reserved-identifier,modernize-use-using)

ZELDB_BEGIN_DECLS

/* Updates the first row that where selects, or inserts values when there is none. filter (may be null) is a
 * further condition of the update alone: a row that it rules out stays as it is and its id is returned all
 * the same. Returns the row id; below 1 on failure, which is logged. A lookup or an update that the database
 * refuses inserts nothing; a lookup whose step fails counts as no row. */
ZELDB_API int64_t insert_or_update_db_record(_zel_db_handle_t* handle, const char* table, const char* where,
                                             const zel_db_content_values_t* values, const char* filter);

ZELDB_END_DECLS

#ifdef __cplusplus

#include <map>
#include <string>

/* The id of the first row that where selects; 0 when there is none or the step fails; -1 when the query
 * fails, the id cannot be read, or an argument is null. */
ZELDB_API int64_t find_db_record(_zel_db_handle_t* handle, const char* table, const char* where);

/* The id of the new row; -1 on error or for a null argument. */
ZELDB_API int64_t insert_db_record(_zel_db_handle_t* handle, const char* table,
                                   const zel_db_content_values_t* values);

/* Deletes the rows that where selects, all of them where it is null; params are the values of its "?". A
 * delete that removed rows is logged at info. Returns a status, ZELDB_INVALID_ARGUMENT for a null handle or
 * table. */
ZELDB_API int delete_db_record(_zel_db_handle_t* handle, const char* table, const char* where,
                               const _zel_db_param_t* params, int count);

/* Updates the first row that where selects, if filter (may be null) holds for it too. Returns its id, also
 * when filter ruled it out; what find_db_record gives when that is below 1; -1 when the update fails or an
 * argument is null. */
ZELDB_API int64_t update_db_record(_zel_db_handle_t* handle, const char* table, const char* where,
                                   const zel_db_content_values_t* values, const char* filter);

/* Puts a text, or NULL when it is empty. Returns the status of the put. */
ZELDB_API int put_text_value(zel_db_content_values_t* values, const char* column, const unsigned char* value);

/* Sets the columns (name to value) of every row of the slot, in the inventory database. Values are pasted
 * between single quotes as they stand: one that holds a single quote breaks the statement, which is logged.
 * So is that memory was short, and nothing is written then. */
ZELDB_API void update_pci_table(const char* table, const std::map<std::string, std::string>& columns,
                                unsigned slot);

#endif
#endif
