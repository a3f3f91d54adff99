// SPDX-License-Identifier: Apache-2.0
#ifndef ZEL_DB_MARIADB_STATEMENT_H
#define ZEL_DB_MARIADB_STATEMENT_H

#include <memory>
#include <string>
#include <vector>

#include "zel_db/engines/mariadb/mariadb_connection.h"

namespace zel_db {

// A statement that the server has prepared. It keeps its text, because the server may forget the statement:
// when its place is needed for another, or when a table has changed too much.
class MariadbStatement : public Prepared {
 public:
  MariadbStatement(MariadbConnection& connection, std::string_view sql, Facts facts);
  MariadbStatement(const MariadbStatement&) = delete;
  MariadbStatement& operator=(const MariadbStatement&) = delete;
  ~MariadbStatement() override { connection_.remove(this); }

  int prepare();
  int run(std::span<const Value> values, Result* rows, Outcome* outcome) override;

  bool is_prepared() const { return statement_ != nullptr; }
  void release();  // its place on the server
  uint64_t last_use() const { return last_use_; }

 private:
  struct CloseStatement {
    void operator()(MYSQL_STMT* statement) const { api.mysql_stmt_close(statement); }
  };
  // The buffer from which the client library takes a parameter.
  struct Parameter {
    std::vector<char> bytes;
    unsigned long size = 0;
    my_bool is_null = 0;
  };
  // The buffer for a cell of the row that the client library fetches; a long text is cut.
  struct FetchedCell {
    CellType type;
    my_bool is_null;
    my_bool is_cut;
    unsigned long size;
    int64_t integer;
    double real;
    char bytes[256];
  };

  int fail(MYSQL_STMT* statement);
  void begin_binding(size_t count);
  bool bind(std::span<const Value> values);
  int execute(std::span<const Value> values);
  int complete(Result* rows, Outcome* outcome);
  int fetch(Result* rows);
  bool bind_columns();
  void append_row(Result& rows);
  void append_text(size_t column, Result& rows);

  MariadbConnection& connection_;
  const std::string sql_;
  std::unique_ptr<MYSQL_STMT, CloseStatement> statement_;
  uint64_t last_use_ = 0;
  std::vector<MYSQL_BIND> parameters_;
  std::vector<Parameter> bound_;
  bool is_bound_ = false;
  ColumnNames columns_;
  std::vector<FetchedCell> fetched_;
};

}  // namespace zel_db

#endif
