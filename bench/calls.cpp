// SPDX-License-Identifier: Apache-2.0
#include "bench/calls.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string_view>

namespace bench {

namespace {

bool ends_with_like(std::string_view sql) {
  while (!sql.empty() && sql.back() == ' ') sql.remove_suffix(1);
  return sql.ends_with("LIKE") || sql.ends_with("like");
}

bool is_digit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// Takes the literals out of a condition, except those after LIKE, which decide the index that serves.
class Lifting {
 public:
  Lifting(std::string_view where, std::string_view parameters) : rest_(where), parameters_(parameters) {
    while (!rest_.empty()) step();
  }

  std::string sql;
  std::vector<Value> values;

 private:
  void step() {
    const char c = rest_.front();
    const char before = sql.empty() ? ' ' : sql.back();
    if (c == '"' || c == '\'') {
      take_text(c);
    } else if (c == '?') {
      rest_.remove_prefix(1);
      const size_t end = std::min(parameters_.find(','), parameters_.size());
      add_number(parameters_.substr(0, end));
      parameters_.remove_prefix(std::min(end + 1, parameters_.size()));
    } else if (is_digit(c) && (before == '=' || before == '<' || before == '>')) {
      const auto* const end = std::find_if_not(rest_.begin(), rest_.end(), is_digit);
      const auto size = static_cast<size_t>(end - rest_.begin());
      add_number(rest_.substr(0, size));
      rest_.remove_prefix(size);
    } else {
      sql.push_back(c);
      rest_.remove_prefix(1);
    }
  }
  void add_number(std::string_view digits) {
    values.push_back({false, "", std::strtoll(std::string(digits).c_str(), nullptr, 10)});
    sql.push_back('?');
  }
  void take_text(char quote) {
    const size_t end = std::min(rest_.find(quote, 1), rest_.size() - 1);
    const std::string text(rest_.substr(1, end - 1));
    rest_.remove_prefix(end + 1);
    if (ends_with_like(sql)) {
      sql.append("'").append(text).append("'");
    } else {
      values.push_back({true, text, 0});
      sql.push_back('?');
    }
  }

  std::string_view rest_;
  std::string_view parameters_;
};

std::string letters_of(const std::vector<Value>& values) {
  std::string letters;
  for (const Value& value : values) letters.push_back(value.is_text ? 't' : 'n');
  return letters;
}

// operation|table|columns|where|parameters|order|status; a condition may have bars of its own.
std::vector<std::string> fields_of(std::string line) {
  std::vector<std::string> front, back;
  for (int i = 0; i < 3; ++i) {
    const size_t bar = line.find('|');
    front.push_back(line.substr(0, bar));
    line.erase(0, bar + 1);
  }
  for (int i = 0; i < 3; ++i) {
    const size_t bar = line.rfind('|');
    back.push_back(line.substr(bar + 1));
    line.erase(bar);
  }
  front.push_back(line);
  front.insert(front.end(), back.rbegin(), back.rend());
  return front;
}

}  // namespace

Calls read_calls(const std::string& trace) {
  Calls calls;
  std::map<std::string, size_t> known;
  std::ifstream lines(trace);
  for (std::string line; std::getline(lines, line);) {
    if (std::count(line.begin(), line.end(), '|') < 6) continue;
    const std::vector<std::string> fields = fields_of(line);
    const bool raw = fields[0] == "raw";
    if ((!raw && fields[0] != "query") || fields[6] != "0") continue;
    const Lifting lifted(fields[3], fields[4]);
    std::string sql = lifted.sql;
    if (!raw) {
      sql = "SELECT " + (fields[2].empty() ? "*" : fields[2]) + " FROM " + fields[1];
      if (!lifted.sql.empty()) sql += " WHERE " + lifted.sql;
      if (!fields[5].empty()) sql += " ORDER BY " + fields[5];
    }
    const auto [place, fresh] = known.try_emplace(sql, calls.statements.size());
    if (fresh) calls.statements.push_back({sql, letters_of(lifted.values)});
    calls.calls.push_back({fields[1] == "propertiesDCTbl", place->second, lifted.values});
  }
  return calls;
}

}  // namespace bench
