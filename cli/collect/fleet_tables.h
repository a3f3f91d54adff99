// SPDX-License-Identifier: Apache-2.0
//
// The tables of many machines: one per listing, with its columns, and FleetMachines.
#ifndef CLI_COLLECT_FLEET_TABLES_H
#define CLI_COLLECT_FLEET_TABLES_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/command.h"
#include "cli/listing.h"
#include "db/owners.h"

namespace zeldb::cli::collect {

// The content of one machine's snapshot, packed into one text for another process.
std::string read_snapshot_rows();

enum class Stored { Changed, Unchanged };

// The machine is refused, and nothing of it is stored.
struct Refused : Failure {
  using Failure::Failure;
};

// Everything throws a Failure.
class FleetTables {
 public:
  // Makes the database and the tables that are missing.
  explicit FleetTables(const std::string& url);

  // Writes between the two take effect together. No process may be started in between: connections do not
  // survive a fork.
  void begin();
  void commit();
  // Replaces the rows of the machine that differ.
  Stored store(const std::string& machine, std::string_view snapshot_rows);

 private:
  void run(const std::string& statement) const;
  std::vector<std::string> texts(const std::string& select) const;
  void make_table(const std::string& name, const std::vector<std::string>& columns) const;
  Stored store_unguarded(const std::string& machine, const std::vector<Row>& snapshot);
  void insert_rows(size_t listing, const std::string& start, const std::vector<Row>& rows) const;

  bool is_server_;
  std::optional<Connection> connection_;
};

}  // namespace zeldb::cli::collect

#endif
