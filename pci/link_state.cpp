// SPDX-License-Identifier: Apache-2.0
#include <new>
#include <string>

#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "db/values.h"
#include "platform/vrel_log.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

using LinkState = _ZELDB_PhysicalPort_LinkState;

constexpr auto kFields = field_table(ZELDB_FIELD(LinkState, Idx), ZELDB_FIELD(LinkState, LinkStatus),
                                     ZELDB_FIELD(LinkState, LinkSpeed), ZELDB_FIELD(LinkState, TxUtil),
                                     ZELDB_FIELD(LinkState, RxUtil));
constexpr auto kWritten = std::span(kFields.fields).subspan(1);
constexpr int kOnlyPort = -1;

void log_refused(const std::string& filter, const LinkState& state, int status) {
  vrel_log::logErr(
      "zeldb_set_network_physical_port_state failed, filter: %s, value: %s(0x%x) %s(0x%x) %s(0x%x) %s(0x%x), "
      "ret: "
      "%d\n",
      filter.c_str(), kWritten[0].column, state.LinkStatus, kWritten[1].column, state.LinkSpeed,
      kWritten[2].column, state.TxUtil, kWritten[3].column, state.RxUtil, status);
}

int write_state(_zel_db_handle_t* handle, unsigned int funKey, const LinkState& state, int portIndex) {
  // The log has always shown this name.
  ContentValues values(handle, "zeldb_set_network_physical_port_state");
  if (!values) return values.no_memory();
  values.put(kWritten, &state, EmptyText::AsText);
  std::string filter = " PCIFuncKey='" + std::to_string(funKey) + "'";
  if (portIndex != kOnlyPort) filter += " AND  Idx='" + std::to_string(portIndex) + "'";
  const int status = values.update(tables::kPortStatistics, filter.c_str());
  if (status != ZELDB_OK) log_refused(filter, state, status);
  return status;
}

}  // namespace

int zeldb_get_network_physical_port_link_state(unsigned int funKey, _ZELDB_PhysicalPort_LinkState* state,
                                               int portIndex) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (state == nullptr) return ZELDB_INVALID_ARGUMENT;
  const int key = static_cast<int>(funKey);
  const Filter<128> filter("PCIFuncKey=%d", key);
  Result result;
  const int status =
      query(handle, {.table = tables::kPortStatistics, .columns = kFields.columns, .where = filter}, result);
  if (status != ZELDB_OK) return status;
  const unsigned rows = result ? result.row_count() : 0;
  const bool any = portIndex == kOnlyPort;
  if (any && rows != 1) {
    vrel_log::logErr("Find %d physical ports, func_key = %d, port_index = %d\n", static_cast<int>(rows), key,
                     portIndex);
    return ZELDB_NO_MATCH;
  }
  while (result.next()) {
    const Row row = result.row();
    uint32_t index = 0;
    if (row.read(0, index) != ZELDB_OK) continue;
    if (any || static_cast<int>(index) == portIndex) {
      row.fill(kFields.fields, state);
      return ZELDB_OK;
    }
    vrel_log::logErr("Find a physical port, func_key = %d, port_index = %d, no equals to %d\n", key,
                     static_cast<int>(index), portIndex);
  }
  return ZELDB_NO_MATCH;
}

int zeldb_set_network_physical_port_link_state(unsigned int funKey, _ZELDB_PhysicalPort_LinkState* state,
                                               int portIndex) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (state == nullptr) return ZELDB_INVALID_ARGUMENT;
  LinkState current = {};
  const int status = zeldb_get_network_physical_port_link_state(funKey, &current, portIndex);
  if (status != ZELDB_OK) return status;
  try {
    return write_state(handle, funKey, *state, portIndex);
  } catch (const std::bad_alloc&) {
    return ZEL_DB_STATUS_NO_MEMORY;
  }
}
