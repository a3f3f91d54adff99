// SPDX-License-Identifier: Apache-2.0
#include "cli/output.h"

#include "cli/json_value.h"
#include "cli/text.h"

namespace zeldb::cli {

namespace {

constexpr const char* kNothing = "-";

std::string text_of(const Value& value) {
  if (const auto* number = std::get_if<uint64_t>(&value)) return std::to_string(*number);
  if (const auto* number = std::get_if<int64_t>(&value)) return std::to_string(*number);
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  return {};
}

// Returns an empty text for a value without a word.
std::string word_of(const Column& column, const Value& value) {
  if (column.words == nullptr) return {};
  if (const auto* const number = std::get_if<uint64_t>(&value)) return column.words(*number);
  const auto* const digits = std::get_if<std::string>(&value);
  return digits != nullptr ? column.words(std::stoull(*digits, nullptr, 16)) : "";
}

}  // namespace

std::string cell_of(const Column& column, const Value& value) {
  const auto* const number = std::get_if<uint64_t>(&value);
  if (number != nullptr && column.none == *number) return kNothing;
  if (column.type == Type::Health && number != nullptr) return health_text(*number);
  std::string word = word_of(column, value);
  if (!word.empty()) return word;
  const std::string text = printable(text_of(value), Escape::Terminal);
  return text.empty() ? kNothing : text;
}

std::string as_raw(const Table& table, bool has_headings) {
  std::string shown;
  if (has_headings) {
    const char* separator = "";
    for (const Column& column : table.columns) {
      shown.append(separator).append(column.key);
      separator = "\t";
    }
    shown += '\n';
  }
  for (const Row& row : table.rows) {
    const char* separator = "";
    for (const Value& value : row) {
      shown.append(separator).append(printable(text_of(value), Escape::Raw));
      separator = "\t";
    }
    shown += '\n';
  }
  return shown;
}

std::string as_json(const Table& table) {
  std::string shown = "{\"format_version\":" + std::to_string(kFormatVersion) + ",\"rows\":[";
  const char* separator = "\n";
  for (const Row& row : table.rows) {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    for (size_t place = 0; place < row.size(); ++place)
      object[table.columns[place].key] = json_of(row[place]);
    shown.append(separator);
    shown += object.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace);
    separator = ",\n";
  }
  return shown + (table.rows.empty() ? "]}\n" : "\n]}\n");
}

}  // namespace zeldb::cli
