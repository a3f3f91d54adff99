// SPDX-License-Identifier: Apache-2.0
#include "cli/output.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <numeric>

#include "cli/text.h"

namespace zeldb::cli {

namespace {

constexpr size_t kGap = 2;
constexpr size_t kNarrowest = 6;  // that a text is cut to
constexpr const char* kNothing = "-";

std::string text_of(const Value& value) {
  if (const auto* number = std::get_if<uint64_t>(&value)) return std::to_string(*number);
  if (const auto* number = std::get_if<int64_t>(&value)) return std::to_string(*number);
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  return {};
}

}  // namespace

std::string cell_of(const Column& column, const Value& value) {
  if (column.type == Type::Health) return health_text(std::get<uint64_t>(value));
  const std::string text = printable(text_of(value), Escape::Terminal);
  return text.empty() ? kNothing : text;
}

namespace {

using Line = std::vector<std::string>;

std::vector<Line> lines_of(const Table& table, bool has_headings) {
  std::vector<Line> lines;
  if (has_headings) {
    Line& headings = lines.emplace_back();
    for (const Column& column : table.columns) headings.emplace_back(column.heading);
  }
  for (const Row& row : table.rows) {
    Line& line = lines.emplace_back();
    for (size_t place = 0; place < row.size(); ++place)
      line.push_back(cell_of(table.columns[place], row[place]));
  }
  return lines;
}

// Takes from the widest text, again and again, until the line fits or no text has anything to give.
void fit(const std::vector<Column>& columns, std::vector<size_t>& widths, size_t width) {
  const auto gaps = kGap * (widths.size() - 1);
  const auto spare = [&](size_t place) {
    const bool is_cut =
        columns[place].type == Type::Text && !columns[place].is_whole && widths[place] > kNarrowest;
    return is_cut ? widths[place] : 0;
  };
  size_t total = std::accumulate(widths.begin(), widths.end(), gaps);
  while (total > width) {
    size_t widest = 0;
    for (size_t place = 1; place < widths.size(); ++place) {
      if (spare(place) > spare(widest)) widest = place;
    }
    if (spare(widest) == 0) return;
    --widths[widest];
    --total;
  }
}

std::string coloured(const std::string& health, const std::string& shown) {
  static constexpr const char* kColours[] = {"", "\x1b[32m", "\x1b[33m", "\x1b[31m"};
  const char* const colour = kColours[static_cast<size_t>(tone_of(health))];
  return *colour != '\0' ? colour + shown + "\x1b[0m" : shown;
}

bool is_health(const Column& column) {
  return column.type == Type::Health || column.type == Type::HealthText;
}

nlohmann::ordered_json json_of(const Value& value) {
  if (const auto* number = std::get_if<uint64_t>(&value)) return *number;
  if (const auto* number = std::get_if<int64_t>(&value)) return *number;
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  return nullptr;
}

// The cells of a line in their columns, up to the width of the terminal.
std::string laid_out(const Line& line, const std::vector<Column>& columns, const std::vector<size_t>& widths,
                     size_t limit, bool has_colour) {
  std::string shown;
  size_t end = 0;    // of what has been written
  size_t begin = 0;  // of the column
  for (size_t place = 0; place < widths.size(); begin += widths[place++] + kGap) {
    if (begin >= limit) break;
    const Column& column = columns[place];
    const size_t room = std::min(widths[place], limit - begin);
    const std::string cell = cut(line[place], room);
    const size_t width = width_of(cell);
    const bool is_left = is_text(column.type) || is_health(column);
    const size_t start = begin + (is_left ? 0 : room - width);
    shown.append(start - end, ' ');
    shown += has_colour && is_health(column) ? coloured(line[place], cell) : cell;
    end = start + width;
  }
  return shown + '\n';
}

}  // namespace

std::string as_table(const Table& table, const TableStyle& style) {
  const std::vector<Line> lines = lines_of(table, style.has_headings);
  std::vector<size_t> widths(table.columns.size());
  for (const Line& line : lines) {
    for (size_t place = 0; place < line.size(); ++place)
      widths[place] = std::max(widths[place], width_of(line[place]));
  }
  const size_t limit = style.terminal.width != 0 ? style.terminal.width : std::numeric_limits<size_t>::max();
  fit(table.columns, widths, limit);
  std::string shown;
  for (const Line& line : lines)
    shown += laid_out(line, table.columns, widths, limit, style.terminal.has_colour);
  return shown;
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
