// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "cli/arguments.h"
#include "cli/collect/fleet_tables.h"
#include "cli/command.h"
#include "cli/fleet.h"
#include "cli/terminal.h"
#include "cli/text.h"

namespace zeldb::cli {

namespace {

struct Options {
  std::string url;
  std::vector<std::string> files;
};

class Collection {
 public:
  explicit Collection(const std::string& url) : tables_(url) {}

  void add(const Machine& machine, std::string_view rows) {
    waiting_.push_back({machine, std::string(rows)});
    constexpr size_t kTogether = 64;
    if (waiting_.size() == kTogether) flush();
  }
  void flush() {
    if (waiting_.empty()) return;
    size_t changed = 0;
    size_t unchanged = 0;
    tables_.begin();
    for (const auto& [machine, rows] : waiting_) {
      try {
        ++(store(machine, rows) == collect::Stored::Changed ? changed : unchanged);
      } catch (const collect::Refused& refused) {
        complain(machine.file + ": " + refused.what());
        ++refused_;
      }
    }
    tables_.commit();
    waiting_.clear();
    changed_ += changed;
    unchanged_ += unchanged;
  }

  size_t changed() const { return changed_; }
  size_t unchanged() const { return unchanged_; }
  size_t refused() const { return refused_; }

 private:
  collect::Stored store(const Machine& machine, const std::string& rows) {
    constexpr size_t kLongest = 255;
    if (machine.name.size() > kLongest) throw collect::Refused("the name of the machine is too long");
    if (printable(machine.name, Escape::None) != machine.name)
      throw collect::Refused("the name of the machine is no UTF-8");
    return tables_.store(machine.name, rows);
  }

  struct Waiting {
    Machine machine;
    std::string rows;
  };
  collect::FleetTables tables_;
  std::vector<Waiting> waiting_;
  size_t changed_ = 0;
  size_t unchanged_ = 0;
  size_t refused_ = 0;
};

void collect_files(const Options& options) {
  const std::vector<Machine> machines = machines_of(options.files);
  Collection collection(options.url);
  size_t unread = 0;
  try {
    unread = ask_each(machines, collect::read_snapshot_rows,
                      [&](const Machine& machine, std::string_view rows) { collection.add(machine, rows); });
    collection.flush();
  } catch (const Failure& failure) {
    throw Failure(std::string(failure.what()) + " (" +
                  std::to_string(collection.changed() + collection.unchanged()) + " of " +
                  std::to_string(machines.size()) +
                  " machines are there, each as a whole; run it again for the others)");
  }
  unread += collection.refused();
  std::printf("%zu machines: %zu stored, %zu unchanged", machines.size(), collection.changed(),
              collection.unchanged());
  if (unread != 0) std::printf(", %zu not read", unread);
  std::puts("");
  if (unread != 0) throw Failure("");
}

}  // namespace

void setup_collect(CLI::App& app) {
  auto options = std::make_shared<Options>();
  require(add_text(
      app, "--to", options->url, "URL",
      "The database of the tables, as in ZEL_DB_URL: fleet on a server, fleet.sqlite in a folder, or a "
      "file; they are made if they are missing"));
  app.add_option("FILE", options->files, "Files that zeldb export has written, or folders of them")
      ->type_name("")
      ->required();
  set_action(
      app, [options] { collect_files(*options); },
      "FleetMachines has a row per machine. FleetSlots, FleetProcessors, FleetMemory, FleetFunctions, "
      "FleetAdapters, FleetPorts, FleetGpus, FleetDisks, FleetBackplanes, FleetFirmware, FleetEmbedded and "
      "FleetPending have the rows and columns of the listings, as --json shows them but NULL where a table "
      "has \"-\". The first columns are Machine, the name of the file without .zeldb, .db or .sqlite, and "
      "Since, the time at which these rows of the machine were first seen (UTC). A machine is stored as a "
      "whole or not at all; rows that it no longer has are deleted, unchanged ones are not written again, "
      "and "
      "other machines stay. For a file that cannot be read, a line goes to standard error and the exit "
      "status is 1.");
}

}  // namespace zeldb::cli
