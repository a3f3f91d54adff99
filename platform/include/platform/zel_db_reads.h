/* SPDX-License-Identifier: Apache-2.0
 *
 * Many reads in one transaction. A controller's own library need not offer this: the functions are weak, so
 * their addresses are null where no library has them, and each read then stands for itself. Both are used, or
 * neither.
 */
#ifndef PLATFORM_ZEL_DB_READS_H
#define PLATFORM_ZEL_DB_READS_H

#include "platform/zel_db.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Until zel_db_end_reads this thread's reads of the handle may see the tables as they are at the first of
 * them, which saves a file its locks. A write, and a call of another thread, end it. The reads of the
 * inventory's handle include those of handles that the thread opens meanwhile. 0 if it has begun; a status if
 * not, and then nothing has to be ended. */
int zel_db_begin_reads(_zel_db_handle_t* handle) __attribute__((weak));
int zel_db_end_reads(_zel_db_handle_t* handle) __attribute__((weak));

#ifdef __cplusplus
}
#endif

#endif
