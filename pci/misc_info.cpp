// SPDX-License-Identifier: Apache-2.0
#include "db/code_text.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "pci/connector_text.h"
#include "pci/hardware_location.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

using Packaging = _ZELDB_PCI_Misc_Info;

constexpr auto kFields =
    field_table(ZELDB_FIELD(Packaging, FoDUid), ZELDB_FIELD(Packaging, MaxDataWidth),
                ZELDB_CODE_FIELD(Packaging, ConnectorLayout, 0), ZELDB_CODE_FIELD(Packaging, PackageType, 0),
                ZELDB_FIELD(Packaging, OtherPackageType), ZELDB_FIELD(Packaging, AIMSpecVersion));

// Package types as CIM_PhysicalPackage numbers them.
constexpr CodeText kPackageTypes[] = {
    {1, "Other"},
    {2, "Rack"},
    {3, "Chassis/Frame"},
    {4, "Cross Connect/Backplane"},
    {5, "Container/Frame Slot"},
    {6, "Power Supply"},
    {7, "Fan"},
    {8, "Sensor"},
    {9, "Module/Card"},
    {10, "Port/Connector"},
    {11, "Battery"},
    {12, "Processor"},
    {13, "Memory"},
    {14, "Power Source/Generator"},
    {15, "Storage Media Package"},
    {16, "Blade"},
    {17, "Blade Expansion"},
    {0x8000, "Onboard"},
};
static_assert(is_code_table(kPackageTypes));

}  // namespace

int zeldb_get_pci_misc_info(unsigned int funKey, _ZELDB_PCI_Misc_Info* record) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (record == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<128> filter("PCIFuncKey=%d", static_cast<int>(funKey));
  return read_one(handle, {.table = tables::kPackaging, .columns = kFields.columns, .where = filter},
                  [&](const Row& row) {
                    row.fill(kFields.fields, record);
                    if (record->ConnectorLayout == 0) {
                      record->ConnectorLayout = static_cast<uint16_t>(connector_by_location(handle, funKey));
                    }
                    copy_text(record->ConnectorLayoutText, pci_connector_type_text(record->ConnectorLayout));
                    copy_text(record->PackageTypeText,
                              text_of(kPackageTypes, record->PackageType, "Unknown"));
                  });
}
