// SPDX-License-Identifier: Apache-2.0
#include "cli/fleet_diff.h"

#include <algorithm>

#include "cli/library.h"

namespace zeldb::cli {

namespace {

constexpr const char* kPart = "part";

constexpr struct {
  const char* name;
  std::string Part::*text;
} kCompared[] = {{"model", &Part::model}, {"part number", &Part::part_number}, {"firmware", &Part::firmware}};

}  // namespace

void FleetDiff::add(const std::string& machine, const std::vector<Part>& parts) {
  const size_t number = names_.size();
  names_.push_back(machine);
  for (const Part& part : parts) {
    auto& values = places_[Part{.kind = part.kind, .place = part.place}];
    values[kPart]["there"].push_back(number);
    for (const auto& [name, text] : kCompared) {
      if (!(part.*text).empty()) values[name][part.*text].push_back(number);
    }
    for (const auto& [name, size] : part.sizes) values[name][std::to_string(size)].push_back(number);
  }
}

std::vector<FleetGroup> FleetDiff::groups() const {
  std::vector<FleetGroup> groups;
  for (const auto& [part, properties] : places_) {
    const Machines& with = properties.at(kPart).begin()->second;
    if (with.size() < names_.size()) {
      Machines without;
      for (size_t number = 0; number < names_.size(); ++number) {
        if (!std::ranges::binary_search(with, number)) without.push_back(number);
      }
      add_groups(part, kPart, {{"there", with}, {"not there", without}}, groups);
    }
    for (const auto& [what, values] : properties) {
      if (values.size() > 1) add_groups(part, what, values, groups);
    }
  }
  return groups;
}

void FleetDiff::add_groups(const Part& part, const std::string& what, const Values& values,
                           std::vector<FleetGroup>& groups) const {
  const size_t first = groups.size();
  for (const auto& [value, machines] : values) {
    FleetGroup& group = groups.emplace_back();
    group = {.Machines = static_cast<uint32_t>(machines.size()),
             .Kind = {},
             .Place = {},
             .What = {},
             .Value = {},
             .Names = {}};
    std::string names;
    for (const size_t number : machines) {
      if (names.size() > sizeof(group.Names)) break;
      names += (names.empty() ? "" : " ") + names_[number];
    }
    copy_text(group.Kind, part.kind);
    copy_text(group.Place, part.place);
    copy_text(group.What, what);
    copy_text(group.Value, value);
    copy_text(group.Names, names);
  }
  std::stable_sort(
      groups.begin() + static_cast<std::ptrdiff_t>(first), groups.end(),
      [](const FleetGroup& one, const FleetGroup& other) { return one.Machines > other.Machines; });
}

}  // namespace zeldb::cli
