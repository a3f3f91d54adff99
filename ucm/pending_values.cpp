// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <new>
#include <span>
#include <string>

#include "db/owners.h"
#include "db/read.h"
#include "db/tables.h"
#include "db/values.h"
#include "platform/cmr.h"
#include "platform/vrel_log.h"
#include "zeldb/db.h"
#include "zeldb/ucm.h"

using namespace zeldb;

namespace {

using Entry = _ZELDB_PCI_ConfigSet_Entry;

constexpr const char* kPending = "PendingValue";

template <size_t N>
bool is_terminated(const char (&text)[N]) {
  return std::memchr(text, '\0', N) != nullptr;
}

std::string id_filter(const Entry& entry) {
  return std::string(" SettingID='") + entry.SettingID + "'";
}

bool exists(_zel_db_handle_t* handle, const Entry& entry) {
  if (find_db_record(handle, tables::kSettings, id_filter(entry).c_str()) >= 1) return true;
  vrel_log::logErr("zeldb_save_pci_configSet_list failed, ZELDB_PCI_SETTING_ID_NOEXIT");
  return false;
}

std::string change_filter(const Entry& entry) {
  return id_filter(entry) + " AND  " + kPending + "!='" + entry.PendingValue + "'";
}

int store_pending(ContentValues& values, const Entry& entry) {
  values.clear();
  values.put_text(kPending, entry.PendingValue);
  return values.update(tables::kSettings, change_filter(entry).c_str());
}

struct Stored {
  int status = ZELDB_OK;
  const Entry* refused = nullptr;
};

Stored store_entries(_zel_db_handle_t* handle, std::span<const Entry> entries) {
  ContentValues values(handle, "zeldb_save_pci_configSet_list");
  if (!values) return {values.no_memory()};
  for (const Entry& entry : entries) {
    if (const int status = store_pending(values, entry); status != ZELDB_OK) return {status, &entry};
  }
  return {};
}

int store_all(_zel_db_handle_t* handle, std::span<const Entry> entries) {
  const auto [status, refused] = store_entries(handle, entries);
  if (refused != nullptr) {
    vrel_log::logErr("zeldb_update failed, filter: %s, value: %s(0x%s), rc: %d",
                     change_filter(*refused).c_str(), kPending, refused->PendingValue, status);
  }
  return status;
}

// Sends all entries in one request, even if there are none: the service is told that a save took place.
int hand_over(std::span<const Entry> entries) {
  int status = 0;
  {
    MallocArray<cmr_bios_attribute_value> requests;
    if (!requests.allocate(entries.size())) return ZEL_DB_STATUS_NO_MEMORY;
    cmr_bios_attribute_value* request = requests.get();
    for (const Entry& entry : entries) {
      request->Operation = CMR_OPERATION_SET;
      request->SettingID = entry.SettingID;
      request->Value = entry.PendingValue;
      ++request;
    }
    cmr_api_initialize();
    status = cmr_set_bios_attribute_value(requests.get(), static_cast<int>(entries.size()));
  }
  cmr_api_uninitialize();
  if (status == 0) return ZELDB_OK;
  vrel_log::logErr("cmr_set_bios_attribute_value failed, rc: %d", status);
  return ZELDB_BIOS_WRITE_FAILED;
}

int save(_zel_db_handle_t* handle, std::span<const Entry> entries) {
  for (const Entry& entry : entries) {
    if (!is_terminated(entry.SettingID) || !is_terminated(entry.PendingValue)) return ZELDB_INVALID_ARGUMENT;
  }
  for (const Entry& entry : entries) {
    if (!exists(handle, entry)) return ZELDB_SETTING_ID_NOT_FOUND;
  }
  const int status = store_all(handle, entries);
  return status == ZELDB_OK ? hand_over(entries) : status;
}

}  // namespace

int zeldb_save_pci_configSet_list(_ZELDB_PCI_ConfigSet_Entry* entries, int count) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (count < 0 || (entries == nullptr && count > 0)) return ZELDB_INVALID_ARGUMENT;
  try {
    return save(handle, {entries, static_cast<size_t>(count)});
  } catch (const std::bad_alloc&) {
    return ZEL_DB_STATUS_NO_MEMORY;
  }
}
