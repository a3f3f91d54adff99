/* SPDX-License-Identifier: Apache-2.0
 *
 * Administration of the databases that zel_db.h gives access to. Not part of what a controller's own library
 * offers.
 */
#ifndef PLATFORM_ZEL_DB_ADMIN_H
#define PLATFORM_ZEL_DB_ADMIN_H

#ifdef __cplusplus
extern "C" {
#endif

/* Creates the databases dmdb and propertiesdb and the tables that are missing in them, and brings older
 * tables to today's schema: nothing that they hold is lost, and a text that is longer than its column fails
 * the call with the row's name. url is a ZEL_DB_URL, null for that of the environment. Calling it again
 * changes nothing. On failure error (capacity bytes, may be null) receives one line that says what failed and
 * where. */
int zel_db_create(const char* url, char* error, unsigned capacity);

/* Makes the database "fleet" if it is missing: zel_db_open then opens it as the other two. Its tables are the
 * caller's own. error as above. */
int zel_db_create_fleet(const char* url, char* error, unsigned capacity);

/* Runs the statements of the file at path, split at ";" outside quotes and comments, in the named database
 * ("dmdb" or "propertiesdb"). Stops at the first that fails: error names the file, the statement's number
 * (from 1) and the reason. */
int zel_db_load(const char* url, const char* database, const char* path, char* error, unsigned capacity);

/* Takes all rows out of the tables of the named database, of all of them or of none. error as above. */
int zel_db_clear(const char* url, const char* database, char* error, unsigned capacity);

/* 0 when the named database can be opened and has its tables and columns. Otherwise error (capacity bytes,
 * may be null) receives one line that says what is wrong, where, and what helps; it never holds a password.
 */
int zel_db_check(const char* url, const char* database, char* error, unsigned capacity);

#ifdef __cplusplus
}
#endif

#endif
