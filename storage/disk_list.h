// SPDX-License-Identifier: Apache-2.0
#ifndef STORAGE_DISK_LIST_H
#define STORAGE_DISK_LIST_H

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "db/owners.h"
#include "zeldb/storage.h"

namespace zeldb {

using DiskList = LocalList<aim_disk_list_t>;

// Joins the drives of the parts, in order. The list is left alone if memory is short.
inline int join(std::initializer_list<std::span<const aim_disk_info_t>> parts, aim_disk_list_t* list) {
  size_t count = 0;
  for (const auto& part : parts) count += part.size();
  MallocArray<aim_disk_info_t> disks;
  if (count > 0 && !disks.allocate(count)) return ZEL_DB_STATUS_NO_MEMORY;
  aim_disk_info_t* to = disks.get();
  for (const auto& part : parts) to = std::ranges::copy(part, to).out;
  *list = {static_cast<uint32_t>(count), disks.release()};
  return ZELDB_OK;
}

}  // namespace zeldb

#endif
