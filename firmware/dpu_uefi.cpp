// SPDX-License-Identifier: Apache-2.0
#include <syslog.h>

#include <cstdio>
#include <cstring>
#include <span>

#include "db/code_text.h"
#include "db/filter.h"
#include "db/owners.h"
#include "zeldb/firmware.h"
#include "zeldb/pci.h"

using namespace zeldb;

namespace {

using Component = _ZELDB_PldmFirmware;
using Image = _ZELDB_AdapterFirmware;

constexpr unsigned kVendor = 0x15B3;
constexpr unsigned kDevice = 0xA2D6;
constexpr unsigned kUefiDevice = 0xA2D4;  // the UEFI's images carry another device's id
constexpr uint16_t kUefiClassification = 0x8006;
constexpr uint32_t kUefiComponent = 15;

using Version = char[32];

template <size_t N>
void set_software_id(char (&to)[N]) {
  std::snprintf(to, N, "%04X%04X", kVendor, kUefiDevice);
}

Image uefi_image(const Version& version) {
  Image image = {};
  copy_text(image.FirmwareName, "BlueField UEFI");
  copy_text(image.VersionString, version);
  copy_text(image.Description, "UEFI on BlueField ARM Cores");
  copy_text(image.Manufacture, "Mellanox Technologies");
  set_software_id(image.SoftwareID);
  image.Classification = kUefiClassification;
  return image;
}

void store_image(uint32_t slot, const Image& image, std::span<const uint32_t> functions) {
  for (const uint32_t function_key : functions) {
    const int status = zeldb_insert_or_update_firmware_info(function_key, &image);
    if (status == ZELDB_OK) continue;
    syslog(LOG_USER | LOG_ERR,
           "%s: zeldb_insert_or_update_firmware_info failed, slot %u, funkey 0x%x, rc %d\n\n",
           "zeldb_update_dpu_uefi_version", slot, function_key, status);
    return;
  }
}

// Name, keys and place stay those of the component it is made from.
void become_uefi(Component& component, const Version& version) {
  component.DeviceType = kUefiComponent;
  set_software_id(component.SoftwareID);
  copy_text(component.VersionString, version);
  for (char* const text : {component.PendingVersionString, component.PkgVersionString, component.ReleaseDate,
                           component.PendingReleaseDate, component.UpdateErrString}) {
    text[0] = '\0';
  }
  component.UpdateSupport = 0;
  component.Updated = 0;
  component.UpdateMethod = 0;
  component.UpdateAuxInfo = 0;
  component.UpdateErrCode = 0;
  component.Status = 0;
}

// The component to store; null when none of several is the UEFI's.
Component* uefi_component(std::span<Component> components, const Version& version) {
  if (components.size() == 1) {
    become_uefi(components[0], version);
    return &components[0];
  }
  for (Component& component : components) {
    if (component.DeviceType != kUefiComponent) continue;
    copy_text(component.VersionString, version);
    return &component;
  }
  return nullptr;
}

}  // namespace

int zeldb_get_dpu_keys(_ZELDB_PCI_FunKey_List* list) {
  Filter<64> filter("VendorId=%u and DeviceId=%u", kVendor, kDevice);
  return zeldb_get_pci_keys(list, filter.text());
}

int zeldb_update_dpu_uefi_version(uint32_t slot, const char* version) {
  // Selects the functions, and the components too.
  Filter<64> filter("Location=1 and SlotNo=%u and DeviceId=%d", slot, static_cast<int>(kDevice));
  LocalList<_ZELDB_PCI_FunKey_List> functions;
  if (zeldb_get_pci_funkey_list_by_filter(filter.text(), nullptr, functions.out()) != ZELDB_OK ||
      functions.items().empty()) {
    return ZELDB_NO_MATCH;
  }
  Version text = {};
  copy_text(text, version != nullptr ? version : "");
  store_image(slot, uefi_image(text), functions.items());

  LocalList<_ZELDB_PldmFirmware_List> components;
  const int status = zeldb_get_filtered_pldm_firmware_list(components.out(), filter);
  if (status != ZELDB_OK || components.items().empty()) return status;
  return zeldb_insert_or_update_pldm_firmware(kVendor, kDevice, kVendor, kUefiDevice,
                                              uefi_component(components.items(), text));
}
