// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_SESSION_H
#define ZEL_DB_SESSION_H

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "zel_db/engine.h"
#include "zel_db/statement_cache.h"

namespace zel_db {

// Which database, as its user asks for it.
struct Origin {
  std::string url;
  std::string database;
  std::string user;
  std::string password;

  bool operator==(const Origin&) const = default;
};

// ZEL_DB_URL or its default.
std::string_view environment_url();

// An open connection with what is prepared on it.
struct Session {
  std::unique_ptr<Connection> connection;
  const Dialect* dialect;
  StatementCache cache;
};

// The engine and the address that an origin names. On failure null, and error says why in one line.
struct Location {
  const Engine* engine;
  Target target;
};
std::unique_ptr<Location> locate(const Origin& origin, std::string* error);

// Refuses what a newer program has written. Databases without a version are taken as they are.
bool has_known_schema(Connection& connection, std::string* error);

// Null when the database cannot be opened; error and the log say why, the log once until this changes.
std::unique_ptr<Session> open_session(const Origin& origin, std::string* error);

// Guards what little is shared by all handles below their own locks; nothing else is locked under it.
std::mutex& process_mutex();

}  // namespace zel_db

#endif
