// SPDX-License-Identifier: Apache-2.0
#include "tests/support/database.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "platform/zel_db.h"
#include "platform/zel_db_admin.h"

namespace zeldb_test {
namespace {

// The library's own functions, behind the shim's.
template <typename Function>
Function* real(const char* name) {
  static void* const library = dlopen("libzel_db.so.0", RTLD_NOW | RTLD_NOLOAD);
  void* const symbol = library != nullptr ? dlsym(library, name) : nullptr;
  if (symbol == nullptr) throw std::runtime_error(std::string("no ") + name);
  return reinterpret_cast<Function*>(symbol);
}
#define ZELDB_REAL(name) real<decltype(name)>(#name)

class Connection {
 public:
  explicit Connection(const std::string& database)
      : handle_(ZELDB_REAL(zel_db_open)("localhost", "root", "", database.c_str(), 0)) {
    if (handle_ == nullptr) throw std::runtime_error("cannot open " + database);
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { ZELDB_REAL(zel_db_close)(handle_); }

  zel_db_result_t* query(const std::string& sql) const {
    zel_db_result_t* result = nullptr;
    const int status =
        ZELDB_REAL(zel_db_raw_query)(handle_, sql.c_str(), static_cast<int>(sql.size()), &result);
    if (status != 0) throw std::runtime_error("status " + std::to_string(status) + ": " + sql);
    return result;
  }

 private:
  _zel_db_handle_t* handle_;
};

void skip(const char* reason) {
  GTEST_SKIP() << reason;
}

std::string temporary_folder() {
  std::string path = (std::filesystem::temp_directory_path() / "zeldb-test.XXXXXX").string();
  if (mkdtemp(path.data()) == nullptr) throw std::runtime_error("no temporary folder");
  return path;
}

}  // namespace

std::vector<Engine> engines() {
  return {Engine::Sqlite, Engine::MariaDb};
}

std::string name_of(Engine engine) {
  return engine == Engine::Sqlite ? "sqlite" : "mariadb";
}

Database::Database(Engine engine)
    : engine_(engine), folder_(temporary_folder()), url_("sqlite://" + folder_) {
  if (engine == Engine::MariaDb) {
    static int number = 0;
    const char* server = std::getenv("ZELDB_TEST_MARIADB");
    is_there_ = server != nullptr;
    prefix_ = "t" + std::to_string(getpid()) + "_" + std::to_string(++number) + "_";
    url_ =
        std::string(is_there_ ? server : "mariadb://localhost/?socket=/nonexistent") + "&prefix=" + prefix_;
  }
  setenv("ZEL_DB_URL", url_.c_str(), 1);
  if (!is_there_) skip("no MariaDB server: run the tests under with_mariadb");
  char error[512] = "";
  if (is_there_ && zel_db_create(nullptr, error, sizeof(error)) != 0) throw std::runtime_error(error);
}

Database::~Database() {
  if (is_there_ && engine_ == Engine::MariaDb) {
    setenv("ZEL_DB_URL", url_.c_str(), 1);
    try {
      run_all({"DROP DATABASE " + prefix_ + "propertiesdb", "DROP DATABASE " + prefix_ + "dmdb"}, "dmdb");
    } catch (const std::exception& failure) {
      ADD_FAILURE() << failure.what();
    }
  }
  unsetenv("ZEL_DB_URL");
  std::filesystem::remove_all(folder_);
}

void Database::run(const std::string& sql, const std::string& database) const {
  run_all({sql}, database);
}

void Database::run_all(const std::vector<std::string>& statements, const std::string& database) const {
  if (!is_there_) return;
  const Connection connection(database);
  for (const std::string& statement : statements) {
    zel_db_result_t* const result = connection.query(statement);
    if (result != nullptr) ZELDB_REAL(zel_db_free_result)(result);
  }
}

void Database::load(const std::string& file, const std::string& database) const {
  char error[512] = "";
  if (is_there_ &&
      ZELDB_REAL(zel_db_load)(url_.c_str(), database.c_str(), file.c_str(), error, sizeof(error)) != 0) {
    throw std::runtime_error(error);
  }
}

Rows Database::rows(const std::string& select, const std::string& database) const {
  Rows rows;
  if (!is_there_) return rows;
  const Connection connection(database);
  zel_db_result_t* const result = connection.query(select);
  std::string text(16384, '\0');
  while (ZELDB_REAL(zel_db_result_step)(result) == 9) {
    std::vector<Cell>& row = rows.emplace_back();
    // 12: no such column.
    for (int column = 0, status = 0; status != 12; ++column) {
      status = ZELDB_REAL(zel_db_result_column_text)(result, column, text.data(),
                                                     static_cast<unsigned>(text.size()));
      if (status == 0) row.emplace_back(text.c_str());
      if (status == 7) row.emplace_back(std::nullopt);
    }
  }
  ZELDB_REAL(zel_db_free_result)(result);
  return rows;
}

std::string Database::text(const std::string& select, const std::string& database) const {
  std::string line;
  for (const auto& row : rows(select, database)) {
    if (!line.empty()) line += ';';
    const char* separator = "";
    for (const Cell& cell : row) {
      line.append(separator).append(cell.value_or("NULL"));
      separator = ",";
    }
  }
  return line;
}

}  // namespace zeldb_test
