// SPDX-License-Identifier: Apache-2.0
#include "cli/bios_values.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/cmr.h"

namespace zeldb::cli {

namespace {

using R = PCISetting_info;

bool lacks_all(const R& setting) {
  return setting.CurrentValue[0] == 0 && setting.PendingValue[0] == 0;
}
bool lacks_one(const R& setting) {
  return setting.CurrentValue[0] == 0 || setting.PendingValue[0] == 0;
}

template <size_t N>
void ask(const unsigned char* id, int selector, unsigned char (&value)[N]) {
  if (value[0] != 0) return;
  cmr_bios_attribute_value request = {};
  request.Operation = CMR_OPERATION_GET;
  request.SettingID = reinterpret_cast<const char*>(id);
  request.Value = "";
  if (cmr_get_bios_attribute_value(&request, 1, selector) != 0) return;
  // The service need not terminate a value that fills its buffer.
  const size_t length = strnlen(request.ValueBuffer, std::min(N, sizeof(request.ValueBuffer)) - 1);
  std::memcpy(value, request.ValueBuffer, length);
  value[length] = 0;
}

}  // namespace

bool complete_values(std::vector<PCISetting_info>& settings) {
  if (std::ranges::none_of(settings, lacks_one)) return true;
  // The answers may hold secrets, which must not get into the traces.
  for (const char* trace : {"ZEL_PLATFORM_TRACE", "CMR_CALL_LOG"}) unsetenv(trace);
  const bool is_there = cmr_api_initialize() == 0;
  if (is_there) {
    for (R& setting : settings) {
      ask(setting.SettingID, CMR_SELECT_CURRENT, setting.CurrentValue);
      ask(setting.SettingID, CMR_SELECT_PENDING, setting.PendingValue);
    }
  }
  cmr_api_uninitialize();
  if (is_there || std::ranges::none_of(settings, lacks_all)) return true;
  std::fputs(
      "zeldb: warning: values of settings are not known: the parser stores them in a full run alone, and the "
      "BIOS configuration service does not answer\n",
      stderr);
  return false;
}

}  // namespace zeldb::cli
