// SPDX-License-Identifier: Apache-2.0
//
// The JSON files of the platform folder, through the interfaces that read and replace them.
#include <cstring>

#include "fuzz/input.h"
#include "platform/aim_config.h"
#include "platform/cmr.h"
#include "platform/peci.h"
#include "platform/predicates.h"
#include "platform/ptables.h"

using namespace zeldb_fuzz;

namespace {

// A value that was set is pending from then on.
void set_and_get(const std::string& id) {
  cmr_bios_attribute_value request = {};
  request.Operation = CMR_OPERATION_SET;
  request.SettingID = id.c_str();
  request.Value = "\xC3\xA9\"\\";
  const std::string value = request.Value;
  if (cmr_set_bios_attribute_value(&request, 1) != 0) return;
  request = {};
  request.Operation = CMR_OPERATION_GET;
  request.SettingID = id.c_str();
  request.Value = "";
  expect(cmr_get_bios_attribute_value(&request, 1, CMR_SELECT_PENDING) == 0, "a pending value");
  expect(std::string(request.ValueBuffer, strnlen(request.ValueBuffer, sizeof(request.ValueBuffer))) == value,
         "the value that was set: " + id);
}

void read_collection(const char* name) {
  cmr_bios_attribute* attributes = nullptr;
  uint32_t count = 0;
  if (cmr_get_bios_attributes(name, &attributes, &count) != 0) return;
  std::string id;
  for (const cmr_bios_attribute* next = attributes; count-- > 0 && next->Bus != 0xFFFF; ++next) {
    if (name != nullptr && next->AttributeName != nullptr) id = std::string(name) + "." + next->AttributeName;
  }
  cmr_free_bios_attributes(name, attributes, 0);
  if (!id.empty()) set_and_get(id);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Folder folder;
  setenv("ZEL_PLATFORM_DIR", folder.path().c_str(), 1);
  // Not all at once: platform.json can have the other interfaces fail.
  Input input(data, size);
  const bool is_platform = input.pick(2) == 1;
  folder.write("platform.json", is_platform ? input.all() : "{}");
  folder.write("bios.json", is_platform ? "{\"collections\":[]}" : input.all());
  folder.write("aim_config.json", is_platform ? "{}" : input.all());

  if (cmr_api_initialize() == 0) {
    char** names = nullptr;
    uint32_t count = 0;
    if (cmr_get_bios_collections(&names, &count) == 0) {
      for (uint32_t i = 0; i < std::min(count, 3u); ++i) read_collection(names[i]);
    }
    cmr_api_uninitialize();
  }
  void* tables = nullptr;
  ptables_platform platform = {};
  if (ptables_from_ram(&tables) == 0) {
    ptables_lookup_platform_direct(tables, &platform);
    ptables_free(tables);
  }
  is_palomir_platform();
  int value = 0;
  if (aim_config_set_int("bits", 3, 0) == 0 && !is_platform)
    expect(aim_config_get_int("bits", &value) != 0 && value == 3, "the number that was set");
  return 0;
}
