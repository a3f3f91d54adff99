// SPDX-License-Identifier: Apache-2.0
//
// What a database engine is to the rest of the library. Above it stand lifting, parameters, statement cache,
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
  // Why the last call failed, in the engine's words.
  virtual const std::string& message() const = 0;
};

// How statements differ.
struct Dialect {
  const char* insert_without_values;  // behind the table's name
  const char* row_id;                 // type of the column _id
  std::string (*type)(const Column& column);
  const char* table_options;
  const char* begin_definitions;  // null where definitions commit by themselves
  const char* commit_definitions;
  // Of a table: the names and types of its columns, no row where there is no such table.
  std::string (*columns_of)(const std::string& table);
  const char* bytes;            // the type to which a value is cast for its length in bytes
  bool rebuilds_tables;         // a table gets its checks only when it is made
  const char* without_indexes;  // behind a table's name: it is read from its first row to its last
  bool searches_conditions;  // looks in each part of a condition for a way to the row that its id would find
  bool pays_for_order;       // to ask for an order costs something even where rows have it already
};

struct Target {
  DatabaseUrl url;
  std::string database;
  std::string user;  // these two where the URL names none
  std::string password;
};

class Engine {
 public:
  Engine() = default;
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;
  virtual ~Engine() = default;

  // Null and one line that says why. open finds what is there, create makes a database that is missing.
  virtual std::unique_ptr<Connection> open(const Target& target, std::string* error) const = 0;
  virtual std::unique_ptr<Connection> create(const Target& target, std::string* error) const = 0;
  virtual const Dialect& dialect() const = 0;
};

// Null when this build has no engine for the scheme.
const Engine* engine_for(DatabaseUrl::Scheme scheme);

}  // namespace zel_db

#endif
