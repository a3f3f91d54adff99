// SPDX-License-Identifier: Apache-2.0
#include "cli/check/findings.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <set>
#include <string_view>

#include "cli/arguments.h"
#include "cli/column.h"
#include "cli/components.h"
#include "cli/file.h"
#include "cli/library.h"
#include "cli/listing.h"
#include "cli/parts.h"
#include "cli/slots.h"

namespace zeldb::cli::checks {

namespace {

constexpr bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

// Takes the digits at the beginning of the text off it; leading zeros are dropped.
std::string_view take_number(std::string_view& text) {
  const auto end = static_cast<size_t>(std::ranges::find_if_not(text, is_digit) - text.begin());
  std::string_view number = text.substr(0, end);
  number.remove_prefix(std::min(number.find_first_not_of('0'), end));
  text.remove_prefix(end);
  return number;
}

bool is_older(std::string_view version, std::string_view than) {
  while (!version.empty() && !than.empty()) {
    if (is_digit(version.front()) && is_digit(than.front())) {
      const std::string_view number = take_number(version);
      const std::string_view other = take_number(than);
      if (number.size() != other.size()) return number.size() < other.size();
      if (number != other) return number < other;
      continue;
    }
    if (version.front() != than.front()) return version.front() < than.front();
    version.remove_prefix(1);
    than.remove_prefix(1);
  }
  return version.empty() && !than.empty();
}

// Collects the findings; each function is a rule.
class Checks {
 public:
  explicit Checks(const Policy& policy) : policy_(policy) {}

  void health() {
    for (const SlotRow& slot : read_slots()) {
      if (slot.Functions != 0)  // a card that was removed keeps its row
        add_health("adapter", place_text({slot.Location, slot.SlotNo}), health_text(slot.HealthStatus));
    }
    for (const aim_disk_info_t& drive : drives_)
      add_health("drive", drive.Location, health_text(drive.HealthStatus));
    for (const View& view : views()) {
      if (zeldb::cli::name_of(view) != "memory --persistent") continue;
      for (const Row& row : view.read()) {
        const auto* const health = std::get_if<std::string>(&value_of(view, row, "HealthStatusText"));
        const auto* const place = std::get_if<std::string>(&value_of(view, row, "DevLocator"));
        if (health != nullptr) add_health("memory", place != nullptr ? *place : "", *health);
      }
    }
  }

  void drives() {
    for (const aim_disk_info_t& drive : drives_) {
      if (drive.InfoMask == 0) continue;  // no values are known
      const bool wears = std::strcmp(drive.MediaType, "HDD") != 0;
      const auto life = [&](int64_t limit) { return wears && drive.RemainLife <= limit; };
      const auto heat = [&](int64_t limit) { return drive.Temperature >= limit; };
      add("drive", drive.Location, worst(policy_.life_percent, life),
          "remaining life " + std::to_string(drive.RemainLife) + " %");
      add("drive", drive.Location, worst(policy_.celsius, heat),
          "temperature " + std::to_string(drive.Temperature) + " degrees Celsius");
    }
  }

  void firmware() {
    for (const _ZELDB_PldmFirmware& component : read_components()) {
      const std::string place = place_text({component.Location, component.SlotNo});
      const std::string name = component.DeviceName;
      if (has_failed(component))
        add("firmware", place, policy_.firmware_failed,
            name + ": update failed: " + component.UpdateErrString);
      if (waits(component))
        add("firmware", place, policy_.firmware_waiting,
            name + ": " + component.PendingVersionString + " waits for its activation");
    }
  }

  void ports() {
    if (policy_.baseline.empty()) return;
    std::set<std::string> up;  // by address, since the card may have moved
    for (const Part& part : parts_) {
      for (std::string& address : split(part.ports_up, " ")) up.insert(std::move(address));
    }
    for (const Part& before : parts_of_baseline(read_file(policy_.baseline), policy_.baseline)) {
      for (const std::string& address : split(before.ports_up, " ")) {
        if (!up.contains(address))
          add("port", before.place, policy_.ports_down, address + " is down, was up in the baseline");
      }
    }
  }

  void minimum_firmware() {
    for (const Wanted& wanted : policy_.minimum_firmware) {
      for (const Part& part : parts_) {
        if (!is_it(wanted, part)) continue;
        for (const std::string& version : split(part.firmware, kVersionSeparator)) {
          if (is_older(version, wanted.version))
            add(part.kind, part.place, wanted.severity,
                "firmware " + version + " is older than " + wanted.version);
        }
      }
    }
  }

  void expected_parts() {
    for (const Wanted& wanted : policy_.expected_parts) {
      const auto is_here = [&](const Part& part) {
        return part.place == wanted.place && (wanted.kind.empty() || part.kind == wanted.kind);
      };
      const auto here = std::ranges::find_if(parts_, is_here);
      const bool is_expected =
          std::ranges::any_of(parts_, [&](const Part& part) { return is_here(part) && is_it(wanted, part); });
      if (is_expected) continue;
      add(wanted.kind.empty() ? "part" : wanted.kind, wanted.place, wanted.severity,
          here != parts_.end() ? wanted.part + " is expected, not " + shown(*here)
                               : wanted.part + " is missing");
    }
  }

  std::vector<Fault> take() {
    std::ranges::stable_sort(findings_, std::ranges::greater(), &Fault::level);
    return std::move(findings_);
  }

 private:
  static std::vector<std::string> split(std::string_view text, std::string_view separator) {
    std::vector<std::string> parts;
    while (!text.empty()) {
      const size_t end = std::min(text.find(separator), text.size());
      if (end != 0) parts.emplace_back(text.substr(0, end));
      text.remove_prefix(std::min(end + separator.size(), text.size()));
    }
    return parts;
  }

  static std::string shown(const Part& part) {
    for (const std::string* text : {&part.part_number, &part.model, &part.name}) {
      if (!text->empty()) return *text;
    }
    return "an unknown one";
  }

  static bool is_it(const Wanted& wanted, const Part& part) {
    const bool is_called =
        wanted.part == part.part_number || wanted.part == part.model || wanted.part == part.name;
    return is_called && (wanted.kind.empty() || wanted.kind == part.kind) &&
           (wanted.place.empty() || wanted.place == part.place);
  }

  template <typename IsBeyond>
  static Severity worst(const Limits& limits, IsBeyond is_beyond) {
    Severity severity = Severity::Ok;
    for (const auto& [level, limit] : limits) {
      if (is_beyond(limit)) severity = std::max(severity, level);
    }
    return severity;
  }

  void add_health(const std::string& kind, const std::string& place, const std::string& health) {
    const Tone tone = tone_of(health);
    if (tone == Tone::Warning || tone == Tone::Bad)
      add(kind, place, tone == Tone::Bad ? Severity::Critical : Severity::Warning, "health is " + health);
  }

  void add(const std::string& kind, const std::string& place, Severity severity, const std::string& detail) {
    if (severity == Severity::Ok) return;
    Fault& finding = findings_.emplace_back();
    finding.level = severity;
    copy_text(finding.Severity, name_of(severity));
    copy_text(finding.Kind, kind);
    copy_text(finding.Place, place);
    copy_text(finding.Finding, detail);
  }

  const Policy& policy_;
  std::vector<Part> parts_ = read_parts();
  std::vector<aim_disk_info_t> drives_ = read_present_drives();
  std::vector<Fault> findings_;
};

}  // namespace

std::vector<Fault> findings(const Policy& policy) {
  Checks rules(policy);
  rules.health();
  rules.drives();
  rules.firmware();
  rules.ports();
  rules.minimum_firmware();
  rules.expected_parts();
  return rules.take();
}

}  // namespace zeldb::cli::checks
