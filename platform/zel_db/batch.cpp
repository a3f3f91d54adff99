// SPDX-License-Identifier: Apache-2.0
//
// Batches: many writes of one thread in one transaction, see zel_db_batch.h.
#include <new>

#include "zel_db/handle.h"

using namespace zel_db;  // NOLINT(google-build-using-namespace): the C tag stands outside the namespace

bool _zel_db_handle_t::is_own_batch() const {
  return batch_ != Batch::None && batch_owner_ == std::this_thread::get_id();
}

int _zel_db_handle_t::begin_batch() {
  const std::lock_guard lock(mutex_);
  if (batch_ != Batch::None) return kSqlError;
  batch_ = Batch::Idle;
  batch_owner_ = std::this_thread::get_id();
  return kOk;
}

int _zel_db_handle_t::end_batch() {
  const std::lock_guard lock(mutex_);
  if (!is_own_batch()) return kInvalidArgument;
  commit_batch();
  const bool is_lost = batch_ == Batch::Lost;
  batch_ = Batch::None;
  return is_lost ? kSqlError : kOk;
}

// A batch that cannot be opened stays idle, and its write stands for itself. If another writer was too slow,
// the write has waited as long as it may. That there will be memory for the end is seen to before.
int _zel_db_handle_t::open_batch() {
  if (batch_ != Batch::Idle || session_ == nullptr || !session_->connection->is_usable() ||
      session_->connection->in_transaction())
    return kOk;
  const Dialect& dialect = *session_->dialect;
  int status = kNoMemory;
  int unprepared = kOk;
  try {
    if (prepared(text_key("COMMIT"), &unprepared) && run_text(dialect.batch_settings))
      status = execute_once(text_key(dialect.begin_batch), {}, nullptr, nullptr);
  } catch (const std::bad_alloc&) {
    status = kNoMemory;
  }
  if (status == kOk)
    batch_ = Batch::Open;
  else if (!run_text(dialect.usual_settings))
    disconnect();
  return status;
}

void _zel_db_handle_t::commit_batch() {
  if (batch_ != Batch::Open) return;
  if (!session_->connection->in_transaction() || !run_text("COMMIT")) return undo_batch();
  batch_ = Batch::Idle;
  if (!run_text(session_->dialect->usual_settings)) disconnect();
}

void _zel_db_handle_t::undo_batch() {
  batch_ = Batch::Lost;
  Connection& connection = *session_->connection;
  const bool is_undone = !connection.is_lost() && (!connection.in_transaction() || run_text("ROLLBACK")) &&
                         run_text(session_->dialect->usual_settings);
  if (!is_undone) disconnect();
}

bool _zel_db_handle_t::batch_survives() const {
  Connection& connection = *session_->connection;
  return !connection.is_lost() && connection.in_transaction();
}

// A failure that is not of the statement itself may be over when the statement is run again by itself.
int _zel_db_handle_t::execute_in_batch(const StatementKey& key, std::unique_ptr<Result>* rows,
                                       Outcome* outcome) {
  if (batch_ == Batch::Open) {
    int status = kNoMemory;
    bool is_done = true;
    try {
      if (rows != nullptr) *rows = std::make_unique_for_overwrite<Result>();
      status = execute_once(key, values_.all(), rows != nullptr ? rows->get() : nullptr, outcome);
      is_done = status == kOk || session_->connection->was_refused();
    } catch (const std::bad_alloc&) {
      status = kNoMemory;
    }
    if (status != kOk && rows != nullptr) rows->reset();
    if (is_done && batch_survives()) return status;
    undo_batch();
  }
  if (rows != nullptr) *rows = std::make_unique<Result>();
  if (outcome != nullptr) *outcome = {.row_id = 1, .changed = 1};
  return kOk;
}
