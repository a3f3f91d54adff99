// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <new>
#include <optional>
#include <vector>

#include "db/code_text.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "pci/connector_text.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

using Port = _ZELDB_PhysicalPort;

constexpr auto kPort =
    field_table(ZELDB_CODE_FIELD(Port, ConnectorLayout, 0), ZELDB_FIELD(Port, Idx),
                ZELDB_FIELD(Port, NumberofLogicalPorts), ZELDB_FIELD(Port, PermanentAddress));
constexpr auto kStatistics = field_table(ZELDB_FIELD(Port, LinkStatus), ZELDB_FIELD(Port, LinkSpeed),
                                         ZELDB_FIELD(Port, TxUtil), ZELDB_FIELD(Port, RxUtil));

constexpr CodeText kReserved[] = {{1, "Reserved"}};
constexpr CodeText kModules[] = {{0x8005, "SFP+"},   {0x8006, "QSFP+"},   {0x8007, "SFP28"},
                                 {0x8008, "QSFP28"}, {0x8009, "QSFP56"},  {0x800A, "SFP56"},
                                 {0x800B, "OSFP"},   {0x800C, "QSFP112"}, {0x800D, "DSFP"}};
constexpr auto kConnectors = joined(kReserved, kSocketConnectors, kMakerConnectors, kModules);
static_assert(is_code_table(kConnectors));

// The functions of an adapter, in row order, and how many ports they announce together.
struct Functions {
  std::vector<uint32_t> keys;
  uint32_t ports = 0;
};

int read_functions(_zel_db_handle_t* handle, const char* key_column, unsigned int key, Functions& functions) {
  static constexpr const char* kColumns[] = {"PCIFuncKey", "NumberofPhysicalPorts"};
  const Filter<128> filter("%s=%d", key_column, static_cast<int>(key));
  Result result;
  const int status = query(handle, {.table = tables::kNetwork, .columns = kColumns, .where = filter}, result);
  if (status != ZELDB_OK || !result) return status;
  return walk(result, result.row_count(),
              [&functions](const Row& row) {
                functions.keys.push_back(row.number(0));
                functions.ports += row.number(1);
              })
      .value_or(ZELDB_OK);
}

class PortList {
 public:
  bool allocate(uint32_t capacity) {
    capacity_ = capacity;
    return items_.allocate(capacity);
  }

  // Returns nothing, or the status that ends the call.
  std::optional<int> append(_zel_db_handle_t* handle, uint32_t function_key) {
    const Filter<128> filter("PCIFuncKey=%d", static_cast<int>(function_key));
    const std::optional<int> ended = append_ports(handle, filter);
    return ended ? ended : append_statistics(handle, filter);
  }

  void publish(_ZELDB_PhysicalPort_List* list) {
    list->Count = ports_;
    list->Items = items_.release();
  }

 private:
  std::optional<int> append_ports(_zel_db_handle_t* handle, const char* filter) {
    Result result;
    const int status =
        query(handle, {.table = tables::kPhysicalPorts, .columns = kPort.columns, .where = filter}, result);
    if (status != ZELDB_OK) return status;
    if (!result) return std::nullopt;
    return walk(result, capacity_ - ports_, [this](const Row& row) {
      Port& port = items_[ports_++];
      row.fill(kPort.fields, &port);
      copy_text(port.ConnectorLayoutText, text_of(kConnectors, port.ConnectorLayout, "Unknown"));
    });
  }

  // Statistics are paired with ports by position, counted over all functions.
  std::optional<int> append_statistics(_zel_db_handle_t* handle, const char* filter) {
    Result result;
    const int status = query(
        handle, {.table = tables::kPortStatistics, .columns = kStatistics.columns, .where = filter}, result);
    if (status != ZELDB_OK) return status;
    while (statistics_ < capacity_ && result.next())
      result.row().fill(kStatistics.fields, &items_[statistics_++]);
    return std::nullopt;
  }

  MallocArray<Port> items_;
  uint32_t capacity_ = 0;
  uint32_t ports_ = 0;
  uint32_t statistics_ = 0;
};

int physical_ports(const char* key_column, unsigned int key, _ZELDB_PhysicalPort_List* list) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  *list = {};
  try {
    const Reads reads(handle);
    Functions functions;
    if (const int status = read_functions(handle, key_column, key, functions); status != ZELDB_OK)
      return status;
    if (functions.ports == 0) return ZELDB_NO_MATCH;
    PortList ports;
    if (!ports.allocate(functions.ports)) return ZEL_DB_STATUS_NO_MEMORY;
    for (auto function = functions.keys.begin(); function != functions.keys.end(); ++function) {
      if (std::find(functions.keys.begin(), function, *function) != function) continue;
      if (const auto ended = ports.append(handle, *function)) return *ended;
    }
    ports.publish(list);
    return ZELDB_OK;
  } catch (const std::bad_alloc&) {
    return ZEL_DB_STATUS_NO_MEMORY;
  }
}

}  // namespace

int zeldb_get_network_physical_port_list(unsigned int funKey, _ZELDB_PhysicalPort_List* list) {
  return physical_ports("PCIFuncKey", funKey, list);
}

int zeldb_get_all_network_physical_port_list(unsigned int pciKey, _ZELDB_PhysicalPort_List* list) {
  return physical_ports("PCIKey", pciKey, list);
}
