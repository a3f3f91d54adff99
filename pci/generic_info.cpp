// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <span>

#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

using R = _ZELDB_PCI_Generic_Info;

// Controllers are asked for FunType twice; the second answer is not looked at.
constexpr FieldTable kRequested{ZELDB_FIELD(R, _id),
                                ZELDB_FIELD(R, BridgeId),
                                ZELDB_FIELD(R, SegNo),
                                ZELDB_FIELD(R, BusNo),
                                ZELDB_FIELD(R, DeviceNo),
                                ZELDB_FIELD(R, FunctionNo),
                                ZELDB_FIELD(R, VendorId),
                                ZELDB_FIELD(R, DeviceId),
                                ZELDB_FIELD(R, RevId),
                                ZELDB_FIELD(R, ClsCode),
                                ZELDB_FIELD(R, SubVendorId),
                                ZELDB_FIELD(R, SubDeviceId),
                                ZELDB_FIELD(R, SlotNo),
                                ZELDB_FIELD(R, Location),
                                ZELDB_FIELD(R, SlotDesignation),
                                ZELDB_FIELD(R, SlotType),
                                ZELDB_FIELD(R, SlotDataBusWidth),
                                ZELDB_FIELD(R, Hotplug),
                                ZELDB_FIELD(R, PCIType),
                                ZELDB_FIELD(R, BladeSlotPort),
                                ZELDB_FIELD(R, NodeIndex),
                                ZELDB_FIELD(R, FunType),
                                ZELDB_FIELD_OR(R, LanesInUse, 4),
                                ZELDB_FIELD_OR(R, MaxLanes, 16),
                                ZELDB_FIELD_OR(R, MaxPCIeType, 4),
                                ZELDB_FIELD_OR(R, PCIeType, 3),
                                ZELDB_FIELD(R, DevKey),
                                ZELDB_FIELD(R, FunType)};
constexpr size_t kListed = 26;
constexpr size_t kRead = 27;
constexpr std::span<const Field> kFields(kRequested.fields);

// Of a list: the texts one character shorter than in a single record.
constexpr auto kListFields = [] {
  auto fields = kRequested.fields;
  for (Field& field : fields) {
    if (field.kind == Kind::Text) --field.size;
  }
  return fields;
}();
constexpr std::span<const char* const> kColumns(kRequested.columns);

constexpr const char* kFunctions = "PCIs";
constexpr unsigned kNvmeController = 0x010802;
constexpr unsigned kInSlot = 1;

}  // namespace

int zeldb_get_pci_generic_info(unsigned int funKey, _ZELDB_PCI_Generic_Info* record) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (record == nullptr) return ZELDB_INVALID_ARGUMENT;
  const _zel_db_param_t key[] = {bound(funKey)};
  return read_one(handle, {.table = kFunctions, .columns = kColumns, .where = "FunKey=?", .params = key},
                  [&](const Row& row) {
                    std::memset(record->SlotDesignation, 0, sizeof(record->SlotDesignation));
                    row.fill(kFields.first(kRead), record);
                  });
}

int zeldb_get_pci_generic_info_list(_ZELDB_PCI_Generic_Info_List* list, char* filter) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  const auto take = [](const Row& row, R& record) {
    row.fill(std::span(kListFields).first(kListed), &record);
    return Next::Keep;
  };
  return read_list(handle, list, {.table = kFunctions, .columns = kColumns.first(kListed), .where = filter},
                   take, {.zero_first = false, .on_error = OnError::PublishAndSucceed});
}

int zeldb_get_aic_drive_pci_info_list(_ZELDB_PCI_Generic_Info_List* list) {
  static constexpr unsigned kDriveVendors[] = {0x8086, 0x1344, 0x144D, 0x1E0F, 0x1179, 0x1C5F};
  Filter<128> filter("(%s=%u) AND (%s=%u) AND (%s in (%u,%u,%u,%u,%u,%u))", "ClsCode", kNvmeController,
                     "Location", kInSlot, "VendorId", kDriveVendors[0], kDriveVendors[1], kDriveVendors[2],
                     kDriveVendors[3], kDriveVendors[4], kDriveVendors[5]);
  return zeldb_get_pci_generic_info_list(list, filter.text());
}
