/* SPDX-License-Identifier: Apache-2.0
 *
 * Many writes, or many reads, in one transaction. A controller's own library need not offer this: the
 * functions are weak, so their addresses are null where no library has them, and each call then stands for
 * itself.
 */
#ifndef PLATFORM_ZEL_DB_BATCH_H
#define PLATFORM_ZEL_DB_BATCH_H

#include "platform/zel_db.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Begins a batch of the handle that get_dmdb_handle gives; no other handle has batches. Other connections do
 * not see what it writes from now on, and on SQLite their writes wait, until the batch ends. A write that
 * fails leaves the others of its batch as they are. 0, or a status if there is no batch: writes then stand
 * for themselves. */
int zel_db_begin_batch(_zel_db_handle_t* handle) __attribute__((weak));

/* Ends the batch. 0 when all that was written is stored, otherwise a status, and nothing of the batch is. */
int zel_db_end_batch(_zel_db_handle_t* handle) __attribute__((weak));

/* Until zel_db_end_reads this thread's reads of the handle may see the tables as they are at the first of
 * them, which saves a file its locks. A write, and a call of another thread, end it. 0 if it has begun; a
 * status if not, and then nothing has to be ended. */
int zel_db_begin_reads(_zel_db_handle_t* handle) __attribute__((weak));
int zel_db_end_reads(_zel_db_handle_t* handle) __attribute__((weak));

#ifdef __cplusplus
}
#endif

#endif
