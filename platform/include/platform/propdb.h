/* SPDX-License-Identifier: Apache-2.0
 *
 * Property store: values by path. All functions return 0 for success; anything else leaves the output
 * untouched.
 */
#ifndef PLATFORM_PROPDB_H
#define PLATFORM_PROPDB_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The text is cut to size - 1 bytes and always terminated. */
int propdb_get_string(const char* path, char* buffer, unsigned size);
int propdb_get_dword(const char* path, uint32_t* value);
int propdb_get_byte(const char* path, uint8_t* value);

#ifdef __cplusplus
}
#endif

#endif
