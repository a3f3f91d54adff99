// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <new>
#include <optional>
#include <vector>

#include "db/code_text.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "pci/connector_text.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

using R = _ZELDB_PhysicalPort;

constexpr FieldTable kPort{ZELDB_CODE_FIELD(R, ConnectorLayout, 0), ZELDB_FIELD(R, Idx),
                           ZELDB_FIELD(R, NumberofLogicalPorts), ZELDB_FIELD(R, PermanentAddress)};
constexpr FieldTable kStatistics{ZELDB_FIELD(R, LinkStatus), ZELDB_FIELD(R, LinkSpeed),
                                 ZELDB_FIELD(R, TxUtil), ZELDB_FIELD(R, RxUtil)};

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
  int status = query(handle, {.table = "PCINetwork", .columns = kColumns, .where = filter}, result);
  if (status != ZELDB_OK || !result) return status;
  const unsigned rows = result.row_count();
  while ((status = result.step()) == ZELDB_ROW && functions.keys.size() < rows) {
    functions.keys.push_back(result.row().number(0));
    functions.ports += result.row().number(1);
  }
  return ended_well(status) ? ZELDB_OK : status;
}

class PortList {
 public:
  bool allocate(uint32_t capacity) {
    capacity_ = capacity;
    return items_.allocate(capacity);
  }

  // Nothing, or the status that ends the call.
  std::optional<int> append(_zel_db_handle_t* handle, uint32_t function_key) {
    const Filter<128> filter("%s=%d", "PCIFuncKey", static_cast<int>(function_key));
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
    int status =
        query(handle, {.table = "PCIPhysicalPort", .columns = kPort.columns, .where = filter}, result);
    if (status != ZELDB_OK) return status;
    if (!result) return std::nullopt;
    while ((status = result.step()) == ZELDB_ROW && ports_ < capacity_) {
      R& port = items_[ports_++];
      result.row().fill(kPort.fields, &port);
      copy_text(port.ConnectorLayoutText, text_of(kConnectors, port.ConnectorLayout, "Unknown"));
    }
    return ended_well(status) ? std::nullopt : std::optional(status);
  }

  // Paired with the ports by their place among all statistics read so far, whatever function they belong to.
  std::optional<int> append_statistics(_zel_db_handle_t* handle, const char* filter) {
    Result result;
    const int status = query(
        handle, {.table = "PCIPhysicalPortStat", .columns = kStatistics.columns, .where = filter}, result);
    if (status != ZELDB_OK) return status;
    while (statistics_ < capacity_ && result.next())
      result.row().fill(kStatistics.fields, &items_[statistics_++]);
    return std::nullopt;
  }

  MallocArray<R> items_;
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
