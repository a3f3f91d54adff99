/* SPDX-License-Identifier: Apache-2.0
 *
 * PECI: reads from the host's processors.
 */
#ifndef PLATFORM_PECI_H
#define PLATFORM_PECI_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Reads length bytes of a processor's local PCI configuration space. 0 when the command was carried out; the
 * completion code then tells whether the processor answered it (0x40). */
int peci_RdEndPointConfigPciLocal(uint8_t target, uint8_t segment, uint8_t bus, uint8_t device,
                                  uint8_t function, uint16_t reg, uint8_t length, uint8_t* data,
                                  uint8_t* completionCode);

#ifdef __cplusplus
}
#endif

#endif
