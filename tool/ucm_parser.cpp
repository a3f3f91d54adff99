// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <exception>

#include "platform/zel_db.h"
#include "ucm/driver.h"

int main(int argc, char** argv) {
  zeldb::ParserState state;
  opterr = 0;
  _zel_db_handle_t* const handle = get_dmdb_handle(argc, argv, 0);
  if (handle == nullptr) return -1;
  for (int option = 0; (option = getopt(argc, argv, "c")) != -1;) {
    if (option == 'c') state.ClearTable = 1;
  }
  try {
    return zeldb::ucm_parse(&state, handle) - 1;
  } catch (const std::exception&) {
    return 0;  // an exception counts as a success
  }
}
