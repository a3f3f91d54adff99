// SPDX-License-Identifier: Apache-2.0
//
// Whether all is well, in the manner of monitoring plugins: what is wrong, worst first, and an exit status.
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
    ZELDB_COLUMN(R, Kind, "KIND", "Kind of part, as zeldb diff has it, or port or firmware"),
    whole(ZELDB_COLUMN(R, Place, "PLACE", "Where it sits; an adapter's location and slot")),
    ZELDB_COLUMN(R, Finding, "FINDING", "What is wrong"),
};

struct Options {
  std::string policy;
  bool is_for_people = true;
  std::vector<R> findings{};
};

std::vector<R> read_findings(const Options& options) {
  require_inventory("check");
  if (options.policy.empty()) return checks::findings({});
  return checks::findings(checks::policy_of(read_file(options.policy), options.policy));
}

// What a list of machines shows of this one.
std::string summary(const std::vector<R>& findings) {
  const auto count = [&](Severity severity) {
    return std::to_string(std::ranges::count(findings, severity, &R::level));
  };
  if (findings.empty()) return "OK: nothing is wrong";
  const char* const state = findings.front().level == Severity::Critical ? "CRITICAL" : "WARNING";
  return std::string(state) + ": " + count(Severity::Critical) + " critical, " + count(Severity::Warning) +
         " warnings";
}

std::vector<R> report_findings(Options& options) {
  options.findings = read_findings(options);
  if (!options.is_for_people) return options.findings;
  std::puts(summary(options.findings).c_str());
  if (options.findings.empty()) throw Failure("", kDone);  // no headings
  return options.findings;
}

void run(const Options& options, const std::function<void()>& show) {
  show_answer("check", static_cast<int>(Severity::Unknown), show);
  if (!options.findings.empty()) throw Failure("", static_cast<int>(options.findings.front().level));
}

}  // namespace

void setup_check(CLI::App& app) {
  auto options = std::make_shared<Options>();
  add_text(app, "POLICY", options->policy, "",
           "A JSON file that says what else to look at; without one, health alone. The exit status is 0 when "
           "nothing is wrong, 1 for warnings, 2 when something is critical, 3 when it cannot be told");
  Listing(app)
      .view(kColumns, [options] { return report_findings(*options); })
      .note(
          "A policy is an object with format_version 1 and any of: firmware_failed, firmware_waiting and "
          "ports_down (each \"warning\" or \"critical\"; a port that was up in the baseline); baseline (a "
          "file of zeldb baseline); life_percent and celsius ({\"warning\": N, \"critical\": N}) of drives; "
          "minimum_firmware and expected_parts (lists of objects with kind, place, part, version and "
          "severity).")
      .around([options, &app](const std::function<void()>& show) {
        options->is_for_people = app.count("--json") == 0 && app.count("--raw") == 0;
        run(*options, show);
      });
}

}  // namespace zeldb::cli
