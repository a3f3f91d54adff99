// SPDX-License-Identifier: Apache-2.0
//
// A file that is said to be an export.
#include "cli/snapshot.h"

#include "cli/command.h"
#include "fuzz/input.h"

using namespace zeldb_fuzz;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Folder folder;
  folder.write("export", Input(data, size).all());
  try {
    zeldb::cli::use_snapshot(folder.path("export"));
  } catch (const zeldb::cli::Failure& failure) {
    expect(std::string_view(failure.what()).starts_with(folder.path("export")), failure.what());
  }
  return 0;
}
