// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "cli/answer.h"
#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/file.h"
#include "cli/fleet.h"
#include "cli/fleet_diff.h"
#include "cli/listing.h"
#include "cli/parts_diff.h"

namespace zeldb::cli {

namespace {

using R = Difference;

constexpr Column kColumns[] = {
    ZELDB_COLUMN(R, Change, "CHANGE", "added, removed, moved, replaced, shrank or changed"),
    ZELDB_COLUMN(R, Kind, "KIND",
                 "Kind of part: processor, memory, adapter, gpu, drive, backplane, embedded"),
    whole(ZELDB_COLUMN(R, Place, "PLACE", "Slot, bay or socket; of an adapter, location and slot")),
    ZELDB_COLUMN(R, PartNo, "PART", "Part number"),
    whole(ZELDB_COLUMN(R, SerialNo, "SERIAL", "Serial number")),
    whole(ZELDB_COLUMN(R, PreviousSerialNo, "WAS", "Serial number of the part that was replaced")),
    ZELDB_COLUMN(R, Detail, "DETAIL",
                 "Other differences, before and now; for firmware the running versions, not pending ones"),
    ZELDB_COLUMN(R, Name, "NAME", "Name"),
};

using G = FleetGroup;

constexpr Column kFleetColumns[] = {
    ZELDB_COLUMN(G, Machines, "MACHINES", "Number of machines"),
    ZELDB_COLUMN(G, Kind, "KIND", "Kind of part"),
    whole(ZELDB_COLUMN(G, Place, "PLACE", "Slot, bay or socket; of an adapter, location and slot")),
    ZELDB_COLUMN(G, What, "WHAT", "Difference: part (present or not), firmware, ..."),
    whole(ZELDB_COLUMN(G, Value, "VALUE", "Value of these machines")),
    ZELDB_COLUMN(G, Names, "NAMES", "Names of the first of these machines"),
};

enum DiffExit : int { kSame = 0, kDifferent = 1, kTrouble = 2 };

struct Options {
  std::string file;
  bool hardware = false;
  bool is_fleet = false;
  std::vector<Part> before{};
  bool differs = false;
  bool is_whole = true;
};

bool is_database(const std::string& file) {
  constexpr std::string_view kStart = "SQLite format 3";
  return read_file(file, kStart.size()) == kStart;
}

// The parts of a baseline, or of a reference machine.
std::vector<Part> reference_parts(const std::string& file) {
  if (!is_database(file)) return parts_of_baseline(read_file(file), file);
  std::vector<Part> parts;
  const size_t unread = ask_each(
      machines_of({file}), [] { return as_baseline(read_parts()); },
      [&](const Machine&, std::string_view answer) { parts = parts_of_baseline(std::string(answer), file); });
  if (unread != 0) throw Failure("");
  return parts;
}

std::vector<Difference> compare(const Options& options) {
  std::vector<Difference> rows = differences(options.before, read_parts());
  if (options.hardware)
    std::erase_if(rows, [](const Difference& row) { return std::strcmp(row.Change, "changed") == 0; });
  return rows;
}

std::vector<FleetGroup> compare_fleet(Options& options) {
  FleetDiff diff;
  const auto take = [&diff](const Machine& machine, std::string_view answer) {
    diff.add(machine.name, parts_of_baseline(std::string(answer), machine.file));
  };
  const size_t unread = ask_each(
      machines_of({options.file}), [] { return as_baseline(read_parts()); }, take);
  options.is_whole = unread == 0;
  return diff.groups();
}

void run(Options& options, const std::function<void()>& show) {
  show_answer("diff", kTrouble, [&] {
    if (!options.is_fleet) options.before = reference_parts(options.file);
    show();
    if (!options.is_whole) throw Failure("");
  });
  if (options.differs) throw Failure("", kDifferent);
}

}  // namespace

void setup_diff(CLI::App& app) {
  auto options = std::make_shared<Options>();
  require(
      add_text(app, "FILE", options->file, "",
               "A file that zeldb baseline has written, or an export of a reference machine; the exit status "
               "is 0 without differences, 1 with some, 2 after a failure"));
  CLI::Option* const hardware = add_flag(app, "--hardware", options->hardware,
                                         "Leave out changes of parts that have stayed, such as firmware");
  Listing listing(app);
  listing.view(kColumns, [options] { return compare(*options); })
      .view("--fleet", "Group the machines whose exports are in the folder FILE by their differences",
            kFleetColumns, [options] { return compare_fleet(*options); })
      .without({hardware, app.get_option("--from")})
      .judge([options](const Judged& judged) {
        options->differs = !judged.rows.empty();
        return options->differs || !judged.is_for_people;  // without rows no headings either
      })
      .around([options, &app](const std::function<void()>& show) {
        options->is_fleet = app.count("--fleet") != 0;
        run(*options, show);
      });
}

}  // namespace zeldb::cli
