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
#include "cli/listing.h"
#include "cli/parts_diff.h"

namespace zeldb::cli {

namespace {

using R = Difference;

constexpr Column kColumns[] = {
    ZELDB_COLUMN(R, Change, "CHANGE", "added, removed, moved, replaced, shrank or changed"),
    ZELDB_COLUMN(R, Kind, "KIND",
                 "Kind of part: processor, memory, adapter, gpu, drive, backplane, embedded"),
    whole(ZELDB_COLUMN(R, Place, "PLACE", "Place; location and slot of an adapter")),
    ZELDB_COLUMN(R, PartNo, "PART", "Part number"),
    whole(ZELDB_COLUMN(R, SerialNo, "SERIAL", "Serial number")),
    whole(ZELDB_COLUMN(R, PreviousSerialNo, "WAS", "Serial number of the part that was replaced")),
    ZELDB_COLUMN(R, Detail, "DETAIL",
                 "Other differences, before and now; for firmware the running versions, not pending ones"),
    ZELDB_COLUMN(R, Name, "NAME", "Name"),
};

enum DiffExit : int { kSame = 0, kDifferent = 1, kTrouble = 2 };

struct Options {
  std::string file;
  bool hardware = false;
  bool differs = false;
};

std::vector<Difference> compare(const Options& options) {
  std::vector<Difference> rows =
      differences(parts_of_baseline(read_file(options.file), options.file), read_parts());
  if (options.hardware)
    std::erase_if(rows, [](const Difference& row) { return std::strcmp(row.Change, "changed") == 0; });
  return rows;
}

void run(const Options& options, const std::function<void()>& show) {
  show_answer("diff", kTrouble, show);
  if (options.differs) throw Failure("", kDifferent);
}

}  // namespace

void setup_diff(CLI::App& app) {
  auto options = std::make_shared<Options>();
  require(add_text(
      app, "FILE", options->file, "",
      "A file that zeldb baseline has written; the exit status is 0 without differences, 1 with some, 2 "
      "after a failure"));
  add_flag(app, "--hardware", options->hardware,
           "Leave out changes of parts that have stayed, such as firmware");
  Listing(app)
      .view(kColumns, [options] { return compare(*options); })
      .judge([options](const Judged& judged) {
        options->differs = !judged.rows.empty();
        return options->differs || !judged.is_for_people;  // without rows no headings either
      })
      .around([options](const std::function<void()>& show) { run(*options, show); });
}

}  // namespace zeldb::cli
