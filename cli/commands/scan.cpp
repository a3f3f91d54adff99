// SPDX-License-Identifier: Apache-2.0
#include "scan/scan.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/library.h"
#include "cli/output.h"
#include "scan/drive_answers.h"
#include "scan/store.h"

namespace zeldb::cli {

namespace {

struct Shown {
  char Change[8];
  char Table[33];
  char Key[65];
  char Detail[513];
};

constexpr Column kColumns[] = {
    ZELDB_COLUMN(Shown, Change, "CHANGE", "added, changed or removed"),
    ZELDB_COLUMN(Shown, Table, "TABLE", "The table that the row is in"),
    whole(ZELDB_COLUMN(Shown, Key, "KEY", "Key of the row for the next scan")),
    ZELDB_COLUMN(Shown, Detail, "DETAIL", "Columns that differ, before and now"),
};

struct Options {
  scan::Question question;
  std::vector<std::string> only;
  bool dry_run = false;
  bool json = false;
};

void print(const std::vector<scan::Change>& changes, bool as_object) {
  constexpr const char* kWords[] = {"added", "changed", "removed"};
  Table table{.columns = {std::begin(kColumns), std::end(kColumns)}, .rows = {}};
  table.rows.reserve(changes.size());
  for (const scan::Change& change : changes) {
    Shown shown = {};
    copy_text(shown.Change, kWords[change.what]);
    copy_text(shown.Table, change.table);
    copy_text(shown.Key, change.key);
    copy_text(shown.Detail, change.detail);
    Row& row = table.rows.emplace_back();
    row.reserve(table.columns.size());
    for (const Column& column : table.columns) row.push_back(value_of(column, &shown));
  }
  if (as_object)
    std::fputs(as_json(table).c_str(), stdout);
  else if (!table.rows.empty())  // without rows no headings either
    std::fputs(as_table(table, {.terminal = terminal()}).text.c_str(), stdout);
}

void run(const Options& options) {
  scan::Question question = options.question;
  question.only.insert(options.only.begin(), options.only.end());
  std::vector<std::string> troubles;
  try {
    scan::Store store;
    const scan::Findings findings = scan::find(question, store.placements());
    print(options.dry_run ? store.changes(findings) : store.write(findings), options.json);
    troubles = findings.troubles;
  } catch (const std::exception& error) {
    throw Failure(std::string("scan: ") + error.what());
  }
  if (troubles.empty()) return;
  std::fflush(stdout);
  for (const std::string& trouble : troubles) std::fprintf(stderr, "zeldb: %s\n", trouble.c_str());
  throw Failure("");
}

}  // namespace

void setup_scan(CLI::App& app) {
  auto options = std::make_shared<Options>();
  add_text(app, "--root", options->question.root, "DIR",
           "Read a recorded machine: a folder with sys, and proc where it is needed");
  add_text(app, "--pci-dump", options->question.pci_dump, "FILE",
           "Read the PCI functions from the output of lspci -x (to -xxxx)");
  const std::vector<std::string> sources(std::begin(scan::kSources), std::end(scan::kSources));
  app.add_option("--only", options->only, "The sources to read: pci, smbios, drives, network, firmware")
      ->type_name("SOURCE,...")
      ->delimiter(',')
      ->check(CLI::IsMember(sources));
  add_flag(app, "--dry-run", options->dry_run, "Show the changes without writing them");
  add_flag(app, "--json", options->json, "One JSON object, one row a line");
  std::string footer =
      "Prints one line for each row that was added, changed or removed; none if nothing has changed. If "
      "a part cannot be read, the reason goes to standard error, its rows of an earlier scan stay, and "
      "the exit status is 1. Rows of other writers are never changed.";
  const struct {
    bool is_here;
    const char* library;
    const char* without;
  } libraries[] = {
      {scan::can_read_functions(), "libpci", "PCI functions and their network ports are left out"},
      {scan::can_ask_udev(), "libudev", "of drives, what only udev knows is left out"},
      {scan::can_ask_nvme(), "libnvme", "the health of NVMe drives is left out"},
  };
  for (const auto& [is_here, library, without] : libraries) {
    if (!is_here) footer += std::string("\n\nThis build has no ") + library + ": " + without + ".";
  }
  set_action(
      app, [options] { run(*options); }, footer);
}

}  // namespace zeldb::cli
