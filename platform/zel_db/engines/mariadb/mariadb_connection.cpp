// SPDX-License-Identifier: Apache-2.0
#include "zel_db/engines/mariadb/mariadb_connection.h"

#include <errmsg.h>
#include <mysqld_error.h>
#include <poll.h>
#include <sys/socket.h>

#include "platform/vrel_log.h"
#include "zel_db/engines/mariadb/mariadb_statement.h"

namespace zel_db {
namespace {

// Other errors are the client library's, which may have stopped in the middle of an answer.
bool is_answer(unsigned code) {
  return (code >= ER_ERROR_FIRST && code < CR_MIN_ERROR) ||
         (code > CR_MAX_ERROR && code < CR_EVENT_CREATE_FAILED);
}

int status_for(unsigned code) {
  switch (code) {
    case ER_SERVER_SHUTDOWN:
    case ER_CONNECTION_KILLED:
      return kConnectionLost;
    case ER_LOCK_WAIT_TIMEOUT:
    case ER_LOCK_DEADLOCK:
      return kBusy;
    case ER_DUP_ENTRY:
    case ER_BAD_NULL_ERROR:
    case ER_NO_DEFAULT_FOR_FIELD:
    case ER_WARN_DATA_OUT_OF_RANGE:
    case ER_DATA_TOO_LONG:
    case ER_TRUNCATED_WRONG_VALUE_FOR_FIELD:
    case WARN_DATA_TRUNCATED:
    case ER_CONSTRAINT_FAILED:
      return kConstraint;
    case ER_DBACCESS_DENIED_ERROR:
    case ER_TABLEACCESS_DENIED_ERROR:
    case ER_COLUMNACCESS_DENIED_ERROR:
    case ER_OPTION_PREVENTS_STATEMENT:
    case ER_OPEN_AS_READONLY:
      return kReadOnly;
    case CR_OUT_OF_MEMORY:
    case ER_OUTOFMEMORY:
    case ER_OUT_OF_RESOURCES:
      return kNoMemory;
    default:
      return is_answer(code) ? kSqlError : kConnectionLost;
  }
}

}  // namespace

MariadbConnection::MariadbConnection(MariadbClient client, std::string name)
    : client_(std::move(client)), name_(std::move(name)) {}

int MariadbConnection::refuse(const char* message) {
  message_ = message;
  was_refused_ = true;
  return kSqlError;
}

int MariadbConnection::fail(unsigned code, const char* message) {
  const int status = status_for(code);
  if (status == kConnectionLost || !is_answer(code)) report_loss(message);
  was_refused_ = status == kConstraint || status == kReadOnly || code == ER_PARSE_ERROR ||
                 code == ER_BAD_FIELD_ERROR || code == ER_NO_SUCH_TABLE;
  message_ = message;
  return status;
}

// Closing a connection reads the rest of an answer and would wait for one that never comes, so the socket is
// shut down first.
void MariadbConnection::report_loss(const char* reason) {
  if (!lost_) vrel_log::logWarn("zel_db: lost the connection to %s: %s", name_.c_str(), reason);
  lost_ = true;
  const int fd = api.mysql_get_socket(client());
  if (fd >= 0) shutdown(fd, SHUT_RDWR);
}

std::unique_ptr<Prepared> MariadbConnection::prepare(std::string_view sql, Facts facts, Use /*use*/,
                                                     int* status) {
  auto statement = std::make_unique<MariadbStatement>(*this, sql, std::move(facts));
  *status = statement->prepare();
  if (*status != kOk) return nullptr;
  return statement;
}

bool MariadbConnection::release_oldest(const MariadbStatement* other_than) {
  MariadbStatement* oldest = nullptr;
  for (MariadbStatement* statement : statements_) {
    if (statement == other_than || !statement->is_prepared()) continue;
    if (oldest == nullptr || statement->last_use() < oldest->last_use()) oldest = statement;
  }
  if (oldest != nullptr) oldest->release();
  return oldest != nullptr;
}

// A server sends nothing unasked, except when it closes the connection.
bool MariadbConnection::is_usable() {
  if (lost_) return false;
  pollfd socket{api.mysql_get_socket(client()), POLLIN, 0};
  if (socket.fd >= 0 && poll(&socket, 1, 0) == 0) return true;
  report_loss("the server has closed it");
  return false;
}

bool MariadbConnection::in_transaction() {
  unsigned status = 0;
  api.mariadb_get_infov(client(), MARIADB_CONNECTION_SERVER_STATUS, &status);
  return (status & SERVER_STATUS_IN_TRANS) != 0 || (status & SERVER_STATUS_AUTOCOMMIT) == 0;
}

}  // namespace zel_db
