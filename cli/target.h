// SPDX-License-Identifier: Apache-2.0
//
// Writes whole tables to the databases of ZEL_DB_URL.
#ifndef CLI_TARGET_H
#define CLI_TARGET_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct _zel_db_handle_t;  // NOLINT(bugprone-reserved-identifier): fixed name of the interface

namespace zeldb::cli {

constexpr const char* kPropertyTable = "propertiesDCTbl";

// Writes take effect with commit only. Everything throws a Failure.
class Target {
 public:
  // Both databases have to be there, with tables of this schema version.
  explicit Target(int64_t schema_version);
  ~Target();
  Target(const Target&) = delete;
  Target& operator=(const Target&) = delete;

  bool is_empty(const std::string& table) const;
  void clear(const std::string& table) const;
  // False if the row is refused; the reason is not available.
  bool insert(const std::string& table, const std::string& columns, const std::string& values) const;
  // If there are two databases, both have taken all rows before the first one commits.
  void commit() const;

 private:
  struct Close {
    void operator()(_zel_db_handle_t* handle) const;
  };
  using Handle = std::unique_ptr<_zel_db_handle_t, Close>;

  static Handle open(const char* database, int64_t schema_version);
  _zel_db_handle_t* handle_of(const std::string& table) const;

  Handle inventory_;
  Handle properties_;  // null where one file serves both
};

}  // namespace zeldb::cli

#endif
