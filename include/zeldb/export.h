/* SPDX-License-Identifier: Apache-2.0
 *
 * The export mark, and the checks that hold a record to its layout.
 */
#ifndef ZELDB_EXPORT_H
#define ZELDB_EXPORT_H

#include <stddef.h>
#include <stdint.h>

#define ZELDB_API __attribute__((visibility("default")))

#ifdef __cplusplus
#include <type_traits>
#define ZELDB_ASSERT(condition) static_assert(condition)
#define ZELDB_LAYOUT(type, size)                                                         \
  static_assert(std::is_standard_layout_v<type> && std::is_trivially_copyable_v<type> && \
                sizeof(type) == (size))
#define ZELDB_BEGIN_DECLS extern "C" {
#define ZELDB_END_DECLS }
#else
#define ZELDB_ASSERT(condition) _Static_assert(condition, #condition)
#define ZELDB_LAYOUT(type, size) _Static_assert(sizeof(type) == (size), #type " has another size")
#define ZELDB_BEGIN_DECLS
#define ZELDB_END_DECLS
#endif

#define ZELDB_OFFSET(type, member, offset) ZELDB_ASSERT(offsetof(type, member) == (offset))

/* The size of a record that holds pointers, on targets where they have 4 bytes. */
#define ZELDB_LAYOUT_32BIT(type, size) ZELDB_ASSERT(sizeof(void*) != 4 || sizeof(type) == (size))

#endif
