// SPDX-License-Identifier: Apache-2.0
//
// Helpers for the tests of table access.
#ifndef TESTS_PLATFORM_ZEL_DB_CLIENT_H
#define TESTS_PLATFORM_ZEL_DB_CLIENT_H

#include <sys/wait.h>
#include <unistd.h>

#include "platform/zel_db.h"
#include "platform/zel_db_admin.h"
#include "platform/zel_db_batch.h"
#include "platform/zel_db_reads.h"
#include "tests/support/database.h"
#include "tests/support/texts.h"

namespace zeldb_test {

using Params = std::vector<_zel_db_param_t>;

// The rows of a result that is then released, in one line: "1,two;3,NULL".
inline std::string taken(zel_db_result_t* result) {
  std::string text;
  char cell[4096];
  while (zel_db_result_step(result) == 9) {
    text += text.empty() ? "" : ";";
    for (int i = 0, status = 0; (status = zel_db_result_column_text(result, i, cell, sizeof cell)) != 12;
         ++i) {
      text.append(i == 0 ? "" : ",").append(status == 7 ? "NULL" : cell);
    }
  }
  zel_db_free_result(result);
  return text;
}

// Calls answer with their rows or "status N". columns is one text, as it is pasted.
inline std::string query(_zel_db_handle_t* handle, const char* table, const char* columns,
                         const std::string& where = "", const Params& params = {},
                         const char* order = nullptr) {
  zel_db_result_t* result = nullptr;
  const int status = zel_db_query(handle, table, &columns, 1, where.c_str(), params.data(),
                                  static_cast<int>(params.size()), order, &result);
  return status == 0 ? taken(result) : "status " + std::to_string(status);
}

inline std::string raw(_zel_db_handle_t* handle, const std::string& sql, int capacity = 9999) {
  zel_db_result_t* result = nullptr;
  const int status = zel_db_raw_query(handle, sql.c_str(), capacity, &result);
  return status == 0 ? taken(result) : "status " + std::to_string(status);
}

class Client {
 public:
  explicit Client(const char* database = "dmdb")
      : handle_(zel_db_open("localhost", "root", "", database, 0)) {}
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  ~Client() { zel_db_close(handle_); }
  operator _zel_db_handle_t*() const { return handle_; }  // NOLINT(google-explicit-constructor)

 private:
  _zel_db_handle_t* handle_;
};

// The wait status of a process of its own.
template <class Body>
int in_child(Body body) {
  const pid_t child = fork();
  if (child == 0) _exit(body() ? 0 : 1);
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

}  // namespace zeldb_test

#endif
