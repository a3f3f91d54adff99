// SPDX-License-Identifier: Apache-2.0
//
// The functions that the transcripts call.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "tests/support/transcript.h"
#include "zeldb/ucm.h"

namespace zeldb_test {

ZELDB_RECORD(PCISetting_info, SettingID, SettingName, PfaKey, CurrentValue, PendingValue, SuppressIf, GrayIf,
             GroupID, GroupName, GroupSuppressIf, GroupGrayIf, Mriname, ShortDesc, FullDesc, Type, Flags,
             Mininstances, Maxinstances, Defvalue, Mfg_default, Defaultaction, RecordId, Minim, Maxim, Step,
             Mins, Maxs, Pattern, Numchoices, Choices);

namespace {

using Bytes = unsigned char*;

struct Settings {
  unsigned Count;
  PCISetting_info* Items;
};

const char* condition(const char* column, const char* value) {
  static std::string text;
  text = get_sql_str(column, reinterpret_cast<const unsigned char*>(value));
  return text.c_str();
}

// After a text that is there already.
int set_names(int key, const char* before, Buffer* out) {
  if (out != nullptr) std::strcpy(*out, before);
  return zeldb_get_pci_configID(key, out != nullptr ? *out : nullptr);
}

bool exists(const char* path) {
  const Side ours(false);
  const std::string name = path;
  return under_test([&] { return fileexist(name); });
}

int settings(int key, const char* prefix, int announced, unsigned short only_flagged, uint16_t* stored,
             Settings* list) {
  const Side ours(false);
  PCISetting_info* records = nullptr;
  if (list != nullptr) records = static_cast<PCISetting_info*>(std::calloc(20, sizeof(PCISetting_info)));
  std::string text = prefix != nullptr ? prefix : "";
  const auto bytes = prefix != nullptr ? reinterpret_cast<Bytes>(text.data()) : nullptr;
  const int status = under_test(
      [&] { return zeldb_get_pci_configSet_list(key, bytes, announced, records, only_flagged, stored); });
  if (list != nullptr) *list = {status == 0 ? *stored : 0U, records};
  return status;
}

// "ID=VALUE ID=VALUE"; a text that fills its place is not terminated.
int save(const char* values, int count) {
  const Side ours(false);
  std::vector<_ZELDB_PCI_ConfigSet_Entry> entries;
  std::istringstream words(values != nullptr ? values : "");
  for (std::string word; words >> word;) {
    _ZELDB_PCI_ConfigSet_Entry& made = entries.emplace_back();
    const size_t end = word.find('=');
    word.copy(made.SettingID, std::min(end, sizeof(made.SettingID)));
    word.copy(made.PendingValue, sizeof(made.PendingValue), end + 1);
  }
  return under_test(
      [&] { return zeldb_save_pci_configSet_list(values != nullptr ? entries.data() : nullptr, count); });
}

}  // namespace

#define F(function) ZELDB_CALL(function)
const Family kFamily = {ZELDB_TRANSCRIPTS,
                        calls(F(condition), F(exists), F(set_names), F(zeldb_get_pci_configSet_count),
                              F(settings), F(save), F(extract_PCISetting_info), F(zeldb_merge_aim_ucm_pfa))};

}  // namespace zeldb_test
