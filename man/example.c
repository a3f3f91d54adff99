// SPDX-License-Identifier: Apache-2.0
#include <stdio.h>
#include <stdlib.h>
#include <zeldb/pci.h>

int main(void) {
  _ZELDB_PCI_Adapter_List list = {0};
  const int status = zeldb_get_pci_adapter_list(&list);
  if (status != ZELDB_OK) {
    fprintf(stderr, "adapters: status %d\n", status);
    return 1;
  }
  for (uint32_t i = 0; i < list.Count; ++i) {
    const _ZELDB_PCI_Adapter* adapter = &list.Items[i];
    printf("%d:%d %s\n", adapter->Location, adapter->SlotNo, adapter->CardName);
  }
  free(list.Items);
  return 0;
}
