// SPDX-License-Identifier: Apache-2.0
//
// The smaller interfaces of the platform, whose calls fail as those of the table access do.
#include "platform/aim_config.h"
#include "platform/cmr.h"
#include "platform/peci.h"
#include "platform/propdb.h"
#include "platform/ptables.h"
#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"

using zeldb_test::Side;
using zeldb_test::ZelDbShim;

#define ZELDB_SHIM_PLATFORM(function, failed, arguments, ...)                              \
  int function(__VA_ARGS__) {                                                              \
    const Side ours(false);                                                                \
    return ZelDbShim::call_fails() ? failed : ZELDB_NEXT(function) arguments; /* NOLINT */ \
  }

constexpr int kFailed = ZelDbShim::kFailed;
constexpr int kNotThere = 0;

#pragma GCC visibility push(default)
extern "C" {
ZELDB_SHIM_PLATFORM(propdb_get_string, kFailed, (path, buffer, size), const char* path, char* buffer,
                    unsigned size)
ZELDB_SHIM_PLATFORM(propdb_get_dword, kFailed, (path, value), const char* path, uint32_t* value)
ZELDB_SHIM_PLATFORM(propdb_get_byte, kFailed, (path, value), const char* path, uint8_t* value)
ZELDB_SHIM_PLATFORM(ptables_from_ram, kFailed, (tables), void** tables)
ZELDB_SHIM_PLATFORM(ptables_lookup_platform_direct, kFailed, (tables, platform), void* tables, void* platform)
ZELDB_SHIM_PLATFORM(aim_config_get_int, kNotThere, (key, value), const char* key, int* value)
ZELDB_SHIM_PLATFORM(aim_config_set_int, kFailed, (key, value, flags), const char* key, int value, int flags)
ZELDB_SHIM_PLATFORM(peci_RdEndPointConfigPciLocal, kFailed,
                    (target, segment, bus, device, function, reg, length, data, code), uint8_t target,
                    uint8_t segment, uint8_t bus, uint8_t device, uint8_t function, uint16_t reg,
                    uint8_t length, uint8_t* data, uint8_t* code)
ZELDB_SHIM_PLATFORM(cmr_api_initialize, kFailed, (), void)
ZELDB_SHIM_PLATFORM(cmr_get_bios_collections, kFailed, (names, count), char*** names, uint32_t* count)
ZELDB_SHIM_PLATFORM(cmr_get_bios_attributes, kFailed, (name, attributes, count), const char* name,
                    cmr_bios_attribute** attributes, uint32_t* count)
ZELDB_SHIM_PLATFORM(cmr_get_bios_attributes_lite, kFailed, (name, attributes, count), const char* name,
                    cmr_bios_attribute** attributes, uint32_t* count)
ZELDB_SHIM_PLATFORM(cmr_get_bios_attribute_value, kFailed, (requests, count, selector),
                    cmr_bios_attribute_value* requests, int count, int selector)
ZELDB_SHIM_PLATFORM(cmr_set_bios_attribute_value, kFailed, (requests, count),
                    cmr_bios_attribute_value* requests, int count)
}  // extern "C"
#pragma GCC visibility pop
