// SPDX-License-Identifier: Apache-2.0
#include "zel_db/handle.h"

#include <algorithm>
#include <new>
#include <optional>

#include "platform/vrel_log.h"
#include "zel_db/sql/statements.h"
#include "zel_db/unchanged_row.h"

using namespace zel_db;  // NOLINT(google-build-using-namespace): the C tag stands outside the namespace

_zel_db_handle_t::_zel_db_handle_t(Target target) : target_(std::move(target)), trace_(Trace::current()) {}

bool _zel_db_handle_t::connect() {
  if (session_ == nullptr) session_ = open_session(target_, &message_);
  return session_ != nullptr;
}

bool _zel_db_handle_t::is_ready() {
  const std::lock_guard lock(mutex_);
  if (session_ != nullptr && !session_->connection->is_usable()) disconnect();
  return connect();
}

bool _zel_db_handle_t::is_ready_in_environment() {
  const std::lock_guard lock(mutex_);
  if (session_ != nullptr) {
    if (session_->connection->is_usable() && target_.url == environment_url()) return true;
    disconnect();
  }
  if (batch_ == Batch::Lost && is_own_batch()) return true;
  target_.url = environment_url();
  trace_ = Trace::current();
  return connect();
}

void _zel_db_handle_t::disconnect() {
  session_.reset();
  if (batch_ == Batch::Open) batch_ = Batch::Lost;
}

void _zel_db_handle_t::drop_if_lost() {
  if (session_ != nullptr && session_->connection->is_lost()) disconnect();
}

void _zel_db_handle_t::begin_statement() {
  sql_.clear();
  values_.clear();
}

int _zel_db_handle_t::append_template(std::string_view text, Parameters parameters, Literals literals,
                                      bool* ended) {
  const LiftOutcome outcome = lift_literals(text, parameters, literals, sql_, values_);
  *ended = outcome.ended;
  return outcome.status == kOk ? outcome.status : failed(outcome.status, outcome.reason, text);
}

int _zel_db_handle_t::append_where(std::string_view where, Parameters parameters, bool* ended) {
  if (!where.empty()) sql_.append(" WHERE ");
  return append_template(where, parameters, Literals::Lift, ended);
}

int _zel_db_handle_t::query(std::string_view table, std::span<const char* const> columns,
                            std::string_view where, Parameters parameters, std::string_view order,
                            Result** out) {
  const std::lock_guard lock(mutex_);
  begin_statement();
  std::optional<RecentQuery> first;  // a connection remembers the next ones
  RecentQuery& recent = session_ != nullptr ? session_->recent_queries.of(columns) : first.emplace();
  recent.select(table, columns);
  if (recent.knows(where, order, parameters.size()) && append_parameters(parameters, values_)) {
    sql_.append(recent.statement);
    return read(query_key(sql_.view(), recent.statement_hash), out);
  }
  values_.clear();
  sql_.append(recent.head);
  bool ended = false;
  const int status = append_where(where, parameters, &ended);
  if (status != kOk) return status;
  if (!order.empty()) {
    if (ended) return failed(kSqlError, "more than one statement", where);
    sql_.append(" ORDER BY ");
    sql_.append(order);
  }
  const uint64_t hash = hash_of(sql_.view(recent.head.size()), recent.head_hash);
  if (values_.list.size() == parameters.size())
    recent.learn(where, order, parameters.size(), sql_.view(), hash);
  return read(query_key(sql_.view(), hash), out);
}

int _zel_db_handle_t::read(const StatementKey& key, Result** out) {
  std::unique_ptr<Result> rows;
  const int status = execute(key, Access::Read, &rows, nullptr);
  *out = rows.release();
  return status;
}

int _zel_db_handle_t::raw_query(std::string_view sql, Result** out) {
  const std::lock_guard lock(mutex_);
  begin_statement();
  bool ended = false;
  const Verb verb = verb_of(sql);
  int status = append_template(sql, {}, takes_placeholders(verb) ? Literals::Lift : Literals::Keep, &ended);
  if (status != kOk) return status;
  std::unique_ptr<Result> rows;
  status = execute(text_key(sql_.view()), verb == Verb::Select ? Access::Read : Access::Write,
                   out != nullptr ? &rows : nullptr, nullptr);
  if (out != nullptr) *out = rows.release();
  return status;
}

int _zel_db_handle_t::insert(std::string_view table, const ContentValues& values, int64_t* id) {
  const std::lock_guard lock(mutex_);
  begin_statement();
  for (size_t i = 0; i < values.size(); ++i) values_.list.push_back(values.value(i));
  Outcome outcome;
  const int status = execute(insert_key(table, values.names()), Access::Write, nullptr, &outcome);
  if (status == kOk && id != nullptr) *id = outcome.row_id;
  return status;
}

int _zel_db_handle_t::update(std::string_view table, const ContentValues& values, std::string_view where,
                             Parameters parameters, int64_t* updated) {
  const std::lock_guard lock(mutex_);
  begin_statement();
  for (size_t i = 0; i < values.size(); ++i) values_.list.push_back(values.value(i));
  bool ended = false;
  int status = append_template(where, parameters, Literals::Lift, &ended);
  if (status != kOk) return status;
  const StatementKey key = update_key(table, values.names(), sql_.view());
  Outcome outcome;
  if (look(key, values_.all().subspan(values.size())) != Look::Unchanged)
    status = execute(key, Access::Write, nullptr, &outcome);
  if (status == kOk && updated != nullptr) *updated = outcome.changed;
  return status;
}

int _zel_db_handle_t::remove(std::string_view table, std::string_view where, Parameters parameters,
                             int64_t* deleted) {
  const std::lock_guard lock(mutex_);
  begin_statement();
  sql_.append("DELETE FROM ");
  sql_.append(table);
  bool ended = false;
  int status = append_where(where, parameters, &ended);
  if (status != kOk) return status;
  Outcome outcome;
  status = execute(text_key(sql_.view()), Access::Write, nullptr, &outcome);
  if (status == kOk && deleted != nullptr) *deleted = outcome.changed;
  return status;
}

// Within a transaction that is no batch a query would see the rows as they were when that began. If the look
// fails, the update is run. A batch looks even before it has made its first update: that would lock.
Look _zel_db_handle_t::look(const StatementKey& update, std::span<const Value> condition) {
  const bool in_batch = batch_ == Batch::Open && is_own_batch();
  if (session_ == nullptr || (session_->connection->in_transaction() && !in_batch)) return Look::Unknown;
  int status = kOk;
  if (batch_ == Batch::Idle && is_own_batch()) prepared(update, &status);
  const Look found = look_at_row(*session_, update, condition);
  const bool is_done = found != Look::Failed || session_->connection->was_refused();
  if (in_batch && !(is_done && batch_survives())) undo_batch();
  return found;
}

int _zel_db_handle_t::begin_reads() {
  const std::lock_guard lock(mutex_);
  const bool may_begin = session_ != nullptr && batch_ == Batch::None;
  return may_begin && session_->begin_reads() ? kOk : kSqlError;
}

int _zel_db_handle_t::end_reads() {
  const std::lock_guard lock(mutex_);
  if (session_ != nullptr && session_->reader == std::this_thread::get_id()) end_reads_before(Access::Write);
  return kOk;
}

bool _zel_db_handle_t::run_text(const char* sql) {
  try {
    return sql == nullptr || execute_once(text_key(sql), {}, nullptr, nullptr) == kOk;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

// Others see what is stored now, and a write needs a transaction of its own.
void _zel_db_handle_t::end_reads_before(Access access) {
  if (session_ == nullptr || !session_->reader) return;
  if (access == Access::Read && session_->reader == std::this_thread::get_id()) return;
  if (!session_->end_reads()) disconnect();  // no later call may find it open
}

// A read is repeated on a new connection. A write is not, because it may have been done before the connection
// was lost; the connection is checked before a write instead. No statement of a transaction is repeated: the
// transaction is lost with its connection.
int _zel_db_handle_t::execute(const StatementKey& key, Access access, std::unique_ptr<Result>* rows,
                              Outcome* outcome) {
  const bool retry = access == Access::Read;
  end_reads_before(access);
  if (batch_ != Batch::None) {
    if (!is_own_batch())
      commit_batch();  // whose writes others must not be part of
    else if (access == Access::Write && open_batch() == kBusy)
      return kBusy;
    if (is_own_batch() && batch_ != Batch::Idle) return execute_in_batch(key, rows, outcome);
  }
  const bool in_transaction =
      session_ != nullptr && session_->connection->in_transaction() && !session_->reader;
  if (!retry && !in_transaction && session_ != nullptr && !session_->connection->is_usable()) disconnect();
  int status = kConnectionLost;
  drop_if_lost();  // if an exception has ended the call that lost it
  for (int attempt = 0; attempt == 0 || (attempt == 1 && retry && !in_transaction); ++attempt) {
    if (!connect()) break;  // with its reason as the message
    if (retry && joins_reads_ && is_reading() && batch_ == Batch::None) session_->begin_reads();
    if (rows != nullptr) *rows = std::make_unique_for_overwrite<Result>();
    status = execute_once(key, values_.all(), rows != nullptr ? rows->get() : nullptr, outcome);
    drop_if_lost();
    if (status != kConnectionLost) break;
  }
  if (status != kOk && rows != nullptr) rows->reset();
  return status;
}

int _zel_db_handle_t::execute_once(const StatementKey& key, std::span<const Value> values, Result* rows,
                                   Outcome* outcome) {
  int status = kOk;
  const StatementCache::Lease lease = prepared(key, &status);
  if (!lease) return status;
  status = lease.statement().run(values, rows, outcome);
  return status == kOk ? status : failed(status, session_->connection->message(), key.text);
}

StatementCache::Lease _zel_db_handle_t::prepared(const StatementKey& key, int* status) {
  if (StatementCache::Lease lease = session_->cache.find(key); lease) return lease;
  auto [sql, facts] = statement_text(key, *session_->dialect);
  Connection& connection = *session_->connection;
  std::unique_ptr<Prepared> statement = connection.prepare(sql, std::move(facts), Use::Often, status);
  if (statement != nullptr) return session_->cache.add(key, std::move(statement));
  *status = failed(*status, connection.message(), sql);
  return {};
}

int _zel_db_handle_t::failed(int status, std::string_view message, std::string_view sql) {
  message_ = message;
  vrel_log::logDbg("zel_db: %s: %.*s", message_.c_str(), static_cast<int>(sql.size()), sql.data());
  return status;
}
