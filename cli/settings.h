// SPDX-License-Identifier: Apache-2.0
//
// BIOS settings of PCI functions.
#ifndef CLI_SETTINGS_H
#define CLI_SETTINGS_H

#include <cstdint>
#include <string>
#include <vector>

#include "zeldb/ucm.h"

namespace zeldb::cli {

// Those of one function with an id that begins with prefix.
uint16_t count_settings(uint32_t function, std::string prefix);
std::vector<PCISetting_info> read_settings(uint32_t function, std::string prefix = {},
                                           bool only_flagged = false);

inline std::string text_of(const unsigned char* text) {
  return reinterpret_cast<const char*>(text);
}

// What a setting itself says of a value.
struct Verdict {
  std::string objection;  // empty: none
  std::vector<std::string> doubts;
};
Verdict judge(const PCISetting_info& setting, const std::string& value);

}  // namespace zeldb::cli

#endif
