// SPDX-License-Identifier: Apache-2.0
#include "cli/parts_diff.h"

#include <algorithm>
#include <set>
#include <string>

#include "cli/library.h"

namespace zeldb::cli {

namespace {

constexpr const char* kAdapter = "adapter";

// What tells one part from another while a serial number is missing.
constexpr std::string Part::*kIdentity[] = {&Part::address, &Part::model, &Part::part_number};

// What is told of a change. Addresses are not: they identify.
constexpr struct {
  const char* name;
  std::string Part::*text;
} kTold[] = {{"model", &Part::model}, {"part number", &Part::part_number}, {"firmware", &Part::firmware}};

bool differ(const std::string& before, const std::string& now) {
  return !before.empty() && !now.empty() && before != now;
}

bool is_other_part(const Part& before, const Part& now) {
  if (!before.serial_number.empty() && !now.serial_number.empty())
    return before.serial_number != now.serial_number;
  return std::ranges::any_of(kIdentity,
                             [&](std::string Part::*text) { return differ(before.*text, now.*text); });
}

bool is_smaller(const Part& before, const Part& now) {
  return std::ranges::any_of(before.sizes, [&now](const auto& size) {
    const auto found = now.sizes.find(size.first);
    return found != now.sizes.end() && found->second < size.second;
  });
}

std::string detail_of(const Part& before, const Part& now) {
  std::string detail;
  const auto tell = [&detail](const std::string& name, const std::string& was, const std::string& is) {
    detail += (detail.empty() ? "" : ", ") + name + " " + was + " -> " + is;
  };
  for (const auto& [name, size] : before.sizes) {
    const auto found = now.sizes.find(name);
    if (found != now.sizes.end() && found->second != size)
      tell(name, std::to_string(size), std::to_string(found->second));
  }
  for (const auto& [name, text] : kTold) {
    if (differ(before.*text, now.*text)) tell(name, before.*text, now.*text);
  }
  return detail;
}

Difference difference(const char* change, const Part& part) {
  Difference row = {};
  copy_text(row.Change, change);
  copy_text(row.Kind, part.kind);
  copy_text(row.Place, part.place);
  copy_text(row.PartNo, part.part_number);
  copy_text(row.SerialNo, part.serial_number);
  copy_text(row.Name, part.name);
  return row;
}

// Walks through both lists at once and puts together what stays to be told.
class Comparison {
 public:
  void removed(const Part& part) { add("removed", part); }
  void added(const Part& part) { add("added", part); }

  void both(const Part& before, const Part& now) {
    const std::string detail = detail_of(before, now);
    const bool is_other = is_other_part(before, now);
    const bool is_less = is_smaller(before, now);
    if (!is_other && !is_less && detail.empty()) return;
    Difference* const row = add(is_other ? "replaced" : is_less ? "shrank" : "changed", now, is_other);
    if (row == nullptr) return;
    copy_text(row->Detail, detail);
    if (is_other) copy_text(row->PreviousSerialNo, before.serial_number);
  }

  std::vector<Difference> rows;

 private:
  Difference* add(const char* change, const Part& part, bool is_other = true) {
    if (!part.on.empty() && other_adapters_.contains(part.on)) return nullptr;
    // Adapters come before what sits on them.
    if (is_other && part.kind == kAdapter) other_adapters_.insert(part.place);
    return &rows.emplace_back(difference(change, part));
  }

  std::set<std::string> other_adapters_;
};

}  // namespace

std::vector<Difference> differences(const std::vector<Part>& before, const std::vector<Part>& now) {
  Comparison comparison;
  auto old_part = before.begin();
  auto new_part = now.begin();
  while (old_part != before.end() || new_part != now.end()) {
    if (new_part == now.end() || (old_part != before.end() && comes_before(*old_part, *new_part))) {
      comparison.removed(*old_part++);
    } else if (old_part == before.end() || comes_before(*new_part, *old_part)) {
      comparison.added(*new_part++);
    } else {
      comparison.both(*old_part++, *new_part++);
    }
  }
  return comparison.rows;
}

}  // namespace zeldb::cli
