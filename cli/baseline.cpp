// SPDX-License-Identifier: Apache-2.0
//
// The file of a baseline: {"format_version":1,"parts":[...]}, one part a line.
#include <nlohmann/json.hpp>

#include <algorithm>

#include "cli/command.h"
#include "cli/parts.h"

namespace zeldb::cli {

namespace {

using Json = nlohmann::ordered_json;

constexpr struct {
  const char* key;
  std::string Part::*text;
} kTexts[] = {{"kind", &Part::kind},
              {"place", &Part::place},
              {"on", &Part::on},
              {"name", &Part::name},
              {"model", &Part::model},
              {"part_number", &Part::part_number},
              {"serial_number", &Part::serial_number},
              {"address", &Part::address},
              {"firmware", &Part::firmware},
              {"ports_up", &Part::ports_up}};

Json json_of(const Part& part) {
  Json json = Json::object();
  for (const auto& [key, text] : kTexts) {
    if (!(part.*text).empty()) json[key] = part.*text;
  }
  for (const auto& [name, size] : part.sizes) json["sizes"][name] = size;
  return json;
}

// Keys that a part need not have may be missing, as may keys that a later version adds.
Part part_of(const Json& json) {
  Part part;
  for (const auto& [key, text] : kTexts) {
    if (json.contains(key)) part.*text = json.at(key).get<std::string>();
  }
  if (part.kind.empty() || part.place.empty()) throw std::runtime_error("a part without kind and place");
  if (!json.contains("sizes")) return part;
  for (const auto& [name, size] : json.at("sizes").items()) {
    if (!size.is_number_unsigned()) throw std::runtime_error("a size that is no number");
    part.sizes[name] = size.get<uint64_t>();
  }
  return part;
}

std::vector<Part> parts_of(const Json& json) {
  std::vector<Part> parts;
  for (const Json& part : json.at("parts")) parts.push_back(part_of(part));
  std::ranges::sort(parts, comes_before);
  const auto same_place = [](const Part& one, const Part& other) {
    return one.kind == other.kind && one.place == other.place;
  };
  if (std::ranges::adjacent_find(parts, same_place) != parts.end())
    throw std::runtime_error("two parts in one place");
  return parts;
}

}  // namespace

std::string as_baseline(const std::vector<Part>& parts) {
  std::string text = "{\"format_version\":" + std::to_string(kBaselineVersion) + ",\"parts\":[";
  const char* separator = "\n";
  for (const Part& part : parts) {
    text.append(separator).append(json_of(part).dump());
    separator = ",\n";
  }
  return text + "\n]}\n";
}

std::vector<Part> parts_of_baseline(const std::string& text, const std::string& file) {
  const Json json = Json::parse(text, nullptr, false);
  if (!json.is_object() || !json.contains("format_version") || !json["format_version"].is_number_integer())
    throw Failure(file + ": is no baseline of zeldb, or damaged");
  if (const auto version = json["format_version"].get<int64_t>(); version > kBaselineVersion) {
    throw Failure(file + ": written by a newer zeldb (format " + std::to_string(version) +
                  ", known are up to " + std::to_string(kBaselineVersion) + ")");
  }
  try {
    return parts_of(json);
  } catch (const std::exception& error) {
    throw Failure(file + ": damaged: " + error.what());
  }
}

}  // namespace zeldb::cli
