// SPDX-License-Identifier: Apache-2.0
//
// The firmware in slots: the components that an update agent has found, and the images of PCI functions.
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

#include "zeldb/firmware.h"
#include "zeldb/pci.h"

static int print_components(int location, int slot) {
  char filter[64];
  snprintf(filter, sizeof filter, "Location=%d AND SlotNo=%d", location, slot);
  _ZELDB_PldmFirmware_List list = {0};
  const int status = zeldb_get_filtered_pldm_firmware_list(&list, filter);
  for (uint32_t i = 0; status == ZELDB_OK && i < list.Count; ++i) {
    const _ZELDB_PldmFirmware* component = &list.Items[i];
    printf("component %s (%s): %s", component->DeviceName, component->SoftwareID, component->VersionString);
    if (component->Status == 2) printf(", %s waits", component->PendingVersionString);
    if (component->UpdateErrCode != 0) printf(", last update failed: %s", component->UpdateErrString);
    printf("\n");
  }
  free(list.Items);
  return status;
}

static int print_images(int location, int slot) {
  _ZELDB_PCI_FunKey_List keys = {0};
  const int status = zeldb_get_pci_funkey_list_by_slot(location, slot, &keys);
  for (uint32_t i = 0; status == ZELDB_OK && i < keys.Count; ++i) {
    // A version that fills the buffer is not terminated: the last byte stays 0.
    char version[32] = "";
    const int found = zeldb_get_firmware_version((int)keys.Items[i], version, (int)sizeof version - 1);
    if (found == ZELDB_OK) printf("function %08" PRIx32 ": %s\n", keys.Items[i], version);
  }
  free(keys.Items);
  return status;
}

int main(int argc, char** argv) {
  if (argc < 3 || argc % 2 == 0) {
    fprintf(stderr, "usage: slot_firmware LOCATION SLOT [LOCATION SLOT]...\n");
    return 2;
  }
  for (int i = 1; i < argc; i += 2) {
    const int location = (int)strtol(argv[i], NULL, 10);
    const int slot = (int)strtol(argv[i + 1], NULL, 10);
    printf("location %d, slot %d\n", location, slot);
    int status = print_components(location, slot);
    if (status == ZELDB_OK) status = print_images(location, slot);
    if (status != ZELDB_OK) {
      fprintf(stderr, "slot_firmware: status %d (zeldb/status.h)\n", status);
      return 1;
    }
  }
  return 0;
}
