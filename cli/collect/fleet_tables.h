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

// What one machine's snapshot holds, as one text to be handed from one process to another.
std::string read_snapshot_rows();

enum class Stored { Changed, Unchanged };

// One machine is refused, of which nothing is stored.
struct Refused : Failure {
  using Failure::Failure;
};

// Everything throws a Failure.
class FleetTables {
 public:
  // Makes the database and the tables that are missing.
  explicit FleetTables(const std::string& url);

  // What is stored between them takes effect as a whole. No process may be started meanwhile: connections do
  // not survive that.
  void begin();
  void commit();
  // Puts the machine's rows in place of those that are there, where they differ.
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
