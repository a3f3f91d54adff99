// SPDX-License-Identifier: Apache-2.0
//
// Processors, and memory modules with the total of their sizes.
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>

#include "zeldb/cpumem.h"

static int print_processors(void) {
  _ZELDB_Id_List ids = {0};
  int status = zeldb_get_processor_list(&ids);
  for (uint32_t i = 0; status == ZELDB_OK && i < ids.Count; ++i) {
    _ZELDB_Processor processor = {._id = ids.Items[i]};
    status = zeldb_get_processor(&processor);
    if (status == ZELDB_OK) {
      printf("%s: %s, %u of %u cores, %u MHz\n", processor.Socket, processor.Version, processor.CoreEnabled,
             processor.CoreCount, processor.CurSpeed);
    }
  }
  free(ids.Items);
  return status;
}

static int print_memory(void) {
  uint64_t total = 0;
  _ZELDB_Id_List ids = {0};
  int status = zeldb_get_memory_list(&ids);
  for (uint32_t i = 0; status == ZELDB_OK && i < ids.Count; ++i) {
    _ZELDB_Memory module = {0};
    status = zeldb_get_memory_by_id(&module, ids.Items[i]);
    if (status == ZELDB_OK) {
      printf("%s: %" PRIu32 " MiB, %u MT/s, %s %s\n", module.DevLocator, module.MemSize, module.ClockSpeed,
             module.Manufacturer, module.PartNo);
      total += module.MemSize;
    }
  }
  free(ids.Items);
  if (status == ZELDB_OK) printf("together %" PRIu64 " MiB\n", total);
  return status;
}

int main(void) {
  int status = print_processors();
  if (status == ZELDB_OK) status = print_memory();
  if (status != ZELDB_OK) fprintf(stderr, "processors_memory: status %d (zeldb/status.h)\n", status);
  return status == ZELDB_OK ? 0 : 1;
}
