// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <span>

#include "db/code_text.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "pci/connector_text.h"
#include "pci/hardware_location.h"
#include "pci/slot_type_text.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

using Adapter = _ZELDB_PCI_Adapter;

constexpr const char* kGrouped[] = {"PCIKey",   "NodeNo",       "SlotNo",        "SegNo",    "BusNo",
                                    "DeviceNo", "HealthStatus", "ConnectorType", "CardName", "AIMSupported",
                                    "Location", "PCIFuncKey",   "count(*)"};
enum Column {
  kPciKey,
  kNodeNo,
  kSlotNo,
  kSegNo,
  kBusNo,
  kDeviceNo,
  kHealthStatus,
  kConnectorType,
  kCardName,
  kAimSupported,
  kLocation,
  kFunctionKey,
  kFunctionCount
};
// Without a group an aggregate always has one row, so it is left out where the question is whether rows
// exist.
constexpr std::span<const char* const> kUngrouped = std::span(kGrouped).first(kFunctionCount);

constexpr const char* kHiddenCard = "Hot Swap SSD";
constexpr uint8_t kAimByInventory = 1;
constexpr uint8_t kAimByMerge = 3;
constexpr uint8_t kNoPackage = 0xFF;

class NcsiIds {
 public:
  // None when they cannot be read.
  NcsiIds() { zeldb_get_ncsi_id_list(ids_.out()); }

  void join(Adapter& adapter) const {
    adapter.NCSIPresent = 0;
    adapter.PackageID1 = adapter.PackageID2 = kNoPackage;
    for (const _ZELDB_NCSI_Id& id : ids_.items()) {
      if (id.Location != adapter.Location || id.SlotNo != adapter.SlotNo) continue;
      adapter.NCSIPresent = 1;
      adapter.PackageID1 = id.PackageID1;
      adapter.PackageID2 = id.PackageID2;
      return;
    }
  }

 private:
  LocalList<_ZELDB_NCSI_Id_List> ids_;
};

// The adapter of one group of rows, with what is not part of its record.
struct Group {
  Adapter record;
  uint32_t function_key;
  uint32_t functions;
};

bool read_connector_code(const Row& row, uint16_t& code) {
  code = 0;
  if (row.is_null(kConnectorType)) return true;
  uint32_t value = 0;
  if (row.read_code(kConnectorType, value) != ZELDB_OK) return false;
  code = static_cast<uint16_t>(value);
  return true;
}

// False if a column cannot be read; the adapter is then left out.
bool read_group(const Row& row, Group& group) {
  Adapter& record = group.record;
  const struct {
    int column;
    uint16_t* value;
  } words[] = {{kNodeNo, &record.NodeNo},
               {kSlotNo, &record.SlotNo},
               {kSegNo, &record.SegNo},
               {kBusNo, &record.BusNo},
               {kDeviceNo, &record.DeviceNo}};
  if (row.read(kPciKey, record.PCIKey) != ZELDB_OK || record.PCIKey == 0) return false;
  for (const auto& word : words) {
    if (row.read(word.column, *word.value) != ZELDB_OK) return false;
  }
  return row.read(kHealthStatus, record.HealthStatus) == ZELDB_OK &&
         read_connector_code(row, record.ConnectorType) && row.text(kCardName, record.CardName) == ZELDB_OK &&
         std::strstr(record.CardName, kHiddenCard) == nullptr &&
         row.read(kAimSupported, record.AIMSupported) == ZELDB_OK;
}

// An adapter with a function that the adapter inventory supports belongs to that inventory.
void promote(_zel_db_handle_t* handle, Adapter& record) {
  if (record.AIMSupported != kAimByMerge) return;
  const Filter<64> filter("PCIKey=%d AND AIMSupported=%d", static_cast<int>(record.PCIKey), kAimByInventory);
  Result result;
  const int status =
      query(handle, {.table = tables::kAdapters, .columns = kUngrouped, .where = filter}, result);
  if (status == ZELDB_OK && result.next()) record.AIMSupported = kAimByInventory;
}

// The name of this card tells only one of its two controllers.
void correct_card_name(const Group& group, Adapter& record) {
  static constexpr const char* kCombined =
      "Broadcom 57416 10GBASE-T 2-port + 5720 1GbE 2-port OCP Ethernet Adapter";
  if (std::strncmp(record.CardName, "Broadcom 57", 11) != 0 ||
      std::strstr(record.CardName, "OCP") == nullptr || group.functions != 4) {
    return;
  }
  _ZELDB_PCI_Generic_Info info = {};
  if (zeldb_get_pci_generic_info(group.function_key, &info) != ZELDB_OK) return;
  const bool combined = (info.DeviceId == 0x165F && info.SubDeviceId == 0x4106) ||
                        (info.DeviceId == 0x16D8 && info.SubDeviceId == 0x4163);
  if (combined) copy_text(record.CardName, kCombined);
}

void set_connector_text(_zel_db_handle_t* handle, uint32_t function_key, Adapter& record) {
  const char* text = nullptr;
  if (record.AIMSupported == kAimByInventory) {
    if (record.ConnectorType == 0) {
      record.ConnectorType = static_cast<uint16_t>(connector_by_location(handle, function_key));
    }
    text = pci_connector_type_text(record.ConnectorType);
  } else if (record.Location == 0) {
    record.ConnectorType = kConnectorOnboard;
    text = pci_connector_type_text(kConnectorOnboard);
  } else {
    text = slot_type_text(record.ConnectorType);
  }
  copy_text(record.ConnectorTypeText, text);
}

Next take_adapter(_zel_db_handle_t* handle, const NcsiIds& ncsi, const Row& row, Adapter& adapter) {
  Group group = {};
  Adapter& record = group.record;
  if (!read_group(row, group)) return Next::Skip;
  promote(handle, record);
  if (row.read(kLocation, record.Location) != ZELDB_OK) return Next::Skip;
  ncsi.join(record);
  if (row.read(kFunctionKey, group.function_key) != ZELDB_OK ||
      row.read(kFunctionCount, group.functions) != ZELDB_OK) {
    return Next::Skip;
  }
  correct_card_name(group, record);
  set_connector_text(handle, group.function_key, record);
  adapter = record;
  return Next::Keep;
}

}  // namespace

int zeldb_get_ncsi_id_list(_ZELDB_NCSI_Id_List* list) {
  using Id = _ZELDB_NCSI_Id;
  static constexpr const char* kColumns[] = {"SlotNo", "Location", "PackageID1", "PackageID2"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  Result result;
  const int status = query(handle, {.table = tables::kNcsiIds, .columns = kColumns}, result);
  if (status != ZELDB_OK) return status;
  *list = {};
  if (!result) return ZELDB_OK;
  const auto take = [](const Row& row, Id& id) {
    const bool complete = row.read(0, id.SlotNo) == ZELDB_OK && row.read(1, id.Location) == ZELDB_OK &&
                          row.read(2, id.PackageID1) == ZELDB_OK && row.read(3, id.PackageID2) == ZELDB_OK;
    return complete ? Next::Keep : Next::Skip;
  };
  // The count is one byte, and wraps.
  return collect<uint8_t>(result, list, take, {.zero_ends_well = true});
}

int zeldb_get_pci_adapter_list(_ZELDB_PCI_Adapter_List* list) {
  const Connection connection("dmdb");
  if (!connection) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  *list = {};
  _zel_db_handle_t* const handle = connection.get();
  const Reads reads(handle);
  const Filter<128> grouped("1 GROUP BY PCIKey");
  Result result;
  const int status =
      query(handle, {.table = tables::kAdapters, .columns = kGrouped, .where = grouped}, result);
  if (status != ZELDB_OK || !result) return status;
  MallocArray<Adapter> adapters;
  if (!make_room(result, adapters)) return ZEL_DB_STATUS_NO_MEMORY;
  const NcsiIds ncsi;
  return collect_into(adapters, result, list, [&](const Row& row, Adapter& adapter) {
    return take_adapter(handle, ncsi, row, adapter);
  });
}
