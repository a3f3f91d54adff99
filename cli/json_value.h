// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_JSON_VALUE_H
#define CLI_JSON_VALUE_H

#include <nlohmann/json.hpp>

#include "cli/column.h"

namespace zeldb::cli {

inline nlohmann::ordered_json json_of(const Value& value) {
  if (const auto* number = std::get_if<uint64_t>(&value)) return *number;
  if (const auto* number = std::get_if<int64_t>(&value)) return *number;
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  return nullptr;
}

}  // namespace zeldb::cli

#endif
