// SPDX-License-Identifier: Apache-2.0
#include <cstdint>

#include "db/codes.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

constexpr const char* kFunctionKey[] = {"FunKey"};
constexpr const char* kAdapterFunctions[] = {"DISTINCT PCIFuncKey", "AIMSupported"};

Next take_key(const Row& row, uint32_t& key) {
  return row.read(0, key) == 0 ? Next::Keep : Next::Skip;
}

Filter<156> adapter_filter(int pciKey) {
  if (pciKey != 0) return Filter<156>("PCIKey=%d", pciKey);
  return Filter<156>("PCIKey in (select DevKey from PCIs where VendorId=%d and ClsCode=%d and SlotNo!=0)",
                     kIntel, kRaidController);
}

constexpr bool lists_adapter_rows(int pciKey, uint8_t aimSupported) {
  return pciKey == 0 || (aimSupported >= 1 && aimSupported <= 3);
}

}  // namespace

int zeldb_get_pci_keys(_ZELDB_PCI_FunKey_List* list, char* filter) {
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  using Statement = Filter<160>;
  const Statement statement = filter != nullptr
                                  ? Statement("select DevKey from PCIs where %s group by DevKey;", filter)
                                  : Statement("select DevKey from PCIs group by DevKey;");
  list->Count = 0;
  Result result;
  const int status = zel_db_raw_query(handle, statement, Statement::capacity(), result.out());
  if (status != ZELDB_OK || !result) return status;
  const unsigned rows = result.row_count();
  if (rows == 0) return ZELDB_OK;
  MallocArray<uint32_t> keys;
  if (keys.allocate(rows)) {
    while (result.next() && list->Count < rows) keys[list->Count++] = result.row().number(0);
  }
  list->Items = keys.release();
  return ZELDB_OK;
}

int zeldb_get_pci_funkey_list_by_filter(char* filter, char* orderBy, _ZELDB_PCI_FunKey_List* list) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr || filter == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  return read_list(handle, list,
                   {.table = tables::kFunctions, .columns = kFunctionKey, .where = filter, .order = orderBy},
                   take_key);
}

int zeldb_get_pci_funkey_list_by_slot(int location, int slotNo, _ZELDB_PCI_FunKey_List* list) {
  Filter<48> filter("Location=%d AND SlotNo=%d", location, slotNo);
  Filter<16> order("FunKey ASC");
  return zeldb_get_pci_funkey_list_by_filter(filter.text(), order.text(), list);
}

int zeldb_get_pci_funkey_list(int pciKey, _ZELDB_PCI_FunKey_List* list) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  *list = {};
  const Filter<156> filter = adapter_filter(pciKey);
  Result result;
  int status =
      query(handle, {.table = tables::kAdapters, .columns = kAdapterFunctions, .where = filter}, result);
  if (status != ZELDB_OK || !result) return status;
  if (const auto ended = result.no_row()) return *ended;

  int32_t first = 0;
  uint8_t supported = 0;
  status = result.row().read(0, first) | result.row().read(1, supported);
  if (status != ZELDB_OK) return status;
  if (lists_adapter_rows(pciKey, supported)) {
    result.reset();
    return collect(result, list, take_key);
  }
  result.free();
  const Filter<156> confirmed("DevKey=%d and FunKey=%d", pciKey, first);
  return read_list(handle, list, {.table = tables::kFunctions, .columns = kFunctionKey, .where = confirmed},
                   take_key);
}

int zeldb_get_pci_function_oob_type(unsigned int funKey, unsigned int* aimSupported, unsigned int* oobSrc) {
  static constexpr const char* kColumns[] = {"AIMSupported", "OOBSrc"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (aimSupported == nullptr && oobSrc == nullptr) return ZELDB_INVALID_ARGUMENT;
  if (aimSupported != nullptr) *aimSupported = 0;
  if (oobSrc != nullptr) *oobSrc = 0;
  const _zel_db_param_t key[] = {bound(funKey)};
  return read_one(handle,
                  {.table = tables::kAdapters, .columns = kColumns, .where = "PCIFuncKey=?", .params = key},
                  [&](const Row& row) {
                    int status = ZELDB_OK;
                    if (aimSupported != nullptr) status = row.read(0, *aimSupported);
                    if (oobSrc != nullptr) status = row.read(1, *oobSrc);
                    return status;
                  });
}

int zeldb_get_pci_function_type(unsigned int funKey, unsigned int* type) {
  static constexpr const char* kColumns[] = {"FunType"};
  static constexpr unsigned kUnknownType = 24;
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (type == nullptr) return ZELDB_INVALID_ARGUMENT;
  *type = kUnknownType;
  const _zel_db_param_t key[] = {bound(funKey)};
  return read_one(handle,
                  {.table = tables::kFunctions, .columns = kColumns, .where = "FunKey=?", .params = key},
                  [&](const Row& row) { return row.read(0, *type); });
}

int zeldb_get_pci_hardwareidtype_by_funkey(unsigned int funKey, unsigned int* hardwareId,
                                           unsigned char* hardwareTypeId) {
  static constexpr const char* kColumns[] = {"HardwareId", "HardwareTypeId"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (hardwareId == nullptr || hardwareTypeId == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<128> filter("FunKey=%d", static_cast<int>(funKey));
  return read_one(handle, {.table = tables::kFunctions, .columns = kColumns, .where = filter},
                  [&](const Row& row) {
                    *hardwareId = row.number(0);
                    *hardwareTypeId = row.number<uint8_t>(1);
                  });
}

int zeldb_get_pci_id_by_funkey(int funKey, uint16_t* vendor, uint16_t* device, uint16_t* subVendor,
                               uint16_t* subDevice) {
  static constexpr const char* kColumns[] = {"VendorId", "DeviceId", "SubVendorId", "SubDeviceId"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  uint16_t* const outputs[] = {vendor, device, subVendor, subDevice};
  for (const uint16_t* output : outputs) {
    if (output == nullptr) return ZELDB_INVALID_ARGUMENT;
  }
  const Filter<128> filter("FunKey=%d", funKey);
  Result result;
  const int status =
      query(handle, {.table = tables::kFunctions, .columns = kColumns, .where = filter}, result);
  if (status == ZELDB_OK && result.next()) {
    int column = 0;
    for (uint16_t* output : outputs) result.row().read(column++, *output);
  }
  return status;
}

int zeldb_get_pci_cardname_by_funkey(unsigned int funKey, char* buffer, int size) {
  static constexpr const char* kColumns[] = {"CardName"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (buffer == nullptr || size <= 0) return ZELDB_INVALID_ARGUMENT;
  const _zel_db_param_t key[] = {bound(funKey)};
  return read_one(handle,
                  {.table = tables::kAdapters, .columns = kColumns, .where = "PCIFuncKey=?", .params = key},
                  [&](const Row& row) { return row.text(0, buffer, static_cast<size_t>(size)); });
}
