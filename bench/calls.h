// SPDX-License-Identifier: Apache-2.0
//
// The reads that a trace of the table access shows, as prepared statements and their values: what code by
// hand would run in their place.
#ifndef BENCH_CALLS_H
#define BENCH_CALLS_H

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

struct Value {
  bool is_text;
  std::string text;
  int64_t number;
};

struct Call {
  bool properties;  // of the property database
  size_t statement;
  std::vector<Value> values;
};

struct Template {
  std::string sql;
  std::string parameters;  // a letter for each: t, a text, or n, a number
};

struct Calls {
  std::vector<Template> statements;
  std::vector<Call> calls;
};

// Without the writes.
Calls read_calls(const std::string& trace);

}  // namespace bench

#endif
