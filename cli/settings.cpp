// SPDX-License-Identifier: Apache-2.0
#include "cli/settings.h"

#include "cli/arguments.h"
#include "cli/library.h"

namespace zeldb::cli {

namespace {

std::string name_of(uint32_t function) {
  return "settings of " + key_text(function);
}

}  // namespace

uint16_t count_settings(uint32_t function, std::string prefix) {
  uint16_t count = 0;
  check(zeldb_get_pci_configSet_count(static_cast<int>(function), prefix.empty() ? nullptr : prefix.data(),
                                      &count),
        name_of(function));
  return count;
}

std::vector<PCISetting_info> read_settings(uint32_t function, std::string prefix, bool only_flagged) {
  const uint16_t announced = count_settings(function, prefix);
  std::vector<PCISetting_info> settings(announced);
  if (announced == 0) return settings;
  auto* const beginning = prefix.empty() ? nullptr : reinterpret_cast<unsigned char*>(prefix.data());
  uint16_t stored = 0;
  check(zeldb_get_pci_configSet_list(static_cast<int>(function), beginning, announced, settings.data(),
                                     only_flagged ? 1 : 0, &stored),
        name_of(function));
  settings.resize(stored);
  return settings;
}

}  // namespace zeldb::cli
