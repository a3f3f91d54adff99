// SPDX-License-Identifier: Apache-2.0
#include "tests/support/zel_db_shim.h"

#include <algorithm>
#include <concepts>
#include <map>
#include <mutex>
#include <optional>
#include <type_traits>
#include <utility>

#include "platform/zel_db.h"
#include "tests/support/libc_shim.h"

namespace zeldb_test {
namespace {

struct LiveResult {
  _zel_db_handle_t* handle;
  size_t call;
  std::vector<std::string> columns;
  std::vector<Rule> rules;
  unsigned stepped;
};

struct State {
  std::recursive_mutex mutex;
  std::vector<std::pair<Rule, int>> rules;
  std::vector<Call> calls;
  std::map<zel_db_result_t*, LiveResult> results;
  std::map<const zel_db_content_values_t*, std::vector<std::string>> values;
  std::map<_zel_db_handle_t*, int> handles;
  int strays = 0;
  ZelDbShim::Kind failing_kind = ZelDbShim::Kind::Call;
  int calls_seen = 0;
  int failing_call = 0;
  bool and_after = false;
};

// Never destroyed: libraries let go of things after this file's statics are gone.
State& state() {
  static auto* instance = new State;
  return *instance;
}

struct Locked {
  std::lock_guard<std::recursive_mutex> lock{state().mutex};
  State* operator->() const { return &state(); }
};

std::string shown(const char* text) {
  return text != nullptr ? text : "(null)";
}
std::string shown(std::integral auto number) {
  return std::to_string(number);
}

std::string shown(const _zel_db_param_t* params, int count) {
  std::string text;
  for (int i = 0; params != nullptr && i < count; ++i) {
    text += (i > 0 ? "," : "") + shown(params[i].Type) + ":";
    text += params[i].Type == 2 ? shown(static_cast<int64_t>(params[i].Value)) : shown(params[i].Value);
    if (params[i].Reserved != 0 || params[i].Count != 1) text += " (malformed)";
  }
  return text;
}

// Every rule for this call counts it; the first that is due applies.
std::optional<Rule> due(const std::string& op, const std::string& table = {}) {
  const Locked now;
  std::optional<Rule> found;
  for (auto& [rule, seen] : now->rules) {
    if (rule.op != op || (!rule.table.empty() && rule.table != table)) continue;
    ++seen;
    if (!found && (rule.nth == 0 || rule.nth == seen)) found = rule;
  }
  return found;
}

template <typename Forward>
int run(Call& call, Forward forward) {
  const std::optional<Rule> rule = due(call.op, call.table);
  // A put that the platform refuses for another reason than memory is no failure of the write.
  const int failed = call.op == "put" ? 4 : ZelDbShim::kFailed;
  const std::optional<Rule> fault = ZelDbShim::call_fails() ? Rule{.op = call.op, .status = failed} : rule;
  if (!fault || fault->with_result) call.status = forward();
  if (fault) call.status = fault->status;
  return call.status;
}

template <typename Forward>
int run_query(Call call, _zel_db_handle_t* handle, std::vector<std::string> columns, zel_db_result_t** out,
              Forward forward) {
  zel_db_result_t* result = nullptr;
  const int status = run(call, [&] { return forward(out != nullptr ? &result : nullptr); });
  if (out != nullptr) *out = result;
  const Locked now;
  if (result != nullptr) {
    LiveResult live{handle, now->calls.size(), std::move(columns), {}, 0};
    for (const char* op : {"step", "row_count", "column"}) {
      if (const auto rule = due(op, call.table)) live.rules.push_back(*rule);
    }
    now->results.emplace(result, std::move(live));
  }
  now->calls.push_back(std::move(call));
  return status;
}

template <typename Forward>
int run_write(Call call, int64_t* out, Forward forward) {
  const int status = run(call, [&] { return forward(&call.rows); });
  if (out != nullptr && status == 0) *out = call.rows;
  const Locked now;
  now->calls.push_back(std::move(call));
  return status;
}

template <typename Kept, typename Forward>
auto run_create(Call call, Kept* kept, Forward forward) {
  decltype(forward()) created = nullptr;
  run(call, [&] { return (created = forward()) == nullptr ? 1 : 0; });
  const Locked now;
  if (created != nullptr && kept != nullptr) (*kept)[created] = {};
  now->calls.push_back(std::move(call));
  return created;
}

std::vector<std::string> puts_of(const zel_db_content_values_t* values) {
  const Locked now;
  const auto live = now->values.find(values);
  return live != now->values.end() ? live->second : std::vector<std::string>();
}

template <typename Forward>
int run_put(const zel_db_content_values_t* values, const std::string& text, Forward forward) {
  Call call{.op = "put"};
  const int status = run(call, forward);
  const Locked now;
  if (status == 0) now->values[values].push_back(text);
  return status;
}

LiveResult* live(zel_db_result_t* result) {
  const auto found = state().results.find(result);
  return found != state().results.end() ? &found->second : nullptr;
}

// The status of a column that a rule makes unreadable, else 0.
template <typename Column>
int column_fault(zel_db_result_t* result, Column column) {
  const Locked now;
  if (ZelDbShim::call_fails(ZelDbShim::Kind::Read)) return ZelDbShim::kFailed;
  LiveResult* const from = live(result);
  if (from == nullptr) return 0;
  for (const Rule& rule : from->rules) {
    if (rule.op != "column") continue;
    if constexpr (std::is_same_v<Column, int>) {
      const auto place = static_cast<size_t>(column);
      if (rule.column == column || (place < from->columns.size() && from->columns[place] == rule.name)) {
        return rule.status;
      }
    } else if (rule.name == shown(column)) {
      return rule.status;
    }
  }
  return 0;
}

unsigned value_of(unsigned size) {
  return size;
}
unsigned value_of(const unsigned* size) {
  return *size;
}

void note_size(zel_db_result_t* result, unsigned size) {
  const Locked now;
  const LiveResult* const from = live(result);
  if (from != nullptr && from->stepped == 1 && from->call < now->calls.size())
    now->calls[from->call].sizes.push_back(size);
}

template <typename Map, typename Key>
void released(Map& map, Key key) {
  const Locked now;
  if (key != nullptr && map.erase(key) == 0) ++now->strays;
}

}  // namespace

std::string to_text(const Call& call) {
  const std::string status = "|" + shown(call.status);
  if (!call.text.empty()) return call.op + "|" + call.text + status;
  return call.op + "|" + call.table + "|" + call.columns + "|" + call.where + "|" + call.params + "|" +
         call.order + status;
}

void ZelDbShim::reset() {
  const Locked now;
  now->rules.clear();
  now->calls.clear();
  for (auto& [result, known] : now->results) known.call = SIZE_MAX;
}

void ZelDbShim::fail(Rule rule) {
  Locked()->rules.emplace_back(std::move(rule), 0);
}

std::vector<Call> ZelDbShim::calls(std::string_view op) {
  const Locked now;
  std::vector<Call> found;
  std::copy_if(now->calls.begin(), now->calls.end(), std::back_inserter(found),
               [op](const Call& call) { return op.empty() || call.op == op; });
  return found;
}

std::vector<std::string> ZelDbShim::texts(std::string_view op) {
  std::vector<std::string> found;
  for (const Call& call : calls(op)) found.push_back(to_text(call));
  return found;
}

int ZelDbShim::fail_calls(Kind kind, int nth, bool and_after) {
  const Locked now;
  now->failing_kind = kind;
  now->failing_call = nth;
  now->and_after = and_after;
  return std::exchange(now->calls_seen, 0);
}

bool ZelDbShim::call_fails(Kind kind) {
  const Locked now;
  if (now->failing_call == 0 || now->failing_kind != kind || !Side::was_under_test()) return false;
  const int seen = ++now->calls_seen;
  return seen == now->failing_call || (now->and_after && seen > now->failing_call);
}

std::string ZelDbShim::alive() {
  const Locked now;
  std::string text;
  const auto add = [&text](size_t count, const char* what) {
    if (count > 0) text += shown(count) + what;
  };
  add(now->results.size(), " results alive;");
  add(now->values.size(), " content values alive;");
  add(now->handles.size(), " handles open;");
  add(static_cast<size_t>(now->strays), " released wrongly;");
  return text;
}

}  // namespace zeldb_test

using namespace zeldb_test;  // NOLINT(google-build-using-namespace): the functions below are global by nature

#pragma GCC visibility push(default)
extern "C" {

_zel_db_handle_t* get_dmdb_handle(int argc, char** argv, int flags) {
  const Side ours(false);
  const std::string text = shown(argc) + (argv != nullptr ? " argv " : " null ") + shown(flags);
  return run_create({.op = "get_dmdb_handle", .text = text}, static_cast<decltype(state().handles)*>(nullptr),
                    [=] { return ZELDB_NEXT(get_dmdb_handle)(argc, argv, flags); });
}

_zel_db_handle_t* zel_db_open(const char* host, const char* user, const char* password, const char* database,
                              unsigned flags) {
  const Side ours(false);
  const std::string text = shown(host) + " " + shown(user) + " '" + shown(password) + "' " + shown(database);
  return run_create({.op = "open", .table = shown(database), .text = text + " " + shown(flags)},
                    &state().handles,
                    [=] { return ZELDB_NEXT(zel_db_open)(host, user, password, database, flags); });
}

int zel_db_close(_zel_db_handle_t* handle) {
  const Side ours(false);
  const Locked now;
  released(now->handles, handle);
  for (const auto& [result, known] : now->results) now->strays += known.handle == handle ? 1 : 0;
  now->calls.push_back({.op = "close"});
  return ZELDB_NEXT(zel_db_close)(handle);
}

int zel_db_query(_zel_db_handle_t* handle, const char* table, const char* const* columns, int ncolumns,
                 const char* where, const _zel_db_param_t* params, int nparams, const char* order,
                 zel_db_result_t** out) {
  const Side ours(false);
  Call call{.op = "query", .table = shown(table), .where = shown(where), .params = shown(params, nparams)};
  call.order = shown(order);
  std::vector<std::string> names;
  for (int i = 0; columns != nullptr && i < ncolumns; ++i) names.push_back(shown(columns[i]));
  for (const std::string& name : names) call.columns += (call.columns.empty() ? "" : ",") + name;
  return run_query(std::move(call), handle, std::move(names), out, [=](zel_db_result_t** result) {
    return ZELDB_NEXT(zel_db_query)(handle, table, columns, ncolumns, where, params, nparams, order, result);
  });
}

int zel_db_raw_query(_zel_db_handle_t* handle, const char* sql, int capacity, zel_db_result_t** out) {
  const Side ours(false);
  const std::string text = shown(sql).substr(0, static_cast<size_t>(std::max(capacity, 0)));
  return run_query(
      {.op = "raw_query", .text = text, .capacity = capacity}, handle, {}, out,
      [=](zel_db_result_t** result) { return ZELDB_NEXT(zel_db_raw_query)(handle, sql, capacity, result); });
}

int zel_db_result_step(zel_db_result_t* result) {
  const Side ours(false);
  const Locked now;
  if (ZelDbShim::call_fails()) return ZelDbShim::kFailed;
  if (LiveResult* const from = live(result)) {
    if (from->call < now->calls.size()) ++now->calls[from->call].steps;
    for (const Rule& rule : from->rules) {
      if (rule.op == "step" && from->stepped >= rule.after) return rule.status;
    }
    ++from->stepped;
  }
  return ZELDB_NEXT(zel_db_result_step)(result);
}

unsigned zel_db_result_row_count(zel_db_result_t* result) {
  const Side ours(false);
  const Locked now;
  unsigned count = ZELDB_NEXT(zel_db_result_row_count)(result);
  LiveResult* const from = live(result);
  for (const Rule& rule : from != nullptr ? from->rules : std::vector<Rule>())
    count -= std::min(count, rule.fewer);
  return count;
}

int zel_db_result_reset(zel_db_result_t* result) {
  const Side ours(false);
  const Locked now;
  if (LiveResult* const from = live(result)) from->stepped = 0;
  return ZELDB_NEXT(zel_db_result_reset)(result);
}

// NOLINTBEGIN(bugprone-macro-parentheses): types and names
#define ZELDB_SHIM_READ(function, key, type)                               \
  int function(zel_db_result_t* result, key column, type* out) {           \
    const Side ours(false);                                                \
    const int fault = column_fault(result, column);                        \
    return fault != 0 ? fault : ZELDB_NEXT(function)(result, column, out); \
  }
#define ZELDB_SHIM_READ_SIZED(function, key, type, size_type, size)                 \
  int function(zel_db_result_t* result, key column, type* buffer, size_type size) { \
    const Side ours(false);                                                         \
    note_size(result, value_of(size));                                              \
    const int fault = column_fault(result, column);                                 \
    return fault != 0 ? fault : ZELDB_NEXT(function)(result, column, buffer, size); \
  }
ZELDB_SHIM_READ(zel_db_result_column_int, int, int32_t)
ZELDB_SHIM_READ(zel_db_result_column_uint, int, uint32_t)
ZELDB_SHIM_READ(zel_db_result_column_uint64, int, uint64_t)
ZELDB_SHIM_READ(zel_db_result_column_int64, int, int64_t)
ZELDB_SHIM_READ(zel_db_result_column_short_uint, int, uint16_t)
ZELDB_SHIM_READ(zel_db_result_column_uchar, int, uint8_t)
ZELDB_SHIM_READ_SIZED(zel_db_result_column_text, int, char, unsigned, capacity)
ZELDB_SHIM_READ_SIZED(zel_db_result_column_blob, int, void, unsigned*, size)
ZELDB_SHIM_READ_SIZED(zel_db_result_column_bytes, int, void, unsigned*, size)
ZELDB_SHIM_READ(extract_uint_column_from_result, const char*, uint32_t)
ZELDB_SHIM_READ(extract_uint64_column_from_result, const char*, uint64_t)
ZELDB_SHIM_READ_SIZED(extract_str_column_from_result, const char*, char, unsigned, capacity)
// NOLINTEND(bugprone-macro-parentheses)

void zel_db_free_result(zel_db_result_t* result) {
  const Side ours(false);
  released(state().results, result);
  ZELDB_NEXT(zel_db_free_result)(result);
}

int zel_db_insert(_zel_db_handle_t* handle, const char* table, const zel_db_content_values_t* values,
                  int flags, int64_t* id) {
  const Side ours(false);
  Call call{.op = "insert", .table = shown(table), .puts = puts_of(values)};
  if (flags != 0) call.text = " flags " + shown(flags);
  if (id == nullptr) call.text += " without id";
  return run_write(std::move(call), id, [=](int64_t* rows) {
    return ZELDB_NEXT(zel_db_insert)(handle, table, values, flags, rows);
  });
}

int zel_db_update(_zel_db_handle_t* handle, const char* table, const zel_db_content_values_t* values,
                  const char* where, const _zel_db_param_t* params, int nparams, int64_t* updated) {
  const Side ours(false);
  Call call{.op = "update", .table = shown(table), .where = shown(where), .params = shown(params, nparams)};
  call.puts = puts_of(values);
  return run_write(std::move(call), updated, [=](int64_t* rows) {
    return ZELDB_NEXT(zel_db_update)(handle, table, values, where, params, nparams, rows);
  });
}

int zel_db_delete(_zel_db_handle_t* handle, const char* table, const char* where,
                  const _zel_db_param_t* params, int nparams, int64_t* deleted) {
  const Side ours(false);
  Call call{.op = "delete", .table = shown(table), .where = shown(where), .params = shown(params, nparams)};
  return run_write(std::move(call), deleted, [=](int64_t* rows) {
    return ZELDB_NEXT(zel_db_delete)(handle, table, where, params, nparams, rows);
  });
}

zel_db_content_values_t* zel_db_get_content_values(_zel_db_handle_t* handle) {
  const Side ours(false);
  return run_create({.op = "get_content_values"}, &state().values,
                    [=] { return ZELDB_NEXT(zel_db_get_content_values)(handle); });
}

#define ZELDB_SHIM_PUT(kind, type)                                                                 \
  int zel_db_content_put_##kind(zel_db_content_values_t* values, const char* column, type value) { \
    const Side ours(false);                                                                        \
    return run_put(values, #kind " " + shown(column) + "=" + shown(value),                         \
                   [=] { return ZELDB_NEXT(zel_db_content_put_##kind)(values, column, value); });  \
  }
ZELDB_SHIM_PUT(text, const char*)
ZELDB_SHIM_PUT(int, int32_t)
ZELDB_SHIM_PUT(uint, uint32_t)
ZELDB_SHIM_PUT(uint64, uint64_t)
ZELDB_SHIM_PUT(short_uint, uint16_t)
ZELDB_SHIM_PUT(uchar, uint8_t)

int zel_db_content_put_null(zel_db_content_values_t* values, const char* column) {
  const Side ours(false);
  return run_put(values, "null " + shown(column),
                 [=] { return ZELDB_NEXT(zel_db_content_put_null)(values, column); });
}

void zel_db_content_clear(zel_db_content_values_t* values) {
  const Side ours(false);
  const Locked now;
  if (now->values.contains(values)) now->values[values].clear();
  ZELDB_NEXT(zel_db_content_clear)(values);
}

void zel_db_free_content_values(zel_db_content_values_t* values) {
  const Side ours(false);
  released(state().values, values);
  ZELDB_NEXT(zel_db_free_content_values)(values);
}

}  // extern "C"
#pragma GCC visibility pop
