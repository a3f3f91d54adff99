// SPDX-License-Identifier: Apache-2.0
#include "db/code_text.h"
#include "db/field.h"
#include "db/filter.h"
#include "db/read.h"
#include "db/tables.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

using Function = _ZELDB_PCI_GPU;
using Device = _ZELDB_GPU_Device_Info;
using Chip = _ZELDB_GPU_Chip;

constexpr auto kFunctionFields =
    field_table(ZELDB_FIELD(Function, FunType), ZELDB_FIELD(Function, FunKey), ZELDB_FIELD(Function, DevKey),
                ZELDB_FIELD(Function, VendorId), ZELDB_FIELD(Function, DeviceId),
                ZELDB_FIELD(Function, SubVendorId), ZELDB_FIELD(Function, SubDeviceId));

constexpr auto kDeviceFields =
    field_table(ZELDB_CODE_FIELD(Device, VideoMemoryType, 0), ZELDB_FIELD(Device, VideoMemorySize),
                ZELDB_FIELD(Device, TotalGPUChipNumber));

constexpr auto kChipFields = field_table(
    ZELDB_FIELD(Chip, GPUChipName), ZELDB_FIELD(Chip, GPUChipManufacturer), ZELDB_FIELD(Chip, GPUChipModel),
    ZELDB_FIELD(Chip, GPUChipPartNumber), ZELDB_FIELD(Chip, GPUChipSKU),
    ZELDB_FIELD(Chip, GPUChipSerialNumber), ZELDB_FIELD(Chip, GPUChipFamily),
    ZELDB_FIELD(Chip, GPUChipUniqueID), ZELDB_CODE_FIELD(Chip, GPUChipFormFactor, 0),
    ZELDB_FIELD(Chip, GPUChipIndex), ZELDB_FIELD(Chip, GPUChipNumberOfEnabledCores),
    ZELDB_FIELD(Chip, ExternalBusClockSpeed), ZELDB_FIELD(Chip, GPUChipMaxClockSpeed),
    ZELDB_FIELD(Chip, GPUChipAddressWidth), ZELDB_FIELD(Chip, GPUChipDataWidth));

constexpr CodeText kMemoryTypes[] = {
    {1, "Reserved"},
    {2, "Reserved"},
    {3, "VRAM"},
    {4, "DRAM"},
    {5, "SRAM"},
    {6, "WRAM"},
    {7, "EDO RAM"},
    {8, "Burst Synchronous"},
    {9, "Pipelined Burst SRAM"},
    {10, "CDRAM"},
    {11, "3DRAM"},
    {12, "SDRAM"},
    {13, "SGRAM"},
};
constexpr CodeText kFormFactors[] = {
    {2, "SIP"},   {3, "DIP"},   {4, "ZIP"},    {5, "SOJ"},   {6, "Proprietaty"}, {7, "SIMM"},
    {8, "DIMM"},  {9, "TSOP"},  {10, "PGA"},   {11, "RIMM"}, {12, "SODIMM"},     {13, "SRIMM"},
    {14, "SMD"},  {15, "SSMP"}, {16, "QFP"},   {17, "TQFP"}, {18, "SOIC"},       {19, "LCC"},
    {20, "PLCC"}, {21, "BGA"},  {22, "FPBGA"}, {23, "LGA"},
};
static_assert(is_code_table(kMemoryTypes) && is_code_table(kFormFactors));

}  // namespace

int zeldb_get_pci_gpu_list(_ZELDB_PCI_GPU_List* list) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  *list = {};
  const Filter<128> in_slots("((FunType=%d OR FunType=%d) AND (Location=%d))", 4, 16, 1);
  Result result;
  const int status = query(
      handle, {.table = tables::kFunctions, .columns = kFunctionFields.columns, .where = in_slots}, result);
  if (status != ZELDB_OK || !result || result.row_count() == 0) return status;
  // The running index is one byte, and wraps.
  return collect<uint8_t>(result, list, [](const Row& row, Function& function) {
    row.fill(kFunctionFields.fields, &function);
    return Next::Keep;
  });
}

int zeldb_get_gpu_device_info(unsigned int funKey, _ZELDB_GPU_Device_Info* record) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (record == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<128> filter("PCIFuncKey=%d", static_cast<int>(funKey));
  return read_one(handle, {.table = tables::kGpus, .columns = kDeviceFields.columns, .where = filter},
                  [&](const Row& row) {
                    row.fill(kDeviceFields.fields, record);
                    copy_text(record->VideoMemoryTypeText,
                              text_of(kMemoryTypes, record->VideoMemoryType, "Unknown"));
                  });
}

int zeldb_get_gpu_chip_list(unsigned int funKey, _ZELDB_GPU_Chip_List* list) {
  _zel_db_handle_t* const handle = inventory();
  if (handle == nullptr) return ZELDB_NO_HANDLE;
  if (list == nullptr) return ZELDB_INVALID_ARGUMENT;
  const Filter<128> filter("PCIFuncKey=%d", static_cast<int>(funKey));
  return read_list(
      handle, list, {.table = tables::kGpuChips, .columns = kChipFields.columns, .where = filter},
      [](const Row& row, Chip& chip) {
        row.fill(kChipFields.fields, &chip);
        copy_text(chip.GPUChipFormFactorText, text_of(kFormFactors, chip.GPUChipFormFactor, "Unknown"));
        return Next::Keep;
      });
}
