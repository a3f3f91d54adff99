// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>
#include <memory>
#include <span>
#include <string>

#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/shared_file.h"
#include "db/tables.h"
#include "zeldb/pci.h"
#include "zeldb/ucm.h"

using namespace zeldb;

namespace {

using Setting = PCISetting_info;

constexpr const char* kParseMarker = "/tmp/dp.ucmparsing";
constexpr const char* kSettingId[] = {"SettingID"};
constexpr uint16_t kVendorWithoutSets = 0x1000;
constexpr uint32_t kFlagged = 2;

// Flags come first, since a row without them is left out.
constexpr auto kFields = field_table(
    ZELDB_FIELD(Setting, Flags), ZELDB_FIELD(Setting, GroupName), ZELDB_FIELD(Setting, SettingID),
    ZELDB_FIELD(Setting, PfaKey), ZELDB_FIELD(Setting, CurrentValue), ZELDB_FIELD(Setting, PendingValue),
    ZELDB_FIELD(Setting, SuppressIf), ZELDB_FIELD(Setting, GrayIf), ZELDB_FIELD(Setting, GroupID),
    ZELDB_FIELD(Setting, GroupSuppressIf), ZELDB_FIELD(Setting, GroupGrayIf), ZELDB_FIELD(Setting, Mriname),
    ZELDB_FIELD(Setting, ShortDesc), ZELDB_FIELD(Setting, FullDesc), ZELDB_FIELD(Setting, Type),
    ZELDB_FIELD(Setting, SettingName), ZELDB_FIELD(Setting, Mininstances), ZELDB_FIELD(Setting, Maxinstances),
    ZELDB_FIELD(Setting, Defvalue), ZELDB_FIELD(Setting, Mfg_default), ZELDB_FIELD(Setting, Defaultaction),
    ZELDB_FIELD(Setting, RecordId), ZELDB_FIELD(Setting, Minim), ZELDB_FIELD(Setting, Maxim),
    ZELDB_FIELD(Setting, Step), ZELDB_FIELD(Setting, Mins), ZELDB_FIELD(Setting, Maxs),
    ZELDB_FIELD(Setting, Pattern), ZELDB_FIELD(Setting, Numchoices), ZELDB_FIELD(Setting, Choices));

// Returns ZELDB_OK and the handle, or the status with which the reader ends.
int begin_reading(_zel_db_handle_t*& handle) {
  handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  return SharedFile(kParseMarker, Links::Refuse).is_open() ? ZELDB_PARSE_IN_PROGRESS : ZELDB_OK;
}

Filter<128> setting_filter(int funkey, const char* prefix) {
  if (prefix == nullptr) return Filter<128>("PfaKey=%d", funkey);
  return Filter<128>("PfaKey=%d AND SettingID like '%s%c'", funkey, prefix, '%');
}

// The name of the collection in a setting id, without leading dots.
char* collection_of(char* id) {
  char* const start = id + std::strspn(id, ".");
  start[std::strcspn(start, ".")] = '\0';
  return start;
}

}  // namespace

bool fileexist(const std::string& path) {
  return SharedFile(path.c_str(), Links::Follow).is_open();
}

int zeldb_get_pci_configID(int funkey, char* out) {
  _zel_db_handle_t* handle = nullptr;
  if (const int refused = begin_reading(handle); refused != ZELDB_OK) return refused;
  if (out == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<128> filter = setting_filter(funkey, nullptr);
  Result result;
  const int status =
      query(handle, {.table = tables::kSettings, .columns = kSettingId, .where = filter, .order = "PfaKey"},
            result);
  if (status != ZELDB_OK || !result) return status;
  char previous[128] = {};
  const unsigned rows = result.row_count();
  for (unsigned seen = 0; seen < rows && result.next(); ++seen) {
    char id[128];
    result.row().text(0, id);
    const char* const collection = collection_of(id);
    if (*collection == '\0' || std::strcmp(collection, previous) == 0) continue;
    if (previous[0] != '\0') std::strcat(out, ":");
    std::strcat(out, collection);
    std::strcpy(previous, collection);
  }
  return ZELDB_OK;
}

int zeldb_get_pci_configSet_count(int funkey, char* prefix, unsigned short* count) {
  _zel_db_handle_t* handle = nullptr;
  if (const int refused = begin_reading(handle); refused != ZELDB_OK) return refused;
  if (count == nullptr) return ZELDB_INVALID_ARGUMENT;
  _ZELDB_PCI_Generic_Info info = {};
  int status = zeldb_get_pci_generic_info(static_cast<unsigned>(funkey), &info);
  if (status != ZELDB_OK) return status;
  if (info.VendorId == kVendorWithoutSets) {
    *count = 0;
    return ZELDB_OK;
  }
  const Filter<128> filter = setting_filter(funkey, prefix);
  Result result;
  status = query(handle, {.table = tables::kSettings, .columns = kSettingId, .where = filter}, result);
  if (status == ZELDB_OK && result) *count = static_cast<unsigned short>(result.row_count());
  return status;
}

int zeldb_get_pci_configSet_list(int funkey, unsigned char* prefix, int announced, PCISetting_info* records,
                                 unsigned short onlyFlagged, unsigned short* stored) {
  _zel_db_handle_t* handle = nullptr;
  if (const int refused = begin_reading(handle); refused != ZELDB_OK) return refused;
  if (announced < 0 || stored == nullptr || (records == nullptr && announced > 0))
    return ZELDB_INVALID_ARGUMENT;
  const Filter<128> filter = setting_filter(funkey, reinterpret_cast<const char*>(prefix));
  Result result;
  const int status =
      query(handle, {.table = tables::kSettings, .columns = kFields.columns, .where = filter}, result);
  if (status != ZELDB_OK || !result) return status;
  const unsigned rows = result.row_count();
  if (rows != static_cast<unsigned>(announced)) return ZELDB_COUNT_MISMATCH;
  unsigned count = 0;
  while (count < rows && result.next()) {
    const Row row = result.row();
    uint32_t flags = 0;
    if (row.read(0, flags) != ZELDB_OK) continue;
    records[count].Flags = flags;
    if (onlyFlagged != 0 && (flags & kFlagged) == 0) continue;
    row.fill(kFields.fields, &records[count++]);
  }
  *stored = static_cast<unsigned short>(count);
  return ZELDB_OK;
}
