/* SPDX-License-Identifier: Apache-2.0
 *
 * Configuration of the adapter inventory.
 */
#ifndef PLATFORM_AIM_CONFIG_H
#define PLATFORM_AIM_CONFIG_H

#ifdef __cplusplus
extern "C" {
#endif

/* Non-zero when the value was delivered; 0, and value untouched, when it is not stored. */
int aim_config_get_int(const char* key, int* value);
/* 0 for success; flags is 0. */
int aim_config_set_int(const char* key, int value, int flags);

#ifdef __cplusplus
}
#endif

#endif
