/* SPDX-License-Identifier: Apache-2.0
 *
 * Many writes in one transaction. A controller's own library need not offer this: the functions are weak, so
 * their addresses are null where no library has them, and each write then stands for itself. Both are used,
 * or neither.
 */
#ifndef PLATFORM_ZEL_DB_BATCH_H
#define PLATFORM_ZEL_DB_BATCH_H

#include "platform/zel_db.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Begins a batch of this thread's calls on the handle, which must not wait for anything else until it has
 * ended. Its first write opens a transaction and waits for other writers as each write does; a batch without
 * writes costs nothing. A statement that is wrong, or that a constraint refuses, fails alone. Any other
 * failure undoes the batch: from then on all calls of it succeed without a database, reads without rows,
 * until zel_db_end_batch tells. 0 if it has begun; a status if not, and then nothing has to be ended. */
int zel_db_begin_batch(_zel_db_handle_t* handle) __attribute__((weak));

/* 0: all that was written is stored. Another status: the batch was undone, at least in part, and its calls
 * have to be made again, each for itself. */
int zel_db_end_batch(_zel_db_handle_t* handle) __attribute__((weak));

#ifdef __cplusplus
}
#endif

#endif
