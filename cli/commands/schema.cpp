// SPDX-License-Identifier: Apache-2.0
#include <nlohmann/json.hpp>

#include <cstdio>

#include "cli/arguments.h"
#include "cli/command.h"
#include "cli/listing.h"
#include "cli/mask.h"
#include "cli/output.h"

namespace zeldb::cli {

namespace {

using Json = nlohmann::ordered_json;

std::string pattern_of(const Column& column) {
  return "^[0-9a-f]{" + std::to_string(column.digits) + "}$";
}

Json type_of(const Column& column) {
  switch (column.type) {
    case Type::Hex:
      return {{"type", "string"}, {"pattern", pattern_of(column)}};
    case Type::Text:
    case Type::HealthText:
      if (column.digits != 0) return {{"type", {"string", "null"}}, {"pattern", pattern_of(column)}};
      return {{"type", {"string", "null"}}, {"minLength", 1}};
    case Type::Signed:
      return {{"type", "integer"}};
    default:
      return {{"type", "integer"}, {"minimum", 0}};
  }
}

Json rows_of(const View& view) {
  Json properties = Json::object();
  std::vector<Column> columns{kMachineColumn};
  columns.insert(columns.end(), view.columns.begin(), view.columns.end());
  for (const Column& column : columns) {
    Json& property = properties[column.key] = type_of(column);
    property["description"] = column.help;
    const std::string_view identity = identified_by(column);
    if (!identity.empty()) property["identifies"] = identity;
  }
  return {{"type", "object"}, {"additionalProperties", false}, {"properties", properties}};
}

void print_schema() {
  Json definitions = Json::object();
  Json kinds = Json::array();
  Json names = Json::array();
  for (const View& view : views()) {
    const std::string name = schema_name_of(view);
    definitions[name] = rows_of(view);
    kinds.push_back({{"$ref", "#/$defs/" + name}});
    names.push_back(name);
  }
  const Json rows = {{"type", "array"}, {"items", {{"anyOf", kinds}}}};
  const Json schema = {
      {"$schema", "https://json-schema.org/draft/2020-12/schema"},
      {"title", "The output of zeldb with --json"},
      {"type", "object"},
      {"additionalProperties", false},
      {"required", {"format_version"}},
      {"oneOf", {{{"required", {"rows"}}}, {{"required", {"listings"}}}}},
      {"properties",
       {{"format_version", {{"const", kFormatVersion}}},
        {"rows", rows},
        {"listings",
         {{"type", "object"},
          {"description",
           "The output of show: the rows of each listing for one place, by the name of the listing"},
          {"propertyNames", {{"enum", names}}},
          {"additionalProperties", {{"$ref", "#"}}}}}}},
      {"$defs", definitions}};
  std::puts(schema.dump(1).c_str());
}

}  // namespace

void setup_schema(CLI::App& app) {
  set_action(app, print_schema);
}

}  // namespace zeldb::cli
