// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/setting_columns.h"
#include "bench/works.h"

namespace bench {

namespace {

template <size_t N>
void put(unsigned char (&field)[N], const std::string& text) {
  std::snprintf(reinterpret_cast<char*>(field), N, "%s", text.c_str());
}

}  // namespace

uint32_t function_key(unsigned number) {
  return 0x01000000U + number;
}

// Half of the texts are empty in turn, so that the filters take more than one shape.
PCISetting_info setting(unsigned number) {
  PCISetting_info record = {};
  const std::string text = std::to_string(number);
  put(record.SettingID, "Slot-" + std::to_string(number % 16) + ".Option" + text);
  put(record.SettingName, "Option " + text);
  record.PfaKey = function_key(number);
  put(record.CurrentValue, number % 2 == 0 ? "Enabled" : "Disabled");
  put(record.PendingValue, number % 3 == 0 ? "Enabled" : "");
  put(record.SuppressIf,
      number % 4 == 0 ? "Slot-1.Mode == \'Legacy\' AND Slot-1.OptionROM == \'Disabled\'" : "");
  put(record.GroupID, "Slot-" + std::to_string(number % 16));
  put(record.GroupName, "Adapter in slot " + std::to_string(number % 16));
  put(record.Mriname, "MRI" + text);
  put(record.ShortDesc, "Selects how option " + text + " behaves when the host starts");
  put(record.FullDesc,
      "Selects how the adapter treats option " + text +
          " when the host starts: enabled, disabled, or as the operating system asks for it");
  put(record.Defvalue, "Enabled");
  put(record.RecordId, text);
  record.Type = 1;
  record.Flags = number % 8;
  record.Numchoices = 2;
  put(record.Choices, "Enabled;Disabled");
  record.Mininstances = 1;
  record.Maxinstances = 1;
  return record;
}

std::string function_filter(uint32_t function_key) {
  return "PCIFuncKey=" + std::to_string(function_key);
}

std::string key_filter(const PCISetting_info& record) {
  return std::string("SettingID=\"") + reinterpret_cast<const char*>(record.SettingID) + "\"";
}

std::string change_filter(const PCISetting_info& record) {
  std::string filter;
  filter.reserve(sizeof(record) + 1024);
  for (const Column& column : kCompared) {
    if (!filter.empty()) filter += " OR ";
    if (!column.text) {
      filter.append(column.name).append("!=").append(std::to_string(number_at(record, column)));
    } else if (const char* text = text_at(record, column); *text == '\0') {
      filter.append(column.name).append(" IS NOT NULL");
    } else {
      filter.append("(").append(column.name).append(" IS NULL OR ").append(column.name).append("!=\"");
      filter.append(text).append("\")");
    }
  }
  return filter;
}

void give_up(const std::string& what) {
  std::fprintf(stderr, "inventory_bench: %s\n", what.c_str());
  std::exit(1);
}

}  // namespace bench
