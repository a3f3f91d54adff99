// SPDX-License-Identifier: Apache-2.0
//
// The interface of a database engine. Above it stand lifting, parameters, statement cache,
// pooling, reconnecting and trace; an engine prepares a statement, runs it with its values and fills the
// result. Every call on a connection and its statements is made under the lock of the handle that has it.
#ifndef ZEL_DB_ENGINE_H
#define ZEL_DB_ENGINE_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "zel_db/database_url.h"
#include "zel_db/result.h"
#include "zel_db/schema.h"
#include "zel_db/sql/facts.h"
#include "zel_db/value.h"

namespace zel_db {

struct Outcome {
  int64_t row_id = 0;   // of the inserted row
  int64_t changed = 0;  // rows that an update or delete matched
};

class Prepared {
 public:
  explicit Prepared(Facts facts) : facts_(std::move(facts)) {}
  Prepared(const Prepared&) = delete;
  Prepared& operator=(const Prepared&) = delete;
  virtual ~Prepared() = default;

  // Runs to the end and is ready for the next run when it returns, so that nothing of the database stays
  // locked. rows and outcome may be null; rows receives all rows. values must be as many as the statement's
  // placeholders: else kSqlError.
  virtual int run(std::span<const Value> values, Result* rows, Outcome* outcome) = 0;

  const Facts& facts() const { return facts_; }

 private:
  const Facts facts_;
};

enum class Use : uint8_t { Once, Often };

class Connection {
 public:
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  virtual ~Connection() = default;

  // Null and a status when sql is not exactly one statement that the database understands.
  virtual std::unique_ptr<Prepared> prepare(std::string_view sql, Facts facts, Use use, int* status) = 0;
  // Whether the database still answers, without asking it.
  virtual bool is_usable() = 0;
  virtual bool in_transaction() = 0;
  // A transaction of the reads that follow. False where it saves nothing, within another one, or on failure.
  virtual bool begin_reads() { return false; }
  virtual bool end_reads() { return false; }
  // Whether an error has made its answers unreliable: it is then closed and never used again.
  virtual bool is_lost() const { return false; }
  // Whether the last failure was its statement's own: it has left a transaction as it was, and outside of one
  // the statement would have failed, too.
  virtual bool was_refused() const = 0;
  // The name of the database, for messages.
  virtual const std::string& name() const = 0;
  // Why the last call failed, in the engine's words.
  virtual const std::string& message() const = 0;
};

// How the engines' statements differ.
struct Dialect {
  const char* insert_without_values;  // after the table's name
  const char* row_id;                 // the type of the column _id
  std::string (*type)(const Column& column);
  const char* table_options;
  const char* begin_definitions;  // programs that make tables at the same time wait for each other
  const char* commit_definitions;
  // Around a batch of writes; the first and the last are null where the session needs no settings for it.
  const char* batch_settings;
  const char* begin_batch;
  const char* usual_settings;
  // The select that gives the names and types of a table's columns, and no row if there is no such table.
  std::string (*columns_of)(const std::string& table);
  const char* bytes;            // a value cast to this type has its length in bytes
  bool rebuilds_tables;         // a check cannot be added to a table that exists
  const char* without_indexes;  // after a table's name: the engine reads all of it, from the first row on
  // The planner looks for an index in each part of a condition, even if the row's id is given.
  bool searches_conditions;
  bool pays_for_order;  // ORDER BY costs time even if the rows come in that order anyway
};

// The database that a caller asks for.
struct Target {
  std::string url;
  std::string database;
  std::string user;  // these two if the URL names none
  std::string password;

  bool operator==(const Target&) const = default;
};

class Engine {
 public:
  Engine() = default;
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;
  virtual ~Engine() = default;

  // On failure null, and error says why in one line. open expects the database to exist, create makes it. url
  // is the target's, in parts.
  virtual std::unique_ptr<Connection> open(const DatabaseUrl& url, const Target& target,
                                           std::string* error) const = 0;
  virtual std::unique_ptr<Connection> create(const DatabaseUrl& url, const Target& target,
                                             std::string* error) const = 0;
  virtual const Dialect& dialect() const = 0;
};

// Null when this build has no engine for the scheme.
const Engine* engine_for(DatabaseUrl::Scheme scheme);

}  // namespace zel_db

#endif
