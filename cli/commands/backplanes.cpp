// SPDX-License-Identifier: Apache-2.0
#include "cli/command.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "zeldb/storage.h"

namespace zeldb::cli {

namespace {

struct Totals {
  uint8_t MaxDrives;
  uint8_t InstalledDrives;
};

constexpr Column kColumns[] = {
    ZELDB_COLUMN(Totals, MaxDrives, "BAYS", "Bays of all backplanes"),
    ZELDB_COLUMN(Totals, InstalledDrives, "DRIVES", "Drives that are installed in them"),
};

std::vector<Totals> read_totals() {
  Totals totals = {};
  check(zeldb_get_bp_drive_count(&totals.MaxDrives, &totals.InstalledDrives), "backplanes");
  return {totals};
}

}  // namespace

void setup_backplanes(CLI::App& app) {
  Listing(app).view(kColumns, read_totals);
}

}  // namespace zeldb::cli
