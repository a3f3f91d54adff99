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

// All other types are choices.
constexpr uint32_t kNumberType = 3;
constexpr uint32_t kTextType = 4;
constexpr uint32_t kPlainType = 5;

// The settings of one function whose id begins with prefix. The result of read_settings may be shown: its
// secrets are hidden.
uint16_t count_settings(uint32_t function, std::string prefix);
std::vector<PCISetting_info> read_settings(uint32_t function, std::string prefix = {},
                                           bool only_flagged = false);
std::vector<PCISetting_info> read_settings_with_secrets(uint32_t function, std::string prefix = {},
                                                        bool only_flagged = false);

inline std::string text_of(const unsigned char* text) {
  return reinterpret_cast<const char*>(text);
}

// The result of checking a value against the rules of its setting.
struct Verdict {
  std::string objection;  // empty: none
  std::vector<std::string> doubts;
};
Verdict judge(const PCISetting_info& setting, const std::string& value);

}  // namespace zeldb::cli

#endif
