// SPDX-License-Identifier: Apache-2.0
#include "cli/check/policy.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <stdexcept>
#include <vector>

#include "cli/command.h"
#include "cli/text.h"

namespace zeldb::cli::checks {

namespace {

using Json = nlohmann::json;

constexpr int kPolicyVersion = 1;

constexpr struct {
  Severity severity;
  const char* name;
} kNames[] = {{Severity::Ok, "ok"}, {Severity::Warning, "warning"}, {Severity::Critical, "critical"}};

// Each error of a reader names the key.
[[noreturn]] void refuse(const std::string& key, const std::string& why) {
  throw std::runtime_error(printable(key, Escape::Terminal) + ": " + why);
}

void read(Severity& severity, const std::string& key, const Json& json) {
  const auto* const known = std::ranges::find_if(
      kNames, [&json](const auto& entry) { return json.is_string() && json == entry.name; });
  if (known == std::end(kNames)) refuse(key, "is none of ok, warning, critical");
  severity = known->severity;
}

void read(std::string& text, const std::string& key, const Json& json) {
  if (!json.is_string() || json.get_ref<const std::string&>().empty()) refuse(key, "is no text");
  text = json.get<std::string>();
}

void read(Limits& limits, const std::string& key, const Json& json) {
  if (!json.is_object()) refuse(key, "is no object");
  for (const auto& [name, limit] : json.items()) {
    Severity severity{};
    read(severity, key, Json(name));
    const bool is_number = limit.is_number_integer() &&
                           (!limit.is_number_unsigned() || limit.get<uint64_t>() <= uint64_t{INT64_MAX});
    if (severity == Severity::Ok || !is_number)
      refuse(key, "has other than numbers for warning and critical");
    limits[severity] = limit.get<int64_t>();
  }
}

template <typename Record>
void read(std::vector<Record>& records, const std::string& key, const Json& json);

// A key of a record, and the member that gets its value.
template <typename Record>
struct Key {
  const char* name;
  void (*read)(Record& record, const std::string& key, const Json& json);
};
template <typename Record, auto member>
void read_member(Record& record, const std::string& key, const Json& json) {
  read(record.*member, key, json);
}

template <typename Record, size_t N>
void read_object(Record& record, const std::string& what, const Json& json, const Key<Record> (&keys)[N]) {
  if (!json.is_object()) refuse(what, "is no object");
  for (const auto& [name, value] : json.items()) {
    const auto* const known = std::ranges::find(keys, name, &Key<Record>::name);
    if (known == std::end(keys)) refuse(name, "no such key");
    known->read(record, name, value);
  }
}

constexpr Key<Wanted> kWantedKeys[] = {{"kind", read_member<Wanted, &Wanted::kind>},
                                       {"place", read_member<Wanted, &Wanted::place>},
                                       {"part", read_member<Wanted, &Wanted::part>},
                                       {"version", read_member<Wanted, &Wanted::version>},
                                       {"severity", read_member<Wanted, &Wanted::severity>}};

template <>
void read(std::vector<Wanted>& records, const std::string& key, const Json& json) {
  if (!json.is_array()) refuse(key, "is no array");
  for (const Json& one : json) {
    read_object(records.emplace_back(), key, one, kWantedKeys);
    if (records.back().part.empty()) refuse(key, "an entry without part");
  }
}

void read_version(Policy& /*policy*/, const std::string& key, const Json& json) {
  if (json != kPolicyVersion) refuse(key, "is not " + std::to_string(kPolicyVersion));
}

constexpr Key<Policy> kPolicyKeys[] = {{"format_version", read_version},
                                       {"firmware_failed", read_member<Policy, &Policy::firmware_failed>},
                                       {"firmware_waiting", read_member<Policy, &Policy::firmware_waiting>},
                                       {"ports_down", read_member<Policy, &Policy::ports_down>},
                                       {"baseline", read_member<Policy, &Policy::baseline>},
                                       {"life_percent", read_member<Policy, &Policy::life_percent>},
                                       {"celsius", read_member<Policy, &Policy::celsius>},
                                       {"minimum_firmware", read_member<Policy, &Policy::minimum_firmware>},
                                       {"expected_parts", read_member<Policy, &Policy::expected_parts>}};

void expect_sense(const Policy& policy) {
  if (policy.ports_down != Severity::Ok && policy.baseline.empty()) refuse("ports_down", "needs baseline");
  for (const Wanted& wanted : policy.minimum_firmware) {
    if (wanted.version.empty()) refuse("minimum_firmware", "an entry without version");
  }
  for (const Wanted& wanted : policy.expected_parts) {
    if (wanted.place.empty()) refuse("expected_parts", "an entry without place");
    if (!wanted.version.empty()) refuse("expected_parts", "version is for minimum_firmware");
  }
}

// Refuses a key that occurs twice in an object: one of the values would be dropped in silence.
Json parse(const std::string& text) {
  std::vector<std::set<std::string>> open;  // keys of the objects around
  const auto is_unique = [&open](int /*depth*/, Json::parse_event_t event, const Json& parsed) {
    if (event == Json::parse_event_t::object_start) open.emplace_back();
    if (event == Json::parse_event_t::object_end) open.pop_back();
    if (event == Json::parse_event_t::key && !open.back().insert(parsed.get<std::string>()).second)
      refuse(parsed.get<std::string>(), "is there twice");
    return true;
  };
  return Json::parse(text, is_unique, false);
}

}  // namespace

const char* name_of(Severity severity) {
  const auto* const known =
      std::ranges::find(kNames, severity, [](const auto& entry) { return entry.severity; });
  return known != std::end(kNames) ? known->name : "unknown";
}

Policy policy_of(const std::string& text, const std::string& file) {
  Policy policy;
  try {
    const Json json = parse(text);
    if (!json.is_object() || !json.contains("format_version"))
      throw std::runtime_error("is no policy of zeldb");
    read_object(policy, file, json, kPolicyKeys);
    expect_sense(policy);
  } catch (const std::exception& error) {
    throw Failure(file + ": " + error.what());
  }
  if (!policy.baseline.empty()) policy.baseline = std::filesystem::path(file).parent_path() / policy.baseline;
  return policy;
}

}  // namespace zeldb::cli::checks
