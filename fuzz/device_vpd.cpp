// SPDX-License-Identifier: Apache-2.0
#include "fuzz/input.h"
#include "scan/pci_functions.h"

using namespace zeldb_fuzz;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string bytes(Input(data, size).all());
  const auto vpd = zeldb::scan::decode_vpd(bytes);
  if (!vpd) return 0;
  for (const std::string& text : {vpd->name, vpd->part, vpd->serial, vpd->maker})
    expect(bytes.find(text) != std::string::npos, "a text stands in the data");
  return 0;
}
