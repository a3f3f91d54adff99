// SPDX-License-Identifier: Apache-2.0
#include <mysql.h>

#include <algorithm>
#include <cstring>

#include "bench/hand.h"

namespace bench {

namespace {

struct Mariadb {
  static constexpr bool kTuned = true;
  // Deleted rows would still be purged while the next round is measured.
  static constexpr const char* kClear = "TRUNCATE TABLE PCISetting";

  Mariadb(const std::string& where, bool properties) : client(mysql_init(nullptr)) {
    const size_t end = std::min(where.find('#'), where.size());
    const std::string socket = where.substr(0, end), prefix = where.substr(std::min(end + 1, where.size()));
    mysql_optionsv(client, MYSQL_SET_CHARSET_NAME, "latin1");
    mysql_optionsv(client, MYSQL_INIT_COMMAND, "SET NAMES latin1 COLLATE latin1_nopad_bin");
    if (mysql_real_connect(client, "localhost", "root", "",
                           (prefix + (properties ? "propertiesdb" : "dmdb")).c_str(), 0, socket.c_str(),
                           0) == nullptr) {
      give_up(mysql_error(client));
    }
  }
  Mariadb(const Mariadb&) = delete;
  Mariadb& operator=(const Mariadb&) = delete;
  ~Mariadb() { mysql_close(client); }
  void run(const char* sql) const {
    if (mysql_query(client, sql) != 0) give_up(mysql_error(client));
  }

  class Statement;
  MYSQL* client;
};

// The place of a value or a cell, bound once.
struct Cell {
  bool text = false;
  std::vector<char> buffer;
  int64_t number = 0;
  unsigned long size = 0;
  my_bool is_null = 0;

  MYSQL_BIND bind(bool is_text, unsigned long capacity) {
    text = is_text;
    buffer.resize(text ? capacity : 0);
    MYSQL_BIND bind = {};
    bind.buffer_type = text ? MYSQL_TYPE_STRING : MYSQL_TYPE_LONGLONG;
    bind.buffer = text ? static_cast<void*>(buffer.data()) : &number;
    bind.buffer_length = buffer.size();
    bind.length = &size;
    bind.is_null = &is_null;
    return bind;
  }
};

class Mariadb::Statement {
 public:
  Statement(const Mariadb& client, const std::string& sql, const std::string& in, const std::string& /*out*/)
      : statement_(mysql_stmt_init(client.client)), values_(in.size()) {
    check(mysql_stmt_prepare(statement_, sql.data(), sql.size()) == 0);
    std::vector<MYSQL_BIND> binds;
    for (size_t i = 0; i < in.size(); ++i) binds.push_back(values_[i].bind(in[i] == 't', 2048));
    check(binds.empty() || mysql_stmt_bind_param(statement_, binds.data()) == 0);
    bind_cells();
  }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement() { mysql_stmt_close(statement_); }

  void bind(int place, const char* text) {
    Cell& value = values_[static_cast<size_t>(place - 1)];
    value.size = std::strlen(text);
    std::memcpy(value.buffer.data(), text, value.size);
    value.is_null = 0;
  }
  void bind(int place, int64_t number) { values_[static_cast<size_t>(place - 1)].number = number; }
  void bind_null(int place) { values_[static_cast<size_t>(place - 1)].is_null = 1; }
  bool step() {
    if (!runs_) check(mysql_stmt_execute(statement_) == 0);
    runs_ = true;
    if (cells_.empty()) return false;
    const int code = mysql_stmt_fetch(statement_);
    check(code != 1);
    return code != MYSQL_NO_DATA;
  }
  void reset() {
    runs_ = false;
    if (!cells_.empty()) mysql_stmt_free_result(statement_);
  }
  int columns() const { return static_cast<int>(cells_.size()); }
  int64_t number(int column) const {
    const Cell& cell = cells_[static_cast<size_t>(column)];
    return cell.is_null ? 0 : cell.number;
  }
  void text(int column, char* field, size_t capacity) const {
    const Cell& cell = cells_[static_cast<size_t>(column)];
    const size_t size = cell.is_null ? 0 : std::min<size_t>(cell.size, capacity - 1);
    std::memcpy(field, cell.buffer.data(), size);
    field[size] = '\0';
  }
  int64_t cell(int column, char* field, size_t capacity) const {
    if (!cells_[static_cast<size_t>(column)].text) return number(column);
    text(column, field, capacity);
    return 0;
  }

 private:
  void check(bool good) {
    if (!good) give_up(mysql_stmt_error(statement_));
  }
  void bind_cells() {
    MYSQL_RES* const described = mysql_stmt_result_metadata(statement_);
    if (described == nullptr) return;
    cells_.resize(mysql_num_fields(described));
    std::vector<MYSQL_BIND> binds;
    for (Cell& cell : cells_) {
      const MYSQL_FIELD* const column = mysql_fetch_field(described);
      binds.push_back(cell.bind(!IS_NUM(column->type), column->length));
    }
    mysql_free_result(described);
    check(mysql_stmt_bind_result(statement_, binds.data()) == 0);
  }

  MYSQL_STMT* statement_;
  std::vector<Cell> values_;
  std::vector<Cell> cells_;
  bool runs_ = false;
};

}  // namespace

std::unique_ptr<Works> tuned_mariadb(const std::string& where) {
  return std::make_unique<Hand<Mariadb>>(where);
}

std::unique_ptr<Replayer> replayer_mariadb(const std::string& where) {
  return std::make_unique<HandReplayer<Mariadb>>(where);
}

}  // namespace bench
