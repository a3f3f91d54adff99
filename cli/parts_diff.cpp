// SPDX-License-Identifier: Apache-2.0
#include "cli/parts_diff.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "cli/library.h"

namespace zeldb::cli {

namespace {

constexpr const char* kAdapter = "adapter";

// Values that distinguish parts if a serial number is missing.
constexpr std::string Part::*kIdentity[] = {&Part::address, &Part::model, &Part::part_number};

// Values whose changes are reported. Addresses are left out, because they identify the machine.
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

// A serial number is unique only for its manufacturer: two parts that share one are the same unless the first
// of these that is known of both differs.
bool is_same_make(const Part& before, const Part& now) {
  for (std::string Part::*text : {&Part::part_number, &Part::model, &Part::name}) {
    if (!(before.*text).empty() && !(now.*text).empty()) return before.*text == now.*text;
  }
  return true;
}

// The place without the number that distinguishes several parts in it, because the number depends on the
// other parts.
std::string shared_place(const Part& part, const std::vector<Part>& parts) {
  const size_t mark = part.place.rfind(" #");
  if (mark == std::string::npos) return part.place;
  const std::string place = part.place.substr(0, mark);
  const bool is_shared = std::ranges::any_of(
      parts, [&](const Part& other) { return other.kind == part.kind && other.place == place; });
  return is_shared ? place : part.place;
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

// The parts whose serial number is unique within their list.
using Known = std::map<std::pair<std::string, std::string>, const Part*>;
Known known_parts(const std::vector<Part>& parts) {
  Known known;
  for (const Part& part : parts) {
    if (part.serial_number.empty()) continue;
    const auto [entry, is_new] = known.try_emplace({part.kind, part.serial_number}, &part);
    if (!is_new) entry->second = nullptr;
  }
  return known;
}

// Walks through both lists at once and collects the changes.
class Comparison {
 public:
  Comparison(const std::vector<Part>& before, const std::vector<Part>& now)
      : before_(before), now_(now), known_before_(known_parts(before)), known_now_(known_parts(now)) {}

  // The part that was in a place and the one that is there now; null for none.
  void place(const Part* before, const Part* now) {
    if (before != nullptr && elsewhere(*before, known_before_, known_now_) != nullptr) before = nullptr;
    if (const Part* const origin = now != nullptr ? elsewhere(*now, known_now_, known_before_) : nullptr) {
      if (before != nullptr) add("removed", *before);
      const bool is_there = shared_place(*origin, before_) == shared_place(*now, now_);
      is_there ? both(*origin, *now) : moved(*origin, *now);
    } else if (before != nullptr && now != nullptr) {
      both(*before, *now);
    } else if (before != nullptr || now != nullptr) {
      add(now != nullptr ? "added" : "removed", now != nullptr ? *now : *before);
    }
  }

  std::vector<Difference> rows;

 private:
  // The same part in the other list, if it sits in another place there.
  static const Part* elsewhere(const Part& part, const Known& own, const Known& others) {
    const auto mine = own.find({part.kind, part.serial_number});
    const auto other = others.find({part.kind, part.serial_number});
    if (mine == own.end() || mine->second != &part || other == others.end()) return nullptr;
    const bool is_elsewhere =
        other->second != nullptr && other->second->place != part.place && is_same_make(part, *other->second);
    return is_elsewhere ? other->second : nullptr;
  }

  void moved(const Part& before, const Part& now) {
    if (before.kind == kAdapter) other_adapters_.insert(before.place);
    if (Difference* const row = add("moved", now)) {
      const std::string detail = detail_of(before, now);
      copy_text(row->Detail, "from " + before.place + (detail.empty() ? "" : ", ") + detail);
    }
  }

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

  Difference* add(const char* change, const Part& part, bool is_other = true) {
    if (!part.on.empty() && other_adapters_.contains(part.on)) return nullptr;
    // Adapters come before what sits on them.
    if (is_other && part.kind == kAdapter) other_adapters_.insert(part.place);
    return &rows.emplace_back(difference(change, part));
  }

  const std::vector<Part>& before_;
  const std::vector<Part>& now_;
  Known known_before_;
  Known known_now_;
  std::set<std::string> other_adapters_;
};

}  // namespace

std::vector<Difference> differences(const std::vector<Part>& before, const std::vector<Part>& now) {
  Comparison comparison(before, now);
  auto old_part = before.begin();
  auto new_part = now.begin();
  while (old_part != before.end() || new_part != now.end()) {
    if (new_part == now.end() || (old_part != before.end() && comes_before(*old_part, *new_part))) {
      comparison.place(&*old_part++, nullptr);
    } else if (old_part == before.end() || comes_before(*new_part, *old_part)) {
      comparison.place(nullptr, &*new_part++);
    } else {
      comparison.place(&*old_part++, &*new_part++);
    }
  }
  return comparison.rows;
}

}  // namespace zeldb::cli
