// SPDX-License-Identifier: Apache-2.0
//
// The exported interface of handles, queries and writes: checks, trace, and on to the handle.
#include <cstring>

#include "zel_db/c_face.h"
#include "zel_db/connections.h"
#include "zel_db/content_values.h"
#include "zel_db/handle.h"
#include "zel_db/trace.h"

using namespace zel_db;  // NOLINT(google-build-using-namespace): exported C functions stand outside

namespace {

std::string_view text_or_empty(const char* text) {
  return text != nullptr ? text : std::string_view();
}

bool are_complete(const char* const* columns, int count) {
  if (count < 0 || (columns == nullptr && count != 0)) return false;
  for (int i = 0; i < count; ++i) {
    if (columns[i] == nullptr || *columns[i] == '\0') return false;
  }
  return true;
}

bool are_complete(const _zel_db_param_t* parameters, int count) {
  return count == 0 || (count > 0 && parameters != nullptr);
}

bool is_named(const char* table) {
  return table != nullptr && *table != '\0';
}

std::string joined(const char* const* columns, int count) {
  std::string names;
  for (int i = 0; i < count; ++i) names.append(i != 0 ? "," : "").append(columns[i]);
  return names;
}

std::string joined(const ContentValues& values) {
  const std::string_view names = values.names();
  return std::string(names.substr(0, names.empty() ? 0 : names.size() - 1));
}

// Runs a call and writes its line; describe is only asked when there is a trace.
template <class Describe, class Run>
int traced(_zel_db_handle_t* handle, Describe describe, Run run) {
  return guarded([&] {
    const int status = run();
    if (handle->trace() != nullptr) handle->trace()->write(describe(), status);
    return status;
  });
}

}  // namespace

_zel_db_handle_t* get_dmdb_handle(int /*argc*/, char** /*argv*/, int /*flags*/) {
  Handle* handle = nullptr;
  guarded([&] {
    handle = inventory_handle();
    return static_cast<int>(kOk);
  });
  return handle;
}

_zel_db_handle_t* zel_db_open(const char* /*host*/, const char* user, const char* password,
                              const char* database, unsigned /*flags*/) {
  if (database == nullptr) return nullptr;
  Handle* handle = nullptr;
  guarded([&] {
    std::string reason;  // it is in the log
    handle = open_handle({std::string(environment_url()), database, std::string(text_or_empty(user)),
                          std::string(text_or_empty(password))},
                         &reason);
    return static_cast<int>(kOk);
  });
  return handle;
}

int zel_db_close(_zel_db_handle_t* handle) {
  return guarded([&] { return static_cast<int>(close_handle(handle) ? kOk : kInvalidArgument); });
}

int zel_db_query(_zel_db_handle_t* handle, const char* table, const char* const* columns, int ncolumns,
                 const char* where, const _zel_db_param_t* params, int nparams, const char* order,
                 zel_db_result_t** out) {
  if (out == nullptr) return kInvalidArgument;
  *out = nullptr;
  if (handle == nullptr || !is_named(table) || !are_complete(columns, ncolumns) ||
      !are_complete(params, nparams)) {
    return kInvalidArgument;
  }
  const Parameters parameters(params, static_cast<size_t>(nparams));
  const auto describe = [&] {
    return Call{
        "query", table, joined(columns, ncolumns), text_or_empty(where), parameters, text_or_empty(order)};
  };
  return traced(handle, describe, [&] {
    return handle->query(table, {columns, static_cast<size_t>(ncolumns)}, text_or_empty(where), parameters,
                         text_or_empty(order), out);
  });
}

int zel_db_raw_query(_zel_db_handle_t* handle, const char* sql, int capacity, zel_db_result_t** out) {
  if (out != nullptr) *out = nullptr;
  if (handle == nullptr || sql == nullptr || capacity < 0) return kInvalidArgument;
  const std::string_view text(sql, strnlen(sql, static_cast<size_t>(capacity)));
  const auto describe = [&] { return Call{"raw", {}, {}, text, {}, {}}; };
  return traced(handle, describe, [&] { return handle->raw_query(text, out); });
}

int zel_db_insert(_zel_db_handle_t* handle, const char* table, const zel_db_content_values_t* values,
                  int /*flags*/, int64_t* id) {
  if (handle == nullptr || !is_named(table) || values == nullptr) return kInvalidArgument;
  const auto describe = [&] { return Call{"insert", table, joined(*values), {}, {}, {}}; };
  return traced(handle, describe, [&] { return handle->insert(table, *values, id); });
}

int zel_db_update(_zel_db_handle_t* handle, const char* table, const zel_db_content_values_t* values,
                  const char* where, const _zel_db_param_t* params, int nparams, int64_t* updated) {
  if (handle == nullptr || !is_named(table) || values == nullptr || values->empty() ||
      !are_complete(params, nparams)) {
    return kInvalidArgument;
  }
  const Parameters parameters(params, static_cast<size_t>(nparams));
  const auto describe = [&] {
    return Call{"update", table, joined(*values), text_or_empty(where), parameters, {}};
  };
  return traced(handle, describe,
                [&] { return handle->update(table, *values, text_or_empty(where), parameters, updated); });
}

int zel_db_delete(_zel_db_handle_t* handle, const char* table, const char* where,
                  const _zel_db_param_t* params, int nparams, int64_t* deleted) {
  if (handle == nullptr || !is_named(table) || !are_complete(params, nparams)) return kInvalidArgument;
  const Parameters parameters(params, static_cast<size_t>(nparams));
  const auto describe = [&] { return Call{"delete", table, {}, text_or_empty(where), parameters, {}}; };
  return traced(handle, describe,
                [&] { return handle->remove(table, text_or_empty(where), parameters, deleted); });
}

int zel_db_begin_batch(_zel_db_handle_t* handle) {
  return guarded([&] { return is_open(handle) ? handle->begin_batch() : kInvalidArgument; });
}

int zel_db_end_batch(_zel_db_handle_t* handle) {
  return guarded([&] { return is_open(handle) ? handle->end_batch() : kInvalidArgument; });
}

int zel_db_begin_reads(_zel_db_handle_t* handle) {
  return guarded([&] { return begin_reads(handle); });
}

int zel_db_end_reads(_zel_db_handle_t* handle) {
  return guarded([&] { return end_reads(handle); });
}

const char* zel_db_get_error_str(int status) {
  return status_text(status);
}
