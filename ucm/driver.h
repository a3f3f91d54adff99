// SPDX-License-Identifier: Apache-2.0
//
// The parser's run: reads the BIOS configuration collections, stores each PCI setting and merges the
// adapters.
#ifndef UCM_DRIVER_H
#define UCM_DRIVER_H

#include <cstdint>

#include "platform/zel_db.h"

namespace zeldb {

struct ParserState {
  ParserState() = default;
  ParserState(const ParserState&) = delete;
  ParserState& operator=(const ParserState&) = delete;
  ~ParserState();

  zel_db_content_values_t* Values = nullptr;
  uint32_t ClearTable = 0;
};

// 1 on success, 0 on failure. Throws std::logic_error for a collection without a name in lite mode.
int ucm_parse(ParserState* state, _zel_db_handle_t* handle);

// Deletes all settings. 1 on success; 0 after saying so on standard output.
int clear_pci_setting_table(_zel_db_handle_t* handle);

}  // namespace zeldb

#endif
