/* SPDX-License-Identifier: Apache-2.0
 *
 * Platform tables: what kind of machine this is. Functions with a status return 0 for success.
 */
#ifndef PLATFORM_PTABLES_H
#define PLATFORM_PTABLES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// NOLINTNEXTLINE(modernize-use-using): C header
typedef struct ptables_platform {
  uint32_t Reserved1[3];
  uint32_t Flags; /* bit 15: the processors are AMD's */
  uint32_t Reserved2[6];
} ptables_platform;

int ptables_from_ram(void** tables);
int ptables_lookup_platform_direct(void* tables, void* platform /* a ptables_platform */);
void ptables_free(void* tables);

#ifdef __cplusplus
}

static_assert(sizeof(ptables_platform) == 40);
#endif

#endif
