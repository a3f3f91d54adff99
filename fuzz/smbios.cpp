// SPDX-License-Identifier: Apache-2.0
#include "scan/smbios.h"

#include <set>

#include "fuzz/input.h"

using namespace zeldb_fuzz;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const auto found = zeldb::scan::decode_smbios(Input(data, size).all());
  std::set<std::pair<std::string, std::string>> keys;
  for (const zeldb::scan::Row& row : found.rows) {
    expect(keys.emplace(row.table, row.key).second, "a key names one row");
    for (const zeldb::scan::Cell& cell : row.cells) {
      const auto* const text = std::get_if<std::string>(&cell.value);
      if (text == nullptr) continue;
      expect(!text->empty() && text->size() <= 255, std::string(cell.column) + " fits its column");
      for (const char c : *text)
        expect(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F, "no control character stays");
    }
  }
  for (const zeldb::scan::Slot& slot : found.slots)
    expect(slot.device.value_or(0) < 32, "a device has five bits");
  return 0;
}
