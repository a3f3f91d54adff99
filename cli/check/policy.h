// SPDX-License-Identifier: Apache-2.0
//
// What "zeldb check" is to complain of, beside health: a JSON file that docs/zeldb-policy.schema.json
// describes.
#ifndef CLI_CHECK_POLICY_H
#define CLI_CHECK_POLICY_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace zeldb::cli::checks {

// As monitoring plugins have them; the exit status of the command is the worst one that is found.
enum class Severity : uint8_t { Ok = 0, Warning = 1, Critical = 2, Unknown = 3 };
const char* name_of(Severity severity);

// From which number on something is worth a warning, and from which on critical.
using Limits = std::map<Severity, int64_t>;

struct Wanted {
  std::string kind{};     // as a baseline has it; empty: any
  std::string place{};    // the same
  std::string part{};     // a part number, model or name
  std::string version{};  // the lowest one; empty: any
  Severity severity = Severity::Critical;
};

// Ok: nothing is said of it.
struct Policy {
  Severity firmware_failed = Severity::Ok;
  Severity firmware_waiting = Severity::Ok;
  Severity ports_down = Severity::Ok;  // that were up in the baseline
  std::string baseline{};
  Limits life_percent{};
  Limits celsius{};
  std::vector<Wanted> minimum_firmware{};
  std::vector<Wanted> expected_parts{};
};

// Throws Failure for a text that is no policy; file is what it is called. A baseline is found beside the
// policy unless its path begins with a slash.
Policy policy_of(const std::string& text, const std::string& file);

}  // namespace zeldb::cli::checks

#endif
