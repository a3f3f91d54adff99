// SPDX-License-Identifier: Apache-2.0
#include "pci/hc_card_scan.h"

using namespace zeldb;

// Vendor, device, subsystem vendor, subsystem device, name, secondary text, manufacturer, board power in
// watts.
constexpr _ZELDB_HC_Card hc_card_table[ZELDB_HC_CARD_COUNT] = {
    {0x10de, 0x06d1, 0x10de, 0x0771, "Tesla C2050", "N/A", "NVIDIA Corporation", 240},
    {0x10de, 0x06d1, 0x10de, 0x0772, "Tesla C2070", "N/A", "NVIDIA Corporation", 240},
    {0x10de, 0x06d2, 0x10de, 0x0774, "Tesla M2070", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x06d2, 0x10de, 0x0830, "Tesla M2070", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x06d2, 0x10de, 0x0842, "Tesla M2070", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x06d2, 0x10de, 0x0908, "Tesla M2070", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x06de, 0x10de, 0x082f, "Tesla M2050", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x06de, 0x10de, 0x0842, "Tesla M2050", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x06de, 0x10de, 0x0846, "Tesla M2050", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x06de, 0x10de, 0x0866, "Tesla M2050", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x06de, 0x10de, 0x0907, "Tesla M2050", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x06de, 0x10de, 0x091e, "Tesla M2050", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x06df, 0x10de, 0x084d, "Tesla M2070-Q", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x06df, 0x10de, 0x087f, "Tesla M2070-Q", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x1023, 0x10de, 0x097e, "Tesla K40m 12GB Computational Accelerator", "N/A", "NVIDIA Corporation",
     235},
    {0x10de, 0x1094, 0x10de, 0x0888, "Tesla M2075", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x1096, 0x10de, 0x0910, "Tesla C2075", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x13bd, 0x10de, 0x1160, "Tesla M10", "N/A", "NVIDIA Corporation", 225},
    {0x10de, 0x1db8, 0x10de, 0x131d, "Tesla V100-SXM3-32GB-H", "N/A", "NVIDIA Corporation", 450},
    {0x10de, 0x1e30, 0x10de, 0x129e, "Quadro RTX 8000", "N/A", "NVIDIA Corporation", 295},
    {0x10de, 0x1e30, 0x10de, 0x12ba, "Quadro RTX 6000", "N/A", "NVIDIA Corporation", 295},
    {0x1002, 0x678a, 0x1002, 0x030c, "FirePro W8000", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 225},
    {0x1002, 0x678a, 0x1002, 0x0310, "FirePro S9000", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 225},
    {0x1002, 0x678a, 0x1002, 0x0420, "Radeon Sky 700", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 225},
    {0x1002, 0x678a, 0x1002, 0x0422, "Radeon Sky 900", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 300},
    {0x1002, 0x678a, 0x1002, 0x0710, "FirePro S9050", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 225},
    {0x1002, 0x678a, 0x1002, 0x0b0e, "FirePro S10000 Passive", "N/A",
     "Advanced Micro Devices, Inc. [AMD/ATI]", 375},
    {0x1002, 0x678a, 0x1002, 0x0b2a, "FirePro S10000", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 375},
    {0x1002, 0x678a, 0x1028, 0x030c, "FirePro W8000", "N/A", "Dell", 225},
    {0x1002, 0x678a, 0x1028, 0x0710, "FirePro S9000", "N/A", "Dell", 225},
    {0x1002, 0x67a0, 0x1002, 0x0335, "FirePro S9150", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 235},
    {0x1002, 0x67a0, 0x1002, 0x0735, "FirePro S9170", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 275},
    {0x1002, 0x67a0, 0x1028, 0x031f, "FirePro W9100", "N/A", "Dell", 275},
    {0x1002, 0x67a0, 0x1028, 0x0335, "FirePro S9150", "N/A", "Dell", 235},
    {0x1002, 0x67a1, 0x1002, 0x0335, "FirePro S9100", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 225},
    {0x1002, 0x67a1, 0x1028, 0x0335, "FirePro S9100", "N/A", "Dell", 225},
    {0x1002, 0x67c4, 0x1002, 0x0336, "Radeon Pro Duo", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 250},
    {0x1002, 0x67c4, 0x1002, 0x1336, "Radeon Pro Duo", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 250},
    {0x1002, 0x6808, 0x1002, 0x0310, "FirePro S7000", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 150},
    {0x1002, 0x6808, 0x1002, 0x0420, "Radeon Sky 500", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]", 150},
    {0x1002, 0x7300, 0x1002, 0x0b35, "FirePro S9300 X2", "N/A", "Advanced Micro Devices, Inc. [AMD/ATI]",
     300},
    {0x10de, 0x2236, 0x10de, 0x1482, "A10", "N/A", "NVIDIA Corporation", 150},
    {0x10de, 0x2235, 0x10de, 0x145a, "A40", "N/A", "NVIDIA Corporation", 300},
    {0x10de, 0x25b6, 0x10de, 0x14a9, "A16", "N/A", "NVIDIA Corporation", 250},
    {0x10de, 0x25b6, 0x10de, 0x157e, "A2", "N/A", "NVIDIA Corporation", 60},
    {0x10de, 0x20b7, 0x10de, 0x1532, "A30", "N/A", "NVIDIA Corporation", 165},
    {0x10de, 0x20f1, 0x10de, 0x145f, "A100-PCIE-40GB", "N/A", "NVIDIA Corporation", 250},
    {0x10de, 0x20b5, 0x10de, 0x1533, "A100 80GB PCIe", "N/A", "NVIDIA Corporation", 300},
    {0x10de, 0x20b5, 0x10de, 0x1642, "A100 80GB PCIe", "N/A", "NVIDIA Corporation", 300},
    {0x10de, 0x20b2, 0x10de, 0x1463, "A100-SXM4-80GB", "N/A", "NVIDIA Corporation", 400},
    {0x10de, 0x2331, 0x10de, 0x1626, "H100 PCIe", "N/A", "NVIDIA Corporation", 350},
    {0x10de, 0x26b5, 0x10de, 0x169d, "L40", "N/A", "NVIDIA Corporation", 300},
    {0x10de, 0x26b5, 0x10de, 0x17da, "L40", "N/A", "NVIDIA Corporation", 300},
    {0x10de, 0x26b9, 0x10de, 0x1851, "L40S", "N/A", "NVIDIA Corporation", 350},
    {0x10de, 0x27b8, 0x10de, 0x16ca, "L4", "N/A", "NVIDIA Corporation", 70},
    {0x10de, 0x27b8, 0x10de, 0x16ee, "L4", "N/A", "NVIDIA Corporation", 70},
    {0x10de, 0x2230, 0x10de, 0x1459, "RTX A6000", "N/A", "NVIDIA Corporation", 300},
    {0x10de, 0x2231, 0x10de, 0x147e, "RTX A5000", "N/A", "NVIDIA Corporation", 230},
    {0x10de, 0x2232, 0x10de, 0x163c, "RTX A4500", "N/A", "NVIDIA Corporation", 200},
    {0x10de, 0x24b0, 0x10de, 0x14ad, "RTX A4000", "N/A", "NVIDIA Corporation", 140},
    {0x10de, 0x26b1, 0x10de, 0x16a1, "RTX 6000 Ada Generation", "N/A", "NVIDIA Corporation", 300},
};

namespace {

constexpr bool ends(std::span<const char> text) {
  return text.back() == '\0' && text.front() != '\0';
}

constexpr bool is_sound(const _ZELDB_HC_Card& card) {
  return card.VendorId != 0 && ends(card.CardName) && ends(card.SecondaryText) &&
         ends(card.ManufacturerName) && card.Rating % 5 == 0 && card.Rating <= 500;
}
static_assert(std::ranges::all_of(hc_card_table, is_sound));

}  // namespace

int zeldb_get_hc_card_count(void) {
  return ZELDB_HC_CARD_COUNT;
}

const _ZELDB_HC_Card* zeldb_find_hc_card(unsigned int vendor, unsigned int device, unsigned int subVendor,
                                         unsigned int subDevice) {
  return find_card(hc_card_table, {.vendor = static_cast<uint16_t>(vendor),
                                   .device = static_cast<uint16_t>(device),
                                   .sub_vendor = static_cast<uint16_t>(subVendor),
                                   .sub_device = static_cast<uint16_t>(subDevice)});
}
