// SPDX-License-Identifier: Apache-2.0
//
// An export is one SQLite file: the tables of both databases under their own names, and beside them
//   ZeldbExport  one row: FormatVersion; ZeldbVersion, Written (UTC) and Masked, for people
//   ZeldbFiles   the files of the platform folder: Name, Content
#ifndef CLI_SNAPSHOT_H
#define CLI_SNAPSHOT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/at_signal.h"

namespace zeldb::cli {

constexpr int64_t kSnapshotVersion = 1;

// Files of the platform folder that the stand-ins read.
constexpr const char* kPlatformFiles[] = {"bios.json", "platform.json", "aim_config.json"};

// Whether an export of a newer schema is taken, although something would be lost.
enum class NewerSchema { Take, Refuse };

// A private folder that exports are unpacked to, one after the other. It is removed by its destructor or when
// a signal ends the process.
class SnapshotFolder {
 public:
  SnapshotFolder();

  // Makes what unpacking needs for any file. Called before processes are forked, so that all of them have it.
  void prepare() const;
  // The path of the tables.
  std::string unpack(const std::string& file, NewerSchema newer) const;
  // From now on this process reads a file that zeldb export has written, instead of the controller. To be
  // called before anything is read.
  void use(const std::string& file) const;

 private:
  std::string folder_;
  std::vector<std::string> paths_;
  std::optional<Removal> removal_;
};

// The same in a folder that is removed when the process ends.
void use_snapshot(const std::string& file);
// Whether this process reads such a file, so that the present state of this machine must not be shown.
bool reads_snapshot();

// The time at which that file was written, by its own account, in seconds since 1970.
std::optional<int64_t> time_of_snapshot();

// The path of the tables of such a file, in this program's schema. A file of a newer schema is refused,
// because something of it would be lost.
std::string unpacked_for_import(const std::string& file);

// Writes the inventory that this process reads to an empty file; name is its name in failures.
void write_snapshot(const std::string& path, const std::string& name, bool masked);

}  // namespace zeldb::cli

#endif
