// SPDX-License-Identifier: Apache-2.0
#include "cli/snapshot.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>
#include <vector>

#include "cli/at_signal.h"
#include "cli/command.h"
#include "cli/file.h"
#include "cli/sqlite_file.h"

namespace zeldb::cli {

namespace {

namespace fs = std::filesystem;

constexpr const char* kInventory = "inventory.sqlite";

bool snapshot_in_use = false;
std::optional<int64_t> snapshot_time;

Failure no_export(const std::string& file) {
  return Failure(file + ": is no export of zeldb");
}

// Checked here because SQLite would give a vaguer reason, and wait for a pipe.
void require_file(const std::string& file) {
  using std::string_view_literals::operator""sv;
  constexpr std::string_view kStart = "SQLite format 3\0"sv;
  if (read_file(file, kStart.size()) != kStart) throw no_export(file);
}

bool has_table(const SqliteFile& inventory, const std::string& table) {
  SqliteStatement found =
      inventory.prepare("SELECT 1 FROM export.sqlite_schema WHERE type='table' AND name=?");
  found.bind_text(1, table);
  return found.step();
}

void require_export(const SqliteFile& inventory, const std::string& file) {
  if (!has_table(inventory, "ZeldbExport")) throw no_export(file);
  SqliteStatement header = inventory.prepare("SELECT FormatVersion FROM export.ZeldbExport");
  if (!header.step()) throw no_export(file);
  const int64_t version = header.number(0);
  if (version > kSnapshotVersion) {
    throw Failure(file + ": written by a newer zeldb (format " + std::to_string(version) +
                  ", known are up to " + std::to_string(kSnapshotVersion) + ")");
  }
}

std::optional<int64_t> time_in(const SqliteFile& inventory) {
  SqliteStatement known =
      inventory.prepare("SELECT 1 FROM pragma_table_info('ZeldbExport', 'export') WHERE name='Written'");
  if (!known.step()) return std::nullopt;
  // Not before 1970 and not after the year 9999.
  SqliteStatement time = inventory.prepare(
      "SELECT seconds FROM (SELECT CAST(strftime('%s', Written) AS INTEGER) AS seconds FROM "
      "export.ZeldbExport) "
      "WHERE seconds BETWEEN 0 AND 253402300799");
  return time.step() ? std::optional(time.number(0)) : std::nullopt;
}

// Tables and columns that the export lacks stay empty or NULL: an older zeldb knew fewer tables and columns.
void copy_table(const SqliteFile& inventory, const InventoryTable& table) {
  if (!has_table(inventory, table.name)) return;
  SqliteStatement known = inventory.prepare("SELECT name FROM pragma_table_info(?, 'export')");
  known.bind_text(1, table.name);
  std::string columns;
  while (known.step()) {
    const std::string name = known.text(0);
    const auto is_it = [&name](const InventoryTable::Column& column) { return column.name == name; };
    if (std::ranges::any_of(table.columns, is_it)) columns += (columns.empty() ? "" : ", ") + name;
  }
  if (columns.empty()) return;
  inventory.run("INSERT INTO main." + table.name + " (" + columns + ") SELECT " + columns + " FROM export." +
                table.name);
}

void unpack_files(const SqliteFile& inventory, const std::string& folder) {
  SqliteStatement files = inventory.prepare("SELECT Name, Content FROM export.ZeldbFiles");
  while (files.step()) {
    const std::string name = files.text(0);
    if (std::ranges::find(kPlatformFiles, name) == std::end(kPlatformFiles)) continue;
    write_temporary(folder + "/" + name, files.text(1));
  }
}

void require_known_schema(const SqliteFile& inventory, const std::string& file) {
  if (!has_table(inventory, "ZeldbSchema")) return;
  const int64_t version = schema_version_of(inventory, "export");
  if (version > schema_version_of(inventory))
    throw Failure(file + ": written by a newer zeldb (schema version " + std::to_string(version) + ")");
}

// The bytes of an inventory without rows, kept because making its tables takes longest.
const std::string& empty_inventory(const std::string& path, const std::string& name) {
  static const std::string bytes = [&] {
    write_temporary(path, "");
    create_inventory(path, name);
    return read_file(path);
  }();
  return bytes;
}

}  // namespace

SnapshotFolder::SnapshotFolder() {
  std::error_code error;
  const fs::path parent = fs::temp_directory_path(error);
  if (error) throw Failure("no folder for temporary files (TMPDIR): " + error.message());
  folder_ = parent / "zeldb-XXXXXX";
  const SignalsBlocked blocked;
  if (mkdtemp(folder_.data()) == nullptr) throw Failure(folder_ + ": " + std::strerror(errno));
  paths_ = with_logs(folder_ + "/" + kInventory);
  for (const std::string file : kPlatformFiles) {
    const std::string path = folder_ + "/" + file;
    paths_.push_back(path);
    paths_.push_back(path + ".new");
  }
  std::vector<std::string> all = paths_;
  all.push_back(folder_);
  removal_.emplace(std::move(all));
}

void SnapshotFolder::prepare() const {
  empty_inventory(folder_ + "/" + kInventory, folder_);
}

std::string SnapshotFolder::unpack(const std::string& file, NewerSchema newer) const {
  require_file(file);
  for (const std::string& old : paths_) unlink(old.c_str());
  std::string path = folder_ + "/" + kInventory;
  const std::string& empty = empty_inventory(path, file);
  write_temporary(path, empty);
  const SqliteFile inventory(path, file);
  inventory.run("PRAGMA synchronous=OFF");
  inventory.run("ATTACH 'file:" + percent_encoded(fs::absolute(file)) + "?mode=ro' AS export");
  require_export(inventory, file);
  snapshot_time = time_in(inventory);
  if (newer == NewerSchema::Refuse) require_known_schema(inventory, file);
  inventory.run("BEGIN");
  for (const InventoryTable& table : tables_of(inventory)) copy_table(inventory, table);
  unpack_files(inventory, folder_);
  inventory.run("COMMIT");
  // The engine would set this mode itself, but wait for the disk.
  inventory.run("PRAGMA main.journal_mode=WAL");
  return path;
}

void SnapshotFolder::use(const std::string& file) const {
  const std::string path = unpack(file, NewerSchema::Take);
  snapshot_in_use = true;
  setenv("ZEL_DB_URL", ("sqlite://" + percent_encoded(path)).c_str(), 1);
  setenv("ZEL_PLATFORM_DIR", folder_.c_str(), 1);
}

void use_snapshot(const std::string& file) {
  static const SnapshotFolder folder;
  folder.use(file);
}

std::string unpacked_for_import(const std::string& file) {
  static const SnapshotFolder folder;
  return folder.unpack(file, NewerSchema::Refuse);
}

std::optional<int64_t> time_of_snapshot() {
  return snapshot_time;
}

bool reads_snapshot() {
  return snapshot_in_use;
}

}  // namespace zeldb::cli
