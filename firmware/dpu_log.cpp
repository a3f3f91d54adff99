// SPDX-License-Identifier: Apache-2.0
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "db/values.h"
#include "platform/vrel_log.h"
#include "zeldb/firmware.h"

using namespace zeldb;

namespace {

using Event = _ZELDB_DpuLog;

constexpr uint32_t kMostEvents = 256;
constexpr auto kTexts = field_table(ZELDB_FIELD(Event, GenID), ZELDB_FIELD(Event, Message));

// The extent of the log of a slot; all 0 if it is empty.
struct Extent {
  uint32_t count;
  int32_t oldest;
  int32_t newest;
};

OneRow read_extent(_zel_db_handle_t* handle, int slot, Extent& extent) {
  static constexpr const char* kColumns[] = {"COUNT(*)", "MIN(_id)", "MAX(_id)"};
  const Filter<32> filter("Slot=%d", slot);
  return look_for_one(handle, {.table = tables::kDpuEvents, .columns = kColumns, .where = filter},
                      [&](const Row& row) {
                        int status = row.read(0, extent.count);
                        if (status != ZELDB_OK || extent.count == 0)
                          return status;  // the ids of no events are NULL
                        status = row.read(1, extent.oldest);
                        return status == ZELDB_OK ? row.read(2, extent.newest) : status;
                      });
}

// Deletes one event per new one, even if the log holds too many.
int drop_oldest(_zel_db_handle_t* handle, const Extent& extent) {
  if (extent.count < kMostEvents) return ZELDB_OK;
  const Filter<32> filter("_id=%d", extent.oldest);
  const int status = zel_db_delete(handle, tables::kDpuEvents, filter, nullptr, 0, nullptr);
  if (status != ZELDB_OK) vrel_log::logErr("zel_db_delete(%s)", static_cast<const char*>(filter));
  return status;
}

int append(_zel_db_handle_t* handle, int slot, const Event& event) {
  ContentValues values(handle, "dpu_insert_log");
  if (!values) return values.no_memory();
  Event stored = event;
  terminate_texts(kTexts.fields, &stored);
  values.put_uint("Slot", static_cast<uint32_t>(slot));
  values.put(kTexts.fields, &stored, EmptyText::AsText);
  values.put_uint("Timestamp", static_cast<uint32_t>(stored.Timestamp));
  int64_t row = 0;
  return values.insert(tables::kDpuEvents, &row);
}

Next take_event(const Row& row, Event& event) {
  Event read = {};  // an entry that is not taken stays zero
  uint32_t timestamp = 0;
  if (row.read(0, read._id) != ZELDB_OK || row.text(1, read.GenID) != ZELDB_OK ||
      row.text(2, read.Message) != ZELDB_OK || row.read(3, timestamp) != ZELDB_OK) {
    return Next::Skip;
  }
  read.Timestamp = timestamp;
  event = read;
  return Next::Keep;
}

}  // namespace

int dpu_clear_logs_by_slot(int slot) {
  if (slot < 1) return ZELDB_INVALID_ARGUMENT;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  return zel_db_delete(handle, tables::kDpuEvents, Filter<16>("Slot=%d", slot), nullptr, 0, nullptr);
}

int dpu_insert_log(int slot, const _ZELDB_DpuLog* event, int32_t* nextId) {
  if (slot < 1 || event == nullptr || nextId == nullptr) return ZELDB_INVALID_ARGUMENT;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  Extent extent = {};
  const OneRow known = read_extent(handle, slot, extent);
  if (!known.found || known.status != ZELDB_OK) return known.status;
  int status = drop_oldest(handle, extent);
  if (status == ZELDB_OK) status = append(handle, slot, *event);
  if (status == ZELDB_OK) *nextId = static_cast<int32_t>(static_cast<uint32_t>(extent.newest) + 1);
  return status;
}

int dpu_get_log_by_slot(int slot, _ZELDB_DpuLog_List* list) {
  static constexpr const char* kColumns[] = {"_id", "GenID", "Message", "Timestamp"};
  if (slot < 1 || list == nullptr) return ZELDB_INVALID_ARGUMENT;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  *list = {};
  const Filter<16> filter("Slot=%d", slot);
  Result result;
  int status = query(handle, {.table = tables::kDpuEvents, .columns = kColumns, .where = filter}, result);
  if (status != ZELDB_OK || !result) return status;
  status = collect(result, list, take_event, {.on_error = OnError::PublishAndFail});
  // Count includes the rows that were left out.
  if (list->Items != nullptr) list->Count = static_cast<int32_t>(result.row_count());
  return status;
}
