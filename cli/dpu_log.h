// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_DPU_LOG_H
#define CLI_DPU_LOG_H

#include <vector>

#include "zeldb/firmware.h"

namespace zeldb::cli {

// The events of the DPU in a slot; none if there is no DPU.
std::vector<_ZELDB_DpuLog> read_dpu_log(int slot);

}  // namespace zeldb::cli

#endif
