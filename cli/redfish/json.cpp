// SPDX-License-Identifier: Apache-2.0
#include "cli/redfish/json.h"

#include <algorithm>

namespace zeldb::cli::redfish {

Json Json::left_out() {
  Json value;
  value.held_ = LeftOut{};
  return value;
}

Json Json::array(std::initializer_list<Json> items) {
  return Array(items);
}

Json Json::object(std::initializer_list<std::pair<const char*, Json>> members) {
  Json value;
  value.held_ = Object(members.begin(), members.end());
  return value;
}

std::string Json::text() const {
  const auto* text = std::get_if<std::string>(&held_);
  return text != nullptr ? *text : std::string();
}

size_t Json::size() const {
  return std::get<Array>(held_).size();
}

void Json::push_back(Json item) {
  std::get<Array>(held_).push_back(std::move(item));
}

Json& Json::operator[](const std::string& name) {
  if (is_null()) held_ = Object();
  auto& members = std::get<Object>(held_);
  const auto known = std::ranges::find(members, name, &Object::value_type::first);
  return known != members.end() ? known->second : members.emplace_back(name, Json()).second;
}

const Json* Json::find(const std::string& name) const {
  const auto* const members = std::get_if<Object>(&held_);
  if (members == nullptr) return nullptr;
  const auto known = std::ranges::find(*members, name, &Object::value_type::first);
  return known != members->end() ? &known->second : nullptr;
}

}  // namespace zeldb::cli::redfish
