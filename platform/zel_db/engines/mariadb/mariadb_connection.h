// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_MARIADB_CONNECTION_H
#define ZEL_DB_MARIADB_CONNECTION_H

#include <memory>
#include <string>
#include <vector>

#include "zel_db/engine.h"
#include "zel_db/engines/mariadb/client_library.h"

namespace zel_db {

struct CloseMariadb {
  void operator()(MYSQL* client) const { api.mysql_close(client); }
};
using MariadbClient = std::unique_ptr<MYSQL, CloseMariadb>;

class MariadbStatement;

class MariadbConnection : public Connection {
 public:
  MariadbConnection(MariadbClient client, std::string name);

  std::unique_ptr<Prepared> prepare(std::string_view sql, Facts facts, Use use, int* status) override;
  bool is_usable() override;
  bool in_transaction() override;
  bool was_refused() const override { return was_refused_; }
  bool is_lost() const override { return lost_; }
  const std::string& name() const override { return name_; }
  const std::string& message() const override { return message_; }

  MYSQL* client() const { return client_.get(); }
  // The status for an error. Unless it is the server's answer to the statement, the connection is lost; the
  // log says so, too.
  int fail(unsigned code, const char* message);
  int refuse(const char* message);

  // Statements of this connection, so that one may give up its place on the server for another.
  void add(MariadbStatement* statement) { statements_.push_back(statement); }
  void remove(MariadbStatement* statement) { std::erase(statements_, statement); }
  bool release_oldest(const MariadbStatement* other_than);
  uint64_t tick() { return ++clock_; }

 private:
  void report_loss(const char* reason);

  MariadbClient client_;
  std::string name_;
  std::string message_;
  std::vector<MariadbStatement*> statements_;
  uint64_t clock_ = 0;
  bool lost_ = false;
  bool was_refused_ = false;
};

}  // namespace zel_db

#endif
