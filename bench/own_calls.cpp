// SPDX-License-Identifier: Apache-2.0
//
// Preloaded into the command: counts the statements that it asks by itself, and not through a function of the
// library. The number is written to the file that BENCH_OWN_CALLS names.
#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

#include "platform/zel_db.h"

namespace {

int own_calls = 0;

void count(const void* caller) {
  Dl_info from = {};
  if (dladdr(caller, &from) != 0 && std::strstr(from.dli_fname, "libzeldb") == nullptr) ++own_calls;
}

__attribute__((destructor)) void write_count() {
  if (const char* const file = std::getenv("BENCH_OWN_CALLS")) std::ofstream(file) << own_calls << '\n';
}

}  // namespace

extern "C" {
__attribute__((visibility("default"))) int zel_db_query(_zel_db_handle_t* handle, const char* table,
                                                        const char* const* columns, int ncolumns,
                                                        const char* where, const _zel_db_param_t* params,
                                                        int nparams, const char* order,
                                                        zel_db_result_t** out) {
  count(__builtin_return_address(0));
  static const auto next = reinterpret_cast<decltype(&zel_db_query)>(dlsym(RTLD_NEXT, "zel_db_query"));
  return next(handle, table, columns, ncolumns, where, params, nparams, order, out);
}

__attribute__((visibility("default"))) int zel_db_raw_query(_zel_db_handle_t* handle, const char* sql,
                                                            int capacity, zel_db_result_t** out) {
  count(__builtin_return_address(0));
  static const auto next =
      reinterpret_cast<decltype(&zel_db_raw_query)>(dlsym(RTLD_NEXT, "zel_db_raw_query"));
  return next(handle, sql, capacity, out);
}
}
