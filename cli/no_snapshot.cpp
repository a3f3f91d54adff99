// SPDX-License-Identifier: Apache-2.0
//
// For a controller's own table-access library, which cannot open exports.
#include "cli/command.h"
#include "cli/snapshot.h"

namespace zeldb::cli {

SnapshotFolder::SnapshotFolder() = default;

void SnapshotFolder::prepare() const {}

void SnapshotFolder::use(const std::string& file) const {
  use_snapshot(file);
}

void use_snapshot(const std::string& file) {
  throw Failure(file + ": this build of zeldb reads no exports");
}

std::optional<int64_t> time_of_snapshot() {
  return std::nullopt;
}

bool reads_snapshot() {
  return false;
}

}  // namespace zeldb::cli
