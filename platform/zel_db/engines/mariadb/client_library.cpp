// SPDX-License-Identifier: Apache-2.0
#include "zel_db/engines/mariadb/client_library.h"

#include <dlfcn.h>

#include <cstring>
#include <initializer_list>
#include <mutex>

namespace zel_db {

constinit ClientLibrary api{};

namespace {

struct Symbol {
  const char* name;
  void* place;
};

// Empty, or why not. It stays loaded: it has functions that the end of the process calls.
std::string load() {
  void* const library = dlopen(ZEL_DB_CLIENT_LIBRARY, RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (library == nullptr) return dlerror();
#define ZEL_DB_CLIENT_FUNCTION(Name) Symbol{#Name, &api.Name},
  for (const Symbol& symbol : {ZEL_DB_CLIENT_FUNCTIONS(ZEL_DB_CLIENT_FUNCTION)}) {
#undef ZEL_DB_CLIENT_FUNCTION
    void* const address = dlsym(library, symbol.name);
    if (address == nullptr) return dlerror();
    std::memcpy(symbol.place, &address, sizeof address);
  }
  api.mysql_server_init(0, nullptr, nullptr);
  return {};
}

}  // namespace

// A failure, such as too many open files, may be over with the next attempt.
bool load_client_library(std::string* error) {
  static constinit std::mutex mutex;
  static constinit bool is_loaded = false;
  const std::lock_guard lock(mutex);
  if (is_loaded) return true;
  const std::string reason = load();
  is_loaded = reason.empty();
  if (!is_loaded) *error = reason;
  return is_loaded;
}

}  // namespace zel_db
