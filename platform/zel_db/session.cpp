// SPDX-License-Identifier: Apache-2.0
#include "zel_db/session.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>

#include "platform/vrel_log.h"

namespace zel_db {
namespace {

// A service asks for its database with every call, so the log gets one line per outage, not per call.
class OpenFailures {
 public:
  void report(const std::string& name, const std::string& line) {
    const std::lock_guard lock(process_mutex());
    std::string& last = last_[name];
    if (last == line) return;
    last = line;
    vrel_log::logErr("zel_db: %s", line.c_str());
  }

  void forget(const std::string& name) {
    const std::lock_guard lock(process_mutex());
    last_.erase(name);
  }

 private:
  std::map<std::string, std::string> last_;
};

OpenFailures& open_failures() {
  static auto& failures = *new OpenFailures;
  return failures;
}

std::unique_ptr<Session> try_open(const Target& target, std::string* error) {
  DatabaseUrl url;
  const Engine* engine = engine_of(target, &url, error);
  if (engine == nullptr) return nullptr;
  auto session = std::make_unique<Session>();
  session->dialect = &engine->dialect();
  session->connection = engine->open(url, target, error);
  if (session->connection == nullptr) return nullptr;
  if (!has_known_schema(*session->connection, error)) return nullptr;
  return session;
}

}  // namespace

std::mutex& process_mutex() {
  static auto& mutex = *new std::mutex;
  return mutex;
}

bool Session::begin_reads() {
  if (!connection->begin_reads()) return false;
  reader = std::this_thread::get_id();
  return true;
}

bool Session::end_reads() {
  reader.reset();
  return connection->end_reads();
}

bool& is_reading() {
  static thread_local bool reads = false;
  return reads;
}

std::string_view environment_url() {
  const char* url = secure_getenv("ZEL_DB_URL");
  return url != nullptr && *url != '\0' ? url : kDefaultUrl;
}

const Engine* engine_of(const Target& target, DatabaseUrl* url, std::string* error) {
  std::optional<DatabaseUrl> parsed = parse_database_url(target.url, error);
  if (!parsed) return nullptr;
  if (std::find(kDatabases.begin(), kDatabases.end(), target.database) == kDatabases.end() &&
      target.database != kFleetDatabase) {
    *error = "there is no database \"" + target.database + "\", only dmdb and propertiesdb";
    return nullptr;
  }
  const Engine* engine = engine_for(parsed->scheme);
  if (engine == nullptr) {
    *error = "cannot open " + target.database + ": the engine for mariadb:// is not part of this build";
    return nullptr;
  }
  *url = std::move(*parsed);
  return engine;
}

bool has_known_schema(Connection& connection, std::string* error) {
  int status = kOk;
  const auto statement = connection.prepare("SELECT max(Version) FROM ZeldbSchema", {}, Use::Once, &status);
  Result rows;
  if (statement != nullptr) status = statement->run({}, &rows, nullptr);
  if (status == kSqlError) return true;  // no such table
  if (status != kOk) {
    *error = "cannot read the schema version of " + connection.name() + ": " + connection.message();
    return false;
  }
  uint64_t version = 0;
  if (rows.step() != kRow || rows.number(0, &version) != kOk) return true;
  if (static_cast<int64_t>(version) <= kSchemaVersion) return true;
  *error = "cannot use " + connection.name() + ": its schema has version " + std::to_string(version) +
           ", this program knows up to " + std::to_string(kSchemaVersion);
  return false;
}

std::unique_ptr<Session> open_session(const Target& target, std::string* error) {
  const std::string name = target.url + ' ' + target.database;
  std::unique_ptr<Session> session = try_open(target, error);
  if (session == nullptr) {
    open_failures().report(name, *error);
  } else {
    open_failures().forget(name);
  }
  return session;
}

}  // namespace zel_db
