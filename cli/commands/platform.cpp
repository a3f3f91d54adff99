// SPDX-License-Identifier: Apache-2.0
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "zeldb/pci.h"
#include "zeldb/storage.h"

namespace zeldb::cli {

namespace {

struct Facts {
  uint8_t IsAmd;
  uint8_t SegmentBits;
  uint32_t VmdCount;
  uint32_t VmdEnabled;
  uint32_t OtherRaidEnabled;
  uint8_t M2ControllerType;
  uint8_t SevenMmControllerType;
};

constexpr Column kColumns[] = {
    ZELDB_COLUMN(Facts, IsAmd, "AMD", "1 for AMD processors; 255 if it is not determined yet"),
    ZELDB_COLUMN(Facts, SegmentBits, "SEGMENT BITS",
                 "Bits of a PCI segment number; 255 if --probe finds none"),
    ZELDB_COLUMN(Facts, VmdCount, "VMD", "Volume management devices on the board"),
    ZELDB_COLUMN(Facts, VmdEnabled, "VMD RAID", "1 if there is such a device"),
    ZELDB_COLUMN(Facts, OtherRaidEnabled, "RAID", "1 if there is another Intel RAID controller on the board"),
    ZELDB_COLUMN(Facts, M2ControllerType, "M.2 TYPE", "Type of the M.2 controller; 0 if it is not recorded"),
    ZELDB_COLUMN(Facts, SevenMmControllerType, "7MM TYPE",
                 "Type of the 7 mm controller; 0 if it is not recorded"),
};

std::vector<Facts> read_facts(bool probe) {
  enum { kM2 = 0, k7mm = 1, kOther = 0, kVmd = 1 };
  Facts facts = {};
  require_inventory("platform");
  facts.SegmentBits = zeldb_get_pci_seg_bits(probe ? 1 : 0);
  zeldb_is_amd();
  facts.IsAmd = is_amd_platform;
  check(zeldb_get_vmd_count(nullptr, &facts.VmdCount), "volume management devices");
  check(zeldb_vroc_enabled(kVmd, &facts.VmdEnabled), "RAID controllers");
  check(zeldb_vroc_enabled(kOther, &facts.OtherRaidEnabled), "RAID controllers");
  check(zeldb_get_mvl_ctrl_type(&facts.M2ControllerType, kM2), "M.2 controller");
  check(zeldb_get_mvl_ctrl_type(&facts.SevenMmControllerType, k7mm), "7 mm controller");
  return {facts};
}

}  // namespace

void setup_platform(CLI::App& app) {
  auto probe = std::make_shared<bool>(false);
  add_flag(app, "--probe", *probe,
           "Ask the processor for the segment bits if they are not stored, which takes up to 3 s");
  Listing(app).view(kColumns, [probe] { return read_facts(*probe); });
}

}  // namespace zeldb::cli
