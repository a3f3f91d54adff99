// SPDX-License-Identifier: Apache-2.0
#include "pci/slot_type_text.h"

#include "db/code_text.h"

namespace zeldb {

namespace {

constexpr CodeText kSlotTypes[] = {
    {1, "Other"},
    {3, "ISA"},
    {4, "MCA"},
    {5, "EISA"},
    {6, "PCI"},
    {7, "PC Card (PCMCIA)"},
    {8, "VL-VESA"},
    {9, "Proprietary"},
    {10, "Processor Card Slot"},
    {11, "Proprietary Memory Card Slot"},
    {12, "I/O Riser Card Slot"},
    {13, "NuBus"},
    {14, "PCI - 66MHz Capable"},
    {15, "AGP"},
    {16, "AGP 2X"},
    {17, "AGP 4X"},
    {18, "PCI-X"},
    {19, "AGP 8X"},
    {20, "M.2 A-key"},
    {21, "M.2 E-key"},
    {22, "M.2 B-key"},
    {23, "M.2 M-key"},
    {160, "PC-98/C20"},
    {161, "PC-98/C24"},
    {162, "PC-98/E"},
    {163, "PC-98/Local Bus"},
    {164, "PC-98/Card"},
    {165, "PCI-E"},
    {166, "PCI-E x1"},
    {167, "PCI-E x2"},
    {168, "PCI-E x4"},
    {169, "PCI-E x8"},
    {170, "PCI-E x16"},
    {171, "PCI-E Gen 2"},
    {172, "PCI-E Gen 2 x1"},
    {173, "PCI-E Gen 2 x2"},
    {174, "PCI-E Gen 2 x4"},
    {175, "PCI-E Gen 2 x8"},
    {176, "PCI-E Gen 2 x16"},
    {177, "PCI-E Gen 3"},
    {178, "PCI-E Gen 3 x1"},
    {179, "PCI-E Gen 3 x2"},
    {180, "PCI-E Gen 3 x4"},
    {181, "PCI-E Gen 3 x8"},
    {182, "PCI-E Gen 3 x16"},
    {184, "PCI-E Gen 4"},
    {185, "PCI-E Gen 4 x1"},
    {186, "PCI-E Gen 4 x2"},
    {187, "PCI-E Gen 4 x4"},
    {188, "PCI-E Gen 4 x8"},
    {189, "PCI-E Gen 4 x16"},
};
static_assert(is_code_table(kSlotTypes));

}  // namespace

const char* slot_type_text(uint32_t code) {
  return text_of(kSlotTypes, code, "Unknown");
}

}  // namespace zeldb
