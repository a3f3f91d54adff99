// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_DPU_LOG_H
#define CLI_DPU_LOG_H

#include <vector>

#include "zeldb/firmware.h"

namespace zeldb::cli {

// Of the DPU in a slot; none where there is no DPU, or nothing at all.
std::vector<_ZELDB_DpuLog> read_dpu_log(int slot);

}  // namespace zeldb::cli

#endif
