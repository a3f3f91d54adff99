// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_SESSION_H
#define ZEL_DB_SESSION_H

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

#include "zel_db/engine.h"
#include "zel_db/recent_queries.h"
#include "zel_db/statement_cache.h"

namespace zel_db {

// ZEL_DB_URL or its default.
std::string_view environment_url();

// An open connection with what is prepared on it.
struct Session {
  std::unique_ptr<Connection> connection;
  const Dialect* dialect;
  StatementCache cache;
  RecentQueries recent_queries;
  std::optional<std::thread::id> reader{};  // whose reads are in one transaction

  bool begin_reads();
  bool end_reads();  // if it fails, the transaction may still be open
  bool is_read_elsewhere() const { return reader && reader != std::this_thread::get_id(); }
};

// The engine that the target's URL asks for, and the URL in parts. On failure null, and error says why in one
// line.
const Engine* engine_of(const Target& target, DatabaseUrl* url, std::string* error);

// Refuses what a newer program has written. Databases without a version are taken as they are.
bool has_known_schema(Connection& connection, std::string* error);

// Null when the database cannot be opened; error and the log say why, the log once until this changes.
std::unique_ptr<Session> open_session(const Target& target, std::string* error);

// Whether this thread is between the begin and the end of reads of the inventory.
bool& is_reading();

// Guards what little is shared by all handles below their own locks; nothing else is locked under it.
std::mutex& process_mutex();

}  // namespace zel_db

#endif
