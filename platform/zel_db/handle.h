// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_HANDLE_H
#define ZEL_DB_HANDLE_H

#include <atomic>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <thread>

#include "zel_db/content_values.h"
#include "zel_db/session.h"
#include "zel_db/sql/lifting.h"
#include "zel_db/trace.h"
#include "zel_db/unchanged_row.h"

// A database as its callers hold it. It outlives its connection, which is dropped when the server goes away
// and before the process forks, and made again by the next call. Threads are served one at a time.
struct _zel_db_handle_t {  // NOLINT(bugprone-reserved-identifier): a fixed name of the interface
 public:
  explicit _zel_db_handle_t(zel_db::Target target);
  ~_zel_db_handle_t() = default;
  _zel_db_handle_t(const _zel_db_handle_t&) = delete;
  _zel_db_handle_t& operator=(const _zel_db_handle_t&) = delete;

  int query(std::string_view table, std::span<const char* const> columns, std::string_view where,
            zel_db::Parameters parameters, std::string_view order, zel_db_result_t** out);
  int raw_query(std::string_view sql, zel_db_result_t** out);  // out may be null
  int insert(std::string_view table, const zel_db_content_values_t& values, int64_t* id);
  int update(std::string_view table, const zel_db_content_values_t& values, std::string_view where,
             zel_db::Parameters parameters, int64_t* updated);
  int remove(std::string_view table, std::string_view where, zel_db::Parameters parameters, int64_t* deleted);

  int begin_batch();
  int end_batch();
  int begin_reads();
  int end_reads();
  // From now on its reads are in one transaction while a thread is between the begin and the end of reads.
  void join_reads() { joins_reads_ = true; }
  bool joins_reads() const { return joins_reads_; }

  // Whether there is a connection, or one can be made; without asking a database that is connected.
  bool is_ready();
  // The same for a connection to the database that the environment names now.
  bool is_ready_in_environment();
  const zel_db::Trace* trace() const { return trace_.load(std::memory_order_relaxed); }
  const zel_db::Target& target() const { return target_; }
  const std::string& message() const { return message_; }  // why the last call failed
  std::string name() const { return session_ != nullptr ? session_->connection->name() : ""; }

  void attach(std::unique_ptr<zel_db::Session> session) { session_ = std::move(session); }
  std::unique_ptr<zel_db::Session> detach() { return std::move(session_); }
  void disconnect();  // under mutex()
  std::mutex& mutex() { return mutex_; }

 private:
  enum class Access : uint8_t { Read, Write };
  enum class Batch : uint8_t {
    None,
    Idle,  // it has not written yet
    Open,  // with a transaction
    Lost,  // that is undone
  };

  bool connect();
  void drop_if_lost();
  void begin_statement();
  int append_template(std::string_view text, zel_db::Parameters parameters, zel_db::Literals literals,
                      bool* ended);
  int append_where(std::string_view where, zel_db::Parameters parameters, bool* ended);
  // These two with the values of values_.
  int read(const zel_db::StatementKey& key, zel_db_result_t** out);
  int execute(const zel_db::StatementKey& key, Access access, std::unique_ptr<zel_db_result_t>* rows,
              zel_db::Outcome* outcome);
  // False, and the status, if it cannot be prepared.
  zel_db::StatementCache::Lease prepared(const zel_db::StatementKey& key, int* status);
  int execute_once(const zel_db::StatementKey& key, std::span<const zel_db::Value> values,
                   zel_db_result_t* rows, zel_db::Outcome* outcome);
  bool run_text(const char* sql);  // null: nothing to run
  void end_reads_before(Access access);
  zel_db::Look look(const zel_db::StatementKey& update, std::span<const zel_db::Value> condition);

  bool is_own_batch() const;
  int open_batch();
  void commit_batch();
  void undo_batch();
  bool batch_survives() const;  // its last statement
  int execute_in_batch(const zel_db::StatementKey& key, std::unique_ptr<zel_db_result_t>* rows,
                       zel_db::Outcome* outcome);
  int failed(int status, std::string_view message, std::string_view sql);

  std::mutex mutex_;
  zel_db::Target target_;
  std::atomic<const zel_db::Trace*> trace_;
  bool joins_reads_ = false;
  std::unique_ptr<zel_db::Session> session_;
  Batch batch_ = Batch::None;
  std::thread::id batch_owner_;
  std::string message_;
  // Used again by each call.
  zel_db::SqlText sql_;
  zel_db::Values values_;
};

namespace zel_db {
using Handle = _zel_db_handle_t;
}

#endif
