// SPDX-License-Identifier: Apache-2.0
#include "cli/words.h"

#include <algorithm>
#include <ctime>
#include <iterator>

namespace zeldb::cli {

namespace {

struct Word {
  uint64_t code;
  const char* text;
};

template <size_t N>
std::string word_of(const Word (&words)[N], uint64_t code) {
  const auto* const known = std::ranges::find(words, code, &Word::code);
  return known != std::end(words) ? known->text : "";
}

// The code is base class and subclass.
constexpr Word kClasses[] = {
    {0x0100, "SCSI"},
    {0x0101, "IDE"},
    {0x0104, "RAID"},
    {0x0105, "ATA"},
    {0x0106, "SATA"},
    {0x0107, "SAS"},
    {0x0108, "NVMe"},
    {0x0180, "storage"},
    {0x0200, "Ethernet"},
    {0x0207, "InfiniBand"},
    {0x0280, "network"},
    {0x0300, "VGA"},
    {0x0302, "3D"},
    {0x0380, "display"},
    {0x0403, "audio"},
    {0x0500, "memory"},
    {0x0502, "CXL memory"},
    {0x0600, "host bridge"},
    {0x0601, "ISA bridge"},
    {0x0604, "PCI bridge"},
    {0x0680, "bridge"},
    {0x0700, "serial"},
    {0x0780, "communication"},
    {0x0800, "interrupts"},
    {0x0801, "DMA"},
    {0x0806, "IOMMU"},
    {0x0807, "event collector"},
    {0x0880, "system"},
    {0x0B40, "coprocessor"},
    {0x0C03, "USB"},
    {0x0C04, "Fibre Channel"},
    {0x0C05, "SMBus"},
    {0x0C06, "InfiniBand"},
    {0x0C80, "serial bus"},
    {0x1080, "encryption"},
    {0x1101, "performance counters"},
    {0x1180, "signal processing"},
    {0x1200, "accelerator"},
};

constexpr Word kFunctionKinds[] = {{2, "Ethernet"}, {3, "Fibre Channel"}, {4, "GPU"}, {16, "accelerator"}};

// These are codes of SMBIOS.
constexpr Word kMemoryTypes[] = {{18, "DDR"},    {19, "DDR2"},   {24, "DDR3"},       {26, "DDR4"},
                                 {29, "LPDDR3"}, {30, "LPDDR4"}, {31, "persistent"}, {32, "HBM"},
                                 {33, "HBM2"},   {34, "DDR5"},   {35, "LPDDR5"},     {36, "HBM3"}};

constexpr Word kPlaces[] = {{1, "slot"}, {2, "backplane bay"}, {3, "M.2 bay"}, {4, "7 mm bay"}};
constexpr Word kDriveForms[] = {{16, "bay"}, {32, "card"}, {48, "M.2"}, {80, "EDSFF"}};
constexpr Word kUpdateStatuses[] = {{2, "waits"}};
constexpr Word kLinks[] = {{0, "down"}, {1, "up"}};
constexpr Word kAnswers[] = {{0, "no"}, {1, "yes"}};

}  // namespace

std::string yes_or_no(uint64_t code) {
  return word_of(kAnswers, code);
}

std::string link_word(uint64_t code) {
  return word_of(kLinks, code);
}

std::string class_word(uint64_t code) {
  return word_of(kClasses, code >> 8U);
}

std::string function_kind_word(uint64_t code) {
  return word_of(kFunctionKinds, code);
}

std::string memory_type_word(uint64_t code) {
  return word_of(kMemoryTypes, code);
}

std::string place_word(uint64_t code) {
  return word_of(kPlaces, code);
}

std::string drive_form_word(uint64_t code) {
  return word_of(kDriveForms, code);
}

std::string update_status_word(uint64_t code) {
  return word_of(kUpdateStatuses, code);
}

std::string date_word(uint64_t seconds) {
  const auto time = static_cast<time_t>(seconds);
  std::tm parts = {};
  char text[32] = "";
  if (gmtime_r(&time, &parts) == nullptr || std::strftime(text, sizeof(text), "%F %TZ", &parts) == 0)
    return "";
  return text;
}

}  // namespace zeldb::cli
