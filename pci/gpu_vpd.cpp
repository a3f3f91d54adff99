// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <cstring>
#include <exception>

#include "db/codes.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "pci/gpu_property.h"
#include "platform/propdb.h"
#include "zeldb/db.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

using Vpd = _ZELDB_PCIVpdInfo;

constexpr auto kTexts = field_table(
    ZELDB_FIELD(Vpd, UUID), ZELDB_FIELD(Vpd, ProductName), ZELDB_FIELD(Vpd, Manufacture),
    ZELDB_FIELD(Vpd, SerialNo), ZELDB_FIELD(Vpd, PartNo), ZELDB_FIELD(Vpd, Model), ZELDB_FIELD(Vpd, FRUNo));
// The item of the property store that completes each text, in the same order.
constexpr const char* kItems[] = {"uuid", "model", "mfgr", "sn", "pn", "model", "fru"};
static_assert(std::size(kItems) == kTexts.fields.size());

constexpr int kRefused = -1;
constexpr int kNotPublished = -2;

// After more failures in a row the store is not asked any more, so that a controller that publishes nothing
// is not asked for every item of every slot.
constexpr int kMostFailures = 32;
std::atomic<int> failures{0};

}  // namespace

namespace zeldb {

int read_gpu_property(const char* base, const char* item, unsigned slot, char* out, size_t size) {
  if (base == nullptr || item == nullptr || failures > kMostFailures) return kRefused;
  const Filter<128> path("%s/%d/%s", base, static_cast<int>(slot), item);
  if (propdb_get_string(path, out, static_cast<unsigned>(size)) != 0) {
    ++failures;
    return kNotPublished;
  }
  failures = 0;
  return ZELDB_OK;
}

}  // namespace zeldb

int get_gpu_pci_vpd_info(const char* base, const char* item, unsigned int slotNo, char* out) {
  if (out == nullptr) return kRefused;
  char text[ZELDB_GPU_PROPERTY_SIZE] = {};
  const int status = read_gpu_property(base, item, slotNo, text, sizeof(text));
  if (status == ZELDB_OK) std::memcpy(out, text, strnlen(text, sizeof(text) - 1) + 1);
  return status;
}

void set_missing_gpu_vpd_info(_ZELDB_PCIVpdInfo* record, unsigned int slotNo,
                              std::map<std::string, std::string>& changes) {
  const char* const* item = kItems;
  for (const Field& field : kTexts.fields) {
    const char* const name = *item++;
    char* const text = reinterpret_cast<char*>(bytes_of(field, record));
    if (!is_missing(text)) continue;
    if (read_gpu_property(kGpuSlots, name, slotNo, text, field.size) != ZELDB_OK) continue;
    try {
      changes[field.column] = text;
    } catch (const std::exception&) {
      // The record is complete; the table is completed by a later call.
    }
  }
}

int zeldb_get_pci_vpd_info(unsigned int funKey, _ZELDB_PCIVpdInfo* record) {
  static constexpr const char* kColumns[] = {"SlotNo",   "UUID",   "ProductName", "Manufacture",
                                             "SerialNo", "PartNo", "Model",       "FRUNo"};
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (record == nullptr) return ZELDB_INVALID_ARGUMENT;
  unsigned int hardware_id = 0;
  unsigned char hardware_type = 0;
  if (zeldb_get_pci_hardwareidtype_by_funkey(funKey, &hardware_id, &hardware_type) != ZELDB_OK) {
    return ZELDB_INVALID_ARGUMENT;
  }
  const Filter<128> filter("HardwareId=%d AND HardwareTypeId=%d", static_cast<int>(hardware_id),
                           kPciFunction);
  uint32_t slot = 0;
  const OneRow vpd = look_for_one(handle, {.table = tables::kVpds, .columns = kColumns, .where = filter},
                                  [&](const Row& row) {
                                    slot = row.number(0);
                                    row.fill(kTexts.fields, record, 1);
                                  });
  if (!vpd.found) return vpd.status;
  std::map<std::string, std::string> changes;
  set_missing_gpu_vpd_info(record, slot, changes);
  if (!changes.empty()) update_pci_table(tables::kVpds, changes, slot);
  return ZELDB_OK;
}
