// SPDX-License-Identifier: Apache-2.0
//
// Checks the machine as monitoring plugins do: findings, worst first, and an exit status.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "cli/answer.h"
#include "cli/arguments.h"
#include "cli/check/findings.h"
#include "cli/check/policy.h"
#include "cli/command.h"
#include "cli/file.h"
#include "cli/library.h"
#include "cli/listing.h"

namespace zeldb::cli {

namespace {

using checks::Severity;

using R = checks::Fault;

constexpr Column kColumns[] = {
    ZELDB_COLUMN(R, Severity, "SEVERITY", "critical or warning"),
    ZELDB_COLUMN(R, Kind, "KIND", "Kind of part as in zeldb diff; or port, or firmware"),
    whole(ZELDB_COLUMN(R, Place, "PLACE", "Slot, bay or socket; of an adapter, location and slot")),
    ZELDB_COLUMN(R, Finding, "FINDING", "Description of the problem"),
};

struct Options {
  std::string policy;
  Severity worst = Severity::Ok;
};

std::vector<R> read_findings(const Options& options) {
  require_inventory("check");
  if (options.policy.empty()) return checks::findings({});
  return checks::findings(checks::policy_of(read_file(options.policy), options.policy));
}

// One line for people: the state and the counts.
std::string summary(size_t critical, size_t warnings, size_t unread) {
  if (critical + warnings + unread == 0) return "OK: nothing is wrong";
  const std::string state = critical != 0 ? "CRITICAL" : unread != 0 ? "UNKNOWN" : "WARNING";
  return state + ": " + std::to_string(critical) + " critical, " + std::to_string(warnings) + " warnings" +
         (unread != 0 ? ", " + std::to_string(unread) + " not read" : "");
}

bool judge(const Judged& judged, Options& options) {
  const auto count = [&](Severity severity) {
    return static_cast<size_t>(std::ranges::count_if(judged.rows, [&](const Row& row) {
      return value_of(judged.view, row, "Severity") == Value(checks::name_of(severity));
    }));
  };
  const size_t critical = count(Severity::Critical);
  const size_t warnings = count(Severity::Warning);
  options.worst = critical != 0 ? Severity::Critical : warnings != 0 ? Severity::Warning : Severity::Ok;
  if (!judged.is_for_people) return true;
  std::puts(summary(critical, warnings, judged.unread).c_str());
  return !judged.rows.empty();  // without rows no headings either
}

void run(const Options& options, const std::function<void()>& show) {
  show_answer("check", static_cast<int>(Severity::Unknown), show);
  if (options.worst != Severity::Ok) throw Failure("", static_cast<int>(options.worst));
}

}  // namespace

void setup_check(CLI::App& app) {
  auto options = std::make_shared<Options>();
  add_text(app, "POLICY", options->policy, "",
           "A JSON file with further rules; without it, only health is checked. The exit status is 0 if all "
           "is well, 1 for warnings, 2 for critical findings, 3 if the state is not known");
  Listing(app)
      .view(kColumns, [options] { return read_findings(*options); })
      .note(
          "A policy is an object with format_version 1 and any of: firmware_failed, firmware_waiting and "
          "ports_down (each \"warning\" or \"critical\"; a port that was up in the baseline); baseline (a "
          "file of zeldb baseline); life_percent and celsius ({\"warning\": N, \"critical\": N}) of drives; "
          "minimum_firmware and expected_parts (lists of objects with kind, place, part, version and "
          "severity).")
      .judge([options](const Judged& judged) { return judge(judged, *options); })
      .around([options](const std::function<void()>& show) { run(*options, show); });
}

}  // namespace zeldb::cli
