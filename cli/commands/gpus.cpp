// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/words.h"

namespace zeldb::cli {

namespace {

// The properties that a controller publishes for the GPU in a slot.
constexpr const char* kPublished = "/ac/ovrc/dm/planar/0/gpu_pci_slot";

struct Gpu {
  _ZELDB_PCI_GPU Id;
  _ZELDB_GPU_Device_Info Device;
  uint16_t SlotNo;
  char CardName[129];
  char FirmwareVersion[33];
};

constexpr Column kColumns[] = {
    hex(ZELDB_COLUMN_IN(Gpu, Id, FunKey, "FUNCTION", "Key of the function")),
    ZELDB_COLUMN(Gpu, SlotNo, "SLOT", "Number of the slot"),
    ZELDB_COLUMN(Gpu, CardName, "CARD", "Name of the card"),
    ZELDB_COLUMN_IN(Gpu, Device, VideoMemorySize, "MEMORY", "Size of the video memory"),
    ZELDB_COLUMN_IN(Gpu, Device, VideoMemoryTypeText, "MEMORY TYPE", "Type of the video memory"),
    ZELDB_COLUMN_IN(Gpu, Device, TotalGPUChipNumber, "CHIPS", "Chips on the card"),
    whole(ZELDB_COLUMN(Gpu, FirmwareVersion, "FIRMWARE",
                       "Version of its firmware, if the property store has it")),
    extra(in_words(ZELDB_COLUMN_IN(Gpu, Id, FunType, "TYPE", "Kind of function: 4 GPU, 16 accelerator"),
                   function_kind_word)),
    extra(hex(ZELDB_COLUMN_IN(Gpu, Id, DevKey, "ADAPTER", "Key of the adapter"))),
    extra(hex(ZELDB_COLUMN_IN(Gpu, Id, VendorId, "VENDOR", "PCI vendor id"))),
    extra(hex(ZELDB_COLUMN_IN(Gpu, Id, DeviceId, "DEVICE", "PCI device id"))),
    extra(hex(ZELDB_COLUMN_IN(Gpu, Id, SubVendorId, "SUBVENDOR", "PCI subsystem vendor id"))),
    extra(hex(ZELDB_COLUMN_IN(Gpu, Id, SubDeviceId, "SUBDEVICE", "PCI subsystem id"))),
    extra(ZELDB_COLUMN_IN(Gpu, Device, VideoMemoryType, "MEMORY CODE", "Code of the video memory's type")),
};

struct ChipRow {
  uint32_t FunKey;
  _ZELDB_GPU_Chip Chip;
};

#define CHIP_COLUMN(Member, Heading, Help) ZELDB_COLUMN_IN(ChipRow, Chip, Member, Heading, Help)
constexpr Column kChipColumns[] = {
    hex(ZELDB_COLUMN(ChipRow, FunKey, "FUNCTION", "Key of the function")),
    CHIP_COLUMN(GPUChipIndex, "CHIP", "Index of the chip"),
    CHIP_COLUMN(GPUChipName, "NAME", "Name of the chip"),
    CHIP_COLUMN(GPUChipManufacturer, "MAKER", "Manufacturer"),
    CHIP_COLUMN(GPUChipModel, "MODEL", "Model"),
    whole(CHIP_COLUMN(GPUChipSerialNumber, "SERIAL", "Serial number")),
    CHIP_COLUMN(GPUChipNumberOfEnabledCores, "CORES", "Cores that are enabled"),
    CHIP_COLUMN(GPUChipMaxClockSpeed, "MAX MHZ", "Highest clock rate in MHz"),
    extra(CHIP_COLUMN(GPUChipFamily, "FAMILY", "Family")),
    extra(CHIP_COLUMN(GPUChipPartNumber, "PART", "Part number")),
    extra(CHIP_COLUMN(GPUChipSKU, "SKU", "Stock keeping unit")),
    extra(whole(CHIP_COLUMN(GPUChipUniqueID, "UNIQUE ID", "Unique id"))),
    extra(CHIP_COLUMN(GPUChipFormFactor, "FORM CODE", "Code of the form factor")),
    extra(CHIP_COLUMN(GPUChipFormFactorText, "FORM", "Form factor")),
    extra(CHIP_COLUMN(ExternalBusClockSpeed, "BUS MHZ", "Clock rate of the external bus in MHz")),
    extra(CHIP_COLUMN(GPUChipAddressWidth, "ADDRESS BITS", "Width of the address in bits")),
    extra(CHIP_COLUMN(GPUChipDataWidth, "DATA BITS", "Width of the data in bits")),
};
#undef CHIP_COLUMN

using Slot = std::optional<Place>;

std::vector<_ZELDB_PCI_GPU> read_ids(const Slot& slot) {
  auto ids = all_gpus();
  if (!slot) return ids;
  require_slot(*slot);
  const std::vector<uint32_t> here = functions_in_slot(*slot);
  std::erase_if(ids, [&](const auto& id) { return std::ranges::find(here, id.FunKey) == here.end(); });
  return ids;
}

std::vector<Gpu> read_gpus(const Slot& slot) {
  std::vector<Gpu> rows;
  for (const _ZELDB_PCI_GPU& id : read_ids(slot)) {
    const auto function = find_function(id.FunKey);
    if (!function) continue;
    Gpu& row = rows.emplace_back();
    row.Id = id;
    row.SlotNo = function->SlotNo;
    copy_text(row.CardName, card_name(id.FunKey));
    zeldb_get_gpu_device_info(id.FunKey, &row.Device);
    char version[ZELDB_GPU_PROPERTY_SIZE] = {};
    get_gpu_pci_vpd_info(kPublished, "fw_version", row.SlotNo, version);
    copy_text(row.FirmwareVersion, version);
  }
  return rows;
}

std::vector<ChipRow> read_chips(const Slot& slot) {
  std::vector<ChipRow> rows;
  for (const _ZELDB_PCI_GPU& id : read_ids(slot)) {
    for (const _ZELDB_GPU_Chip& chip : list_of<_ZELDB_GPU_Chip_List>(
             "chips of " + key_text(id.FunKey),
             [&](auto* list) { return zeldb_get_gpu_chip_list(id.FunKey, list); }, {ZELDB_NO_MORE_ROWS})) {
      rows.push_back({id.FunKey, chip});
    }
  }
  return rows;
}

}  // namespace

void setup_gpus(CLI::App& app) {
  auto slot = std::make_shared<Slot>();
  add_place(app, "--slot", *slot, "Only GPUs in this slot");
  Listing(app)
      .view(kColumns, [slot] { return read_gpus(*slot); })
      .order({"SlotNo"})
      .view("--chips", "Chips of each GPU", kChipColumns, [slot] { return read_chips(*slot); });
}

}  // namespace zeldb::cli
