// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_WATCH_CHANGES_H
#define CLI_WATCH_CHANGES_H

#include <map>
#include <string>
#include <vector>

#include "cli/column.h"
#include "cli/mask.h"

namespace zeldb::cli::watch {

struct Change {
  struct Difference {
    Column column;
    Value was;
    Value is;
  };
  std::string change;   // added, removed or changed
  std::string listing;  // that shows the row
  std::string place;    // the values that identify the row in it
  std::vector<Difference> differences{};
};

std::string as_line(const Change& change, const std::string& time);
std::string as_json_line(const Change& change, const std::string& time);

// The content of the watched listings, by listing and place.
using State = std::map<std::string, std::map<std::string, Row>>;

// Throws a Failure when one of them cannot be read.
State read_state(Mask* mask);
std::vector<Change> changes(const State& before, const State& now);

}  // namespace zeldb::cli::watch

#endif
