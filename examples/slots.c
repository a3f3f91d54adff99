// SPDX-License-Identifier: Apache-2.0
//
// The adapters, slot by slot, and the PCI functions of each.
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

#include "zeldb/pci.h"

static int print_functions(const _ZELDB_PCI_Adapter* adapter) {
  _ZELDB_PCI_FunKey_List keys = {0};
  int status = zeldb_get_pci_funkey_list_by_slot(adapter->Location, adapter->SlotNo, &keys);
  for (uint32_t i = 0; status == ZELDB_OK && i < keys.Count; ++i) {
    // A list hands out records; a single record is filled in the caller's own.
    _ZELDB_PCI_Generic_Info function = {0};
    status = zeldb_get_pci_generic_info(keys.Items[i], &function);
    if (status == ZELDB_OK) {
      printf("    %04x:%02x:%02x.%x  %04x:%04x\n", function.SegNo, function.BusNo, function.DeviceNo,
             function.FunctionNo, function.VendorId, function.DeviceId);
    }
  }
  free(keys.Items);
  return status;
}

int main(void) {
  _ZELDB_PCI_Adapter_List adapters = {0};
  int status = zeldb_get_pci_adapter_list(&adapters);
  for (uint32_t i = 0; status == ZELDB_OK && i < adapters.Count; ++i) {
    const _ZELDB_PCI_Adapter* adapter = &adapters.Items[i];
    printf("%s %u: %s (%s), health %u\n", adapter->Location == 0 ? "board" : "slot", adapter->SlotNo,
           adapter->CardName, adapter->ConnectorTypeText, adapter->HealthStatus);
    status = print_functions(adapter);
  }
  free(adapters.Items);
  if (status != ZELDB_OK) fprintf(stderr, "slots: status %d (zeldb/status.h)\n", status);
  return status == ZELDB_OK ? 0 : 1;
}
