/* SPDX-License-Identifier: Apache-2.0
 *
 * Tells models of machines apart.
 */
#ifndef PLATFORM_PREDICATES_H
#define PLATFORM_PREDICATES_H

#ifdef __cplusplus
extern "C" {
#endif

/* Non-zero on a palomir machine. */
int is_palomir_platform(void);

#ifdef __cplusplus
}
#endif

#endif
