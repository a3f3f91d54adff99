// SPDX-License-Identifier: Apache-2.0
#include "firmware/classification.h"

#include <cstdlib>

#include "db/code_text.h"

namespace zeldb {

namespace {

// 1 to 13 as DMTF's CIM_SoftwareIdentity has them; the groups from 0x8000 and from 0x8100 on are the system's
// own.
constexpr CodeText kClassifications[] = {
    {1, "Other"},
    {2, "Driver"},
    {3, "Configuration Software"},
    {4, "Application Software"},
    {5, "Instrumentation"},
    {6, "Firmware/BIOS"},
    {7, "Diagnostic Software"},
    {8, "Operating System"},
    {9, "Middleware"},
    {10, "Firmware"},
    {11, "BIOS/Fcode"},
    {12, "Support/Service Pack"},
    {13, "Software Bundle"},
    {0x8000, "Driver Firmware"},
    {0x8001, "EFI"},
    {0x8002, "BIOS"},
    {0x8003, "FCODE"},
    {0x8004, "PXE"},
    {0x8005, "Boot ROM"},
    {0x8006, "UEFI"},
    {0x8007, "CIM Provider"},
    {0x8008, "Bundled Driver and Firmware"},
    {0x8100, "VPD-V0"},
    {0x8101, "Bootcode"},
    {0x8102, "ASF firmware"},
    {0x8103, "Extended VPD"},
    {0x8104, "FCoE firmware"},
    {0x8105, "FCoE boot driver"},
    {0x8106, "IPMI firmware"},
    {0x8107, "iSCSI boot driver"},
    {0x8108, "iSCSI boot driver to support IPv6"},
    {0x8109, "iSCSI boot driver to support IPv4 and IPv6"},
    {0x810A, "L2 firmware"},
    {0x810B, "Management firmware"},
    {0x810C, "MBA firmware. Including PXE, UEFI, FCode combinations"},
    {0x810D, "MFW modular firmware"},
    {0x810E, "NCSI firmware"},
    {0x810F, "UMP firmware"},
    {0x8110, "User block"},
};
static_assert(is_code_table(kClassifications));

}  // namespace

const char* classification_text(uint16_t code) {
  return text_of(kClassifications, code, "Unknown");
}

void read_classification(const Row& row, int column, _ZELDB_AdapterFirmware& image) {
  char digits[6];  // codes are stored as decimal numbers
  const bool readable = row.text(column, digits) == 0;
  image.Classification = readable ? static_cast<uint16_t>(std::strtoul(digits, nullptr, 0)) : 0;
  copy_text(image.ClassificationText, classification_text(image.Classification));
}

}  // namespace zeldb
