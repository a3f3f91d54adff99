// SPDX-License-Identifier: Apache-2.0
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/listing.h"
#include "cli/snapshot.h"
#include "zeldb/firmware.h"

namespace zeldb::cli {

namespace {

using R = retimer_fw_progress_t;

constexpr Column kColumns[] = {
    ZELDB_COLUMN(R, Stage, "STAGE", "Stage of the update"),
    ZELDB_COLUMN(R, Progress, "PROGRESS", "Progress of the stage"),
};

std::vector<R> read_progress(uint32_t slot) {
  R progress = {};
  if (reads_snapshot() || retimer_get_fw_update_progress(slot, &progress) != 0)
    throw Failure("retimer in slot " + std::to_string(slot) + ": no update runs");
  return {progress};
}

}  // namespace

void setup_retimer(CLI::App& app) {
  auto slot = std::make_shared<Number>();
  require(add_number(app, "SLOT", *slot, "", "Number of the slot"));
  Listing(app).view(kColumns, [slot] { return read_progress(**slot); });
}

}  // namespace zeldb::cli
