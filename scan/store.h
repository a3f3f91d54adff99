// SPDX-License-Identifier: Apache-2.0
//
// Writes the findings into the tables: only rows that differ, and all of them or none. The table ScannedRows
// lists the rows that a scan has written; other rows stay as they are.
#ifndef SCAN_STORE_H
#define SCAN_STORE_H

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "db/owners.h"
#include "scan/pci_functions.h"
#include "scan/rows.h"

namespace zeldb::scan {

struct Change {
  enum What { Added, Changed, Removed };
  What what;
  std::string table;
  std::string key;
  std::string detail;            // of what has changed: columns, before and now
  std::optional<uint32_t> id{};  // of the row, unless it is new
  const Row* row = nullptr;      // unless it has gone
  std::vector<size_t> cells{};   // those of the row that differ
};

class Store {
 public:
  // Throws std::runtime_error, as all functions here: "what: why", one line.
  Store();

  // The places of functions that a scan has written.
  std::map<Address, Placement> placements();

  // The changes that bring the tables to what was found, in the order of their writing. They refer to the
  // findings.
  std::vector<Change> changes(const Findings& findings);
  // Finds the changes once more where nobody else can write, and makes them.
  std::vector<Change> write(const Findings& findings);

 private:
  struct Owned {
    std::string source;
    uint32_t id;     // of the row
    uint32_t entry;  // of the row of ScannedRows
  };
  using Key = std::pair<std::string, std::string>;  // table, key
  struct Held;

  void read_owned();
  Held read_table(const std::string& table, const std::vector<const Row*>& rows);
  void compare(const std::string& table, const std::vector<const Row*>& rows, const Findings& findings,
               std::vector<Change>& changes);
  void apply(const Change& change);
  void check(int status, const std::string& what) const;

  Connection connection_{"dmdb"};
  std::map<Key, Owned> owned_;
};

}  // namespace zeldb::scan

#endif
