// SPDX-License-Identifier: Apache-2.0
//
// The rules of "zeldb check" beside health: a JSON file that docs/zeldb-policy.schema.json describes.
#ifndef CLI_CHECK_POLICY_H
#define CLI_CHECK_POLICY_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zeldb::cli::checks {

// The numbers are the exit statuses of monitoring plugins; the command exits with the worst one found.
enum class Severity : uint8_t { Ok = 0, Warning = 1, Critical = 2, Unknown = 3 };
const char* name_of(Severity severity);

// The numbers from which on a value is a warning, and critical.
using Limits = std::map<Severity, int64_t>;

struct Wanted {
  std::string kind{};     // as a baseline has it; empty: any
  std::string place{};    // the same
  std::string part{};     // a part number, model or name
  std::string version{};  // the lowest one; empty: any
  Severity severity = Severity::Critical;
};

// Ok: it is not reported.
struct Policy {
  Severity firmware_failed = Severity::Ok;
  Severity firmware_waiting = Severity::Ok;
  Severity ports_down = Severity::Ok;  // ports that were up in the baseline
  std::string baseline{};
  Limits life_percent{};
  Limits celsius{};
  std::vector<Wanted> minimum_firmware{};
  std::vector<Wanted> expected_parts{};
};

// Throws Failure for a text that is no policy; file is its name. The path of a baseline is relative to the
// policy's folder unless it begins with a slash.
Policy policy_of(const std::string& text, const std::string& file);

}  // namespace zeldb::cli::checks

#endif
