// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_FLEET_DIFF_H
#define CLI_FLEET_DIFF_H

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "cli/parts.h"

namespace zeldb::cli {

// Machines with the same value of something in which others differ. Texts that are too long are cut.
struct FleetGroup {
  uint32_t Machines;
  char Kind[17];
  char Place[97];
  char What[33];
  char Value[129];
  char Names[257];
};

// Compares machines with each other: for each place, whether there is a part, and its model, part number,
// firmware and sizes. Unknown values are not compared. Nor are serial numbers and addresses, which always
// differ.
class FleetDiff {
 public:
  void add(const std::string& machine, const std::vector<Part>& parts);
  // In the order of the parts, the largest group first.
  std::vector<FleetGroup> groups() const;

 private:
  using Machines = std::vector<size_t>;  // ascending
  using Values = std::map<std::string, Machines>;
  struct ComesBefore {
    bool operator()(const Part& one, const Part& other) const { return comes_before(one, other); }
  };

  void add_groups(const Part& part, const std::string& what, const Values& values,
                  std::vector<FleetGroup>& groups) const;

  std::vector<std::string> names_;
  std::map<Part, std::map<std::string, Values>, ComesBefore> places_;  // by kind and place
};

}  // namespace zeldb::cli

#endif
