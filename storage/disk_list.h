// SPDX-License-Identifier: Apache-2.0
#ifndef STORAGE_DISK_LIST_H
#define STORAGE_DISK_LIST_H

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <span>

#include "db/owners.h"
#include "zeldb/storage.h"

namespace zeldb {

// A list of drives that another function fills.
class DiskList {
 public:
  DiskList() = default;
  DiskList(const DiskList&) = delete;
  DiskList& operator=(const DiskList&) = delete;
  ~DiskList() { std::free(list_.Items); }

  aim_disk_list_t* out() { return &list_; }
  unsigned count() const { return list_.Count; }
  std::span<const aim_disk_info_t> disks() const { return {list_.Items, list_.Count}; }

  template <typename Unwanted>
  void drop(Unwanted unwanted) {
    aim_disk_info_t* const end = list_.Items + list_.Count;
    list_.Count = static_cast<uint32_t>(std::remove_if(list_.Items, end, unwanted) - list_.Items);
  }

 private:
  aim_disk_list_t list_ = {};
};

// The parts' drives in their order. The list is left alone when memory is short.
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
