// SPDX-License-Identifier: Apache-2.0
//
// A pair of databases of a test's own, on each engine.
#ifndef TESTS_SUPPORT_DATABASE_H
#define TESTS_SUPPORT_DATABASE_H

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace zeldb_test {

enum class Engine { Sqlite, MariaDb };

// All of them: a test of one that this run cannot reach is skipped.
std::vector<Engine> engines();
std::string name_of(Engine engine);
inline void PrintTo(Engine engine, std::ostream* out) {
  *out << name_of(engine);
}

using Cell = std::optional<std::string>;
using Rows = std::vector<std::vector<Cell>>;

// Created empty, named by ZEL_DB_URL, removed at the end. Its own statements pass by the shim.
class Database {
 public:
  explicit Database(Engine engine = engines().front());
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database();

  Engine kind() const { return engine_; }
  std::string engine() const { return name_of(engine_); }
  const std::string& url() const { return url_; }
  // The test's own; with SQLite also that of the two files.
  const std::string& folder() const { return folder_; }

  // One statement, or several at once; the test fails when one does.
  void run(const std::string& sql, const std::string& database = "dmdb") const;
  void load(const std::string& file, const std::string& database) const;
  void run_all(const std::vector<std::string>& statements, const std::string& database = "dmdb") const;
  Rows rows(const std::string& select, const std::string& database = "dmdb") const;
  // The cells of all rows in one line: "1,two;3,NULL".
  std::string text(const std::string& select, const std::string& database = "dmdb") const;

 private:
  Engine engine_;
  std::string folder_;
  std::string url_;
  std::string prefix_;
  bool is_there_ = true;
};

// Runs on each engine: INSTANTIATE with ZELDB_ON_EVERY_ENGINE(Suite).
class DatabaseTest : public testing::TestWithParam<Engine> {
 protected:
  Database database{GetParam()};
};

inline std::string engine_name(const testing::TestParamInfo<Engine>& parameter) {
  return name_of(parameter.param);
}

#define ZELDB_ON_EVERY_ENGINE(Suite) \
  INSTANTIATE_TEST_SUITE_P(Engines, Suite, testing::ValuesIn(engines()), engine_name)

}  // namespace zeldb_test

#endif
