// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "db/filter.h"
#include "platform/vrel_log.h"
#include "storage/property.h"
#include "zeldb/storage.h"

using namespace zeldb;

namespace {

// The name of a presence property up to its last slash, with which the names of the other properties begin.
constexpr size_t kBackplaneLength = 24;

// The value of another property of a backplane, or 0.
uint8_t sibling(const PropertyDatabase& properties, const char* backplane, const char* name) {
  const Filter<160> condition("propName='%s%s'", backplane, name);
  uint8_t value = 0;
  read_one(properties.get(), properties_where(condition),
           [&value](const Row& row) { value = Property(row).byte(); });
  return value;
}

}  // namespace

int32_t zeldb_get_bp_drive_count(uint8_t* maxDrives, uint8_t* installedDrives) {
  const PropertyDatabase properties;
  if (!properties) return ZELDB_NO_HANDLE;
  if (maxDrives == nullptr || installedDrives == nullptr) return ZELDB_INVALID_ARGUMENT;
  *maxDrives = 0;
  *installedDrives = 0;
  Result result;
  const int status = query(properties.get(), properties_where("propName LIKE '%sep%presence'"), result);
  if (status != ZELDB_OK) return status;
  while (result.next()) {
    Property presence(result.row());
    if (presence.byte() == 0) continue;
    presence.name[kBackplaneLength] = '\0';
    const uint8_t most = sibling(properties, presence.name, "max_drives");
    const uint8_t installed = sibling(properties, presence.name, "installed_drives");
    *maxDrives = static_cast<uint8_t>(*maxDrives + most);
    *installedDrives = static_cast<uint8_t>(*installedDrives + installed);
    vrel_log::logInfo("Sep[%d]: max_drives=%d, installed_drives=%d.\n", presence.number(), most, installed);
  }
  return status;
}
