// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <span>

#include "db/codes.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

using GenericInfo = _ZELDB_PCI_Generic_Info;

// FunType is requested twice; the second value is ignored.
constexpr auto kRequested = field_table(
    ZELDB_FIELD(GenericInfo, _id), ZELDB_FIELD(GenericInfo, BridgeId), ZELDB_FIELD(GenericInfo, SegNo),
    ZELDB_FIELD(GenericInfo, BusNo), ZELDB_FIELD(GenericInfo, DeviceNo), ZELDB_FIELD(GenericInfo, FunctionNo),
    ZELDB_FIELD(GenericInfo, VendorId), ZELDB_FIELD(GenericInfo, DeviceId), ZELDB_FIELD(GenericInfo, RevId),
    ZELDB_FIELD(GenericInfo, ClsCode), ZELDB_FIELD(GenericInfo, SubVendorId),
    ZELDB_FIELD(GenericInfo, SubDeviceId), ZELDB_FIELD(GenericInfo, SlotNo),
    ZELDB_FIELD(GenericInfo, Location), ZELDB_FIELD(GenericInfo, SlotDesignation),
    ZELDB_FIELD(GenericInfo, SlotType), ZELDB_FIELD(GenericInfo, SlotDataBusWidth),
    ZELDB_FIELD(GenericInfo, Hotplug), ZELDB_FIELD(GenericInfo, PCIType),
    ZELDB_FIELD(GenericInfo, BladeSlotPort), ZELDB_FIELD(GenericInfo, NodeIndex),
    ZELDB_FIELD(GenericInfo, FunType), ZELDB_FIELD_OR(GenericInfo, LanesInUse, 4),
    ZELDB_FIELD_OR(GenericInfo, MaxLanes, 16), ZELDB_FIELD_OR(GenericInfo, MaxPCIeType, 4),
    ZELDB_FIELD_OR(GenericInfo, PCIeType, 3), ZELDB_FIELD(GenericInfo, DevKey),
    ZELDB_FIELD(GenericInfo, FunType));
constexpr size_t kListed = 26;
constexpr size_t kRead = 27;
constexpr std::span<const Field> kFields(kRequested.fields);

// In a list, texts are one character shorter than in a single record.
constexpr auto kListFields = [] {
  auto fields = kRequested.fields;
  for (Field& field : fields) {
    if (field.kind == Kind::Text) --field.size;
  }
  return fields;
}();
constexpr std::span<const char* const> kColumns(kRequested.columns);

constexpr unsigned kInSlot = 1;

}  // namespace

int zeldb_get_pci_generic_info(unsigned int funKey, _ZELDB_PCI_Generic_Info* record) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (record == nullptr) return ZELDB_INVALID_ARGUMENT;
  const _zel_db_param_t key[] = {bound(funKey)};
  return read_one(handle,
                  {.table = tables::kFunctions, .columns = kColumns, .where = "FunKey=?", .params = key},
                  [&](const Row& row) {
                    std::memset(record->SlotDesignation, 0, sizeof(record->SlotDesignation));
                    row.fill(kFields.first(kRead), record);
                  });
}

int zeldb_get_pci_generic_info_list(_ZELDB_PCI_Generic_Info_List* list, char* filter) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  const auto take = [](const Row& row, GenericInfo& record) {
    row.fill(std::span(kListFields).first(kListed), &record);
    return Next::Keep;
  };
  return read_list(handle, list,
                   {.table = tables::kFunctions, .columns = kColumns.first(kListed), .where = filter}, take,
                   {.zero_first = false, .on_error = OnError::PublishAndSucceed});
}

int zeldb_get_aic_drive_pci_info_list(_ZELDB_PCI_Generic_Info_List* list) {
  static constexpr unsigned kDriveVendors[] = {0x8086, 0x1344, 0x144D, 0x1E0F, 0x1179, 0x1C5F};
  Filter<128> filter("(ClsCode=%d) AND (Location=%u) AND (VendorId in (%u,%u,%u,%u,%u,%u))", kNvmeController,
                     kInSlot, kDriveVendors[0], kDriveVendors[1], kDriveVendors[2], kDriveVendors[3],
                     kDriveVendors[4], kDriveVendors[5]);
  return zeldb_get_pci_generic_info_list(list, filter.text());
}
