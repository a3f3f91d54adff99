// SPDX-License-Identifier: Apache-2.0
//
// A client in C that knows the library by its file name alone: calls functions of different shapes and prints
// what they give, one line each.
#include <dlfcn.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "zeldb/pci.h"
#include "zeldb/ucm.h"

static void* library;

static void find(const char* name, void* function, size_t size) {
  void* symbol = dlsym(library, name);
  if (symbol == NULL) {
    fprintf(stderr, "%s\n", dlerror());
    exit(1);
  }
  memcpy(function, &symbol, size);
}

#define FIND(function)                         \
  __typeof__(&(function)) call_##function = 0; \
  find(#function, &call_##function, sizeof call_##function)

static void list_of_keys(void) {
  FIND(zeldb_get_pci_keys);
  _ZELDB_PCI_FunKey_List list = {0};
  const int status = call_zeldb_get_pci_keys(&list, NULL);
  printf("keys %d:", status);
  for (uint32_t i = 0; i < list.Count; ++i) printf(" %" PRIu32, list.Items[i]);
  printf("\n");
  free(list.Items);
}

static void one_function(unsigned key) {
  FIND(zeldb_get_pci_function_type);
  unsigned type = 0;
  int status = call_zeldb_get_pci_function_type(key, &type);
  printf("type %d: %u\n", status, type);

  FIND(zeldb_get_pci_cardname_by_funkey);
  char name[8] = "";
  status = call_zeldb_get_pci_cardname_by_funkey(key, name, (int)sizeof name);
  printf("name %d: %s\n", status, name);

  FIND(zeldb_get_pci_id_by_funkey);
  uint16_t id[4] = {0};
  status = call_zeldb_get_pci_id_by_funkey((int)key, &id[0], &id[1], &id[2], &id[3]);
  printf("ids %d: %04x %04x %04x %04x\n", status, id[0], id[1], id[2], id[3]);
}

static void store_setting(unsigned key) {
  FIND(extract_PCISetting_info);
  const PCISetting_info record = {.SettingID = "Collection.Attribute",
                                  .PfaKey = key,
                                  .Type = 1,
                                  .Numchoices = -1,
                                  .Choices = "last field"};
  printf("stored %u\n", call_extract_PCISetting_info(&record));
}

int main(int argc, char** argv) {
  if (argc != 3 || (library = dlopen(argv[1], RTLD_NOW)) == NULL) {
    fprintf(stderr, "usage: %s LIBRARY FUNCTION_KEY\n%s\n", argv[0], argc == 3 ? dlerror() : "");
    return 2;
  }
  const unsigned key = (unsigned)strtoul(argv[2], NULL, 0);
  list_of_keys();
  one_function(key);
  store_setting(key);
  return 0;
}
