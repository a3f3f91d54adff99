/* SPDX-License-Identifier: Apache-2.0
 *
 * Many writes in one transaction. A controller's own library need not offer this: the functions are weak, so
 * their addresses are null where no library has them, and each write then stands for itself.
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

#ifdef __cplusplus
}
#endif

#endif
