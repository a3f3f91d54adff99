// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_TRANSACTION_H
#define CLI_TRANSACTION_H

#include <string>

#include "cli/library.h"
#include "db/owners.h"

namespace zeldb::cli {

// A consistent view of one of the databases. Writes take effect with commit only. Everything throws a
// Failure.
class Transaction : public Connection {
 public:
  explicit Transaction(const std::string& database)
      : Connection(database.c_str()), what_("database " + database) {
    if (!*this) check(ZELDB_NO_HANDLE, what_);
    check(run("BEGIN"), what_);
  }
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction() { run("ROLLBACK"); }

  void commit() const { check(run("COMMIT"), what_); }

 private:
  std::string what_;
};

}  // namespace zeldb::cli

#endif
