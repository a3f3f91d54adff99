// SPDX-License-Identifier: Apache-2.0
//
// Writes whole tables to the databases of ZEL_DB_URL.
#ifndef CLI_TABLE_WRITER_H
#define CLI_TABLE_WRITER_H

#include <cstdint>
#include <memory>
#include <string>

#include "cli/transaction.h"

namespace zeldb::cli {

constexpr const char* kPropertyTable = "propertiesDCTbl";

// Writes take effect with commit only. Everything throws a Failure.
class TableWriter {
 public:
  // Both databases have to be there, with tables of this schema version.
  explicit TableWriter(int64_t schema_version);

  bool is_empty(const std::string& table) const;
  void clear(const std::string& table) const;
  // False if the row is refused; the reason is not available.
  bool insert(const std::string& table, const std::string& columns, const std::string& values) const;
  // If there are two databases, both have taken all rows before the first one commits.
  void commit() const;

 private:
  const Transaction& database_of(const std::string& table) const;

  std::unique_ptr<Transaction> inventory_;
  std::unique_ptr<Transaction> properties_;  // null where one file serves both
};

}  // namespace zeldb::cli

#endif
