// SPDX-License-Identifier: Apache-2.0
//
// The drives of all bays and slots. The library is loaded by its name, as a program does that also has to run
// where there is none.
#include <dlfcn.h>
#include <inttypes.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "zeldb/storage.h"

typedef void read_drives(aim_disk_list_t*);

static void print_drives(read_drives* read) {
  aim_disk_list_t drives = {0};
  read(&drives);
  for (uint32_t i = 0; i < drives.Count; ++i) {
    const aim_disk_info_t* drive = &drives.Items[i];
    printf("%s: %s %s, %s %s, health %u", drive->Location, drive->DriveType, drive->MediaType,
           drive->Manufacture, drive->Capacity, drive->HealthStatus);
    if (drive->RotationRate != 0) printf(", %u revolutions per minute", drive->RotationRate);
    printf("\n");
  }
  // Nothing else tells a database that cannot be reached; the log says why.
  if (drives.Count == 0) fprintf(stderr, "drives: none\n");
  free(drives.Items);
}

int main(int argc, char** argv) {
  void* library = dlopen(argc > 1 ? argv[1] : "libzeldb.so.0", RTLD_NOW);
  void* symbol = library != NULL ? dlsym(library, "zeldb_get_merged_disk_list") : NULL;
  if (symbol == NULL) {
    fprintf(stderr, "drives: %s\n", dlerror());
    return 1;
  }
  read_drives* read = NULL;
  memcpy(&read, &symbol, sizeof read);  // C knows no cast between the two kinds of pointers
  print_drives(read);
  // It keeps its connections until the process ends: a library like this is not unloaded.
  return 0;
}
