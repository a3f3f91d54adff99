// SPDX-License-Identifier: Apache-2.0
#include <span>

#include "db/codes.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/syslog_info.h"
#include "db/tables.h"
#include "db/values.h"
#include "zeldb/db.h"
#include "zeldb/firmware.h"

using namespace zeldb;

namespace {

using Vpd = _ZELDB_PCIVpdInfo;

constexpr const char* kFunction = "zeldb_insert_or_update_vpd_info";

constexpr auto kCardName = field_table(ZELDB_FIELD_AS(Vpd, ProductName, "CardName"));
// The part number of a card is its FRU number.
constexpr auto kTexts =
    field_table(ZELDB_FIELD(Vpd, UUID), ZELDB_FIELD(Vpd, ProductName), ZELDB_FIELD(Vpd, Manufacture),
                ZELDB_FIELD(Vpd, SerialNo), ZELDB_FIELD(Vpd, FRUNo), ZELDB_FIELD_AS(Vpd, FRUNo, "PartNo"),
                ZELDB_FIELD(Vpd, Model));
constexpr std::span<const Field> kUuid = std::span(kTexts.fields).first(1);
constexpr std::span<const Field> kAlways = std::span(kTexts.fields).subspan(1, 5);
constexpr std::span<const Field> kModel = std::span(kTexts.fields).last(1);

void name_card(_zel_db_handle_t* handle, ContentValues& values, uint32_t function_key, const Vpd& record) {
  values.put(kCardName.fields, &record, EmptyText::AsText);
  const Filter<64> selector("PCIFuncKey=%u", function_key);
  if (!values.is_complete() ||
      update_db_record(handle, tables::kAdapters, selector, values.get(), nullptr) < 1) {
    syslog_info("%s: Failed to update PCI Adapter name, where:%s\n\n", kFunction,
                static_cast<const char*>(selector));
  }
}

void put_vpd(ContentValues& values, uint32_t function_key, uint32_t pci_key, const Vpd& record) {
  values.put(kUuid, &record, EmptyText::LeftOut);
  values.put(kAlways, &record, EmptyText::AsText);
  values.put_uint("HardwareId", function_key);
  values.put_uint("HardwareTypeId", kPciFunction);
  values.put_uint("SlotNo", pci_key % 0x10000);
  values.put_uint("Location", (pci_key >> 16) & 0xFF);
  values.put(kModel, &record, EmptyText::LeftOut);
}

}  // namespace

int zeldb_insert_or_update_vpd_info(uint32_t functionKey, uint32_t pciKey, const _ZELDB_PCIVpdInfo* record) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (record == nullptr) return ZELDB_INVALID_ARGUMENT;
  ContentValues values(handle, kFunction);
  if (!values) return values.no_memory();
  Vpd vpd = *record;
  terminate_texts(kTexts.fields, &vpd);
  name_card(handle, values, functionKey, vpd);
  values.clear();
  put_vpd(values, functionKey, pciKey, vpd);
  if (!values.is_complete()) return values.no_memory();
  const Filter<64> selector("HardwareId=%u", functionKey);
  if (insert_or_update_db_record(handle, tables::kVpds, selector, values.get(), nullptr) >= 1)
    return ZELDB_OK;
  syslog_info("%s: Failed to insert/update PCI VPD info, where:%s\n\n", kFunction,
              static_cast<const char*>(selector));
  return ZELDB_FAILED;
}
