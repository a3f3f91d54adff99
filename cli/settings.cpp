// SPDX-License-Identifier: Apache-2.0
#include "cli/settings.h"

#include <algorithm>
#include <utility>

#include "cli/arguments.h"
#include "cli/inventory.h"
#include "cli/library.h"
#include "cli/secrets.h"

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
  auto settings = read_settings_with_secrets(function, std::move(prefix), only_flagged);
  std::ranges::for_each(settings, [](PCISetting_info& setting) { hide_secret(setting); });
  return settings;
}

std::vector<PCISetting_info> read_settings_with_secrets(uint32_t function, std::string prefix,
                                                        bool only_flagged) {
  auto* const beginning = prefix.empty() ? nullptr : reinterpret_cast<unsigned char*>(prefix.data());
  if (prefix.empty() && !may_have_settings(function)) return {};
  // The parser may change their number between the two questions.
  for (int attempt = 0;; ++attempt) {
    constexpr int kAttempts = 5;
    const uint16_t announced = count_settings(function, prefix);
    std::vector<PCISetting_info> settings(announced);
    if (announced == 0) return settings;
    uint16_t stored = 0;
    const int status = zeldb_get_pci_configSet_list(static_cast<int>(function), beginning, announced,
                                                    settings.data(), only_flagged ? 1 : 0, &stored);
    if (status == ZELDB_COUNT_MISMATCH && attempt < kAttempts) continue;
    check(status, name_of(function));
    settings.resize(stored);
    return settings;
  }
}

}  // namespace zeldb::cli
