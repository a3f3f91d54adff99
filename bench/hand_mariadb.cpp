// SPDX-License-Identifier: Apache-2.0
#include <benchmark/benchmark.h>
#include <mysql.h>

#include <array>
#include <cstring>
#include <span>
#include <unordered_map>
#include <vector>

#include "bench/hand_sql.h"
#include "bench/setting_columns.h"
#include "bench/works.h"

namespace bench {

namespace {

// Where a parameter is taken from: bound once, filled before each run.
struct Slot {
  unsigned long size = 0;
  my_bool is_null = 0;
};

MYSQL_BIND text_from(char* buffer, Slot& slot) {
  MYSQL_BIND bind = {};
  bind.buffer_type = MYSQL_TYPE_STRING;
  bind.buffer = buffer;
  bind.length = &slot.size;
  bind.is_null = &slot.is_null;
  return bind;
}

MYSQL_BIND text_into(char* buffer, size_t capacity) {
  MYSQL_BIND bind = {};
  bind.buffer_type = MYSQL_TYPE_STRING;
  bind.buffer = buffer;
  bind.buffer_length = capacity;
  return bind;
}

template <class Number>
MYSQL_BIND number(Number* place) {
  MYSQL_BIND bind = {};
  bind.buffer_type = sizeof(Number) == 8 ? MYSQL_TYPE_LONGLONG : MYSQL_TYPE_LONG;
  bind.buffer = place;
  bind.is_unsigned = 1;
  return bind;
}

class Statement {
 public:
  Statement(MYSQL* client, const std::string& sql) : statement_(mysql_stmt_init(client)) {
    check(mysql_stmt_prepare(statement_, sql.data(), sql.size()) == 0);
  }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement() { mysql_stmt_close(statement_); }

  void take(std::vector<MYSQL_BIND> parameters) {
    check(mysql_stmt_bind_param(statement_, parameters.data()) == 0);
  }
  void give(std::vector<MYSQL_BIND> cells) { check(mysql_stmt_bind_result(statement_, cells.data()) == 0); }
  void run() { check(mysql_stmt_execute(statement_) == 0); }
  bool fetch() {
    const int code = mysql_stmt_fetch(statement_);
    check(code != 1);
    return code != MYSQL_NO_DATA;
  }
  void release() { mysql_stmt_free_result(statement_); }

 private:
  void check(bool good) {
    if (!good) give_up(mysql_stmt_error(statement_));
  }

  MYSQL_STMT* statement_;
};

class HandMariadb : public Works {
 public:
  explicit HandMariadb(const std::string& socket) : client_(connect(socket)) {
    find_ = prepared(kFindSql);
    find_->take({text_from(text_of(kStored[0]), slots_[0])});
    find_->give({number(&id_)});
    insert_ = prepared(insert_sql());
    insert_->take(parameters(kStored));
    key_ = prepared(kKeySql);
    key_->take({number(&key_value_)});
    key_->give({number(&aim_), number(&source_)});
    list_ = prepared(kListSql);
    bind_list();
  }
  HandMariadb(const HandMariadb&) = delete;
  HandMariadb& operator=(const HandMariadb&) = delete;
  ~HandMariadb() override {
    updates_.clear();
    for (auto* statement : {&find_, &insert_, &key_, &list_}) statement->reset();
    mysql_close(client_);
  }

  void store(const PCISetting_info& record) override {
    benchmark::DoNotOptimize(key_filter(record).c_str());
    record_ = record;
    for (size_t i = 0; i < std::size(kStored); ++i) {
      slots_[i].size = kStored[i].text ? std::strlen(text_at(record_, kStored[i])) : 0;
      slots_[i].is_null = kStored[i].text && slots_[i].size == 0 ? 1 : 0;
    }
    find_->run();
    const bool found = find_->fetch();
    find_->release();
    benchmark::DoNotOptimize(change_filter(record).c_str());
    (found ? update(record) : *insert_).run();
  }

  unsigned list() override;

  unsigned aim_supported(uint32_t function_key) override {
    benchmark::DoNotOptimize(function_filter(function_key).c_str());
    key_value_ = function_key;
    key_->run();
    if (!key_->fetch()) give_up("no such function");
    key_->release();
    return static_cast<unsigned>(aim_);
  }

 private:
  static MYSQL* connect(const std::string& socket);
  void bind_list();

  std::unique_ptr<Statement> prepared(const std::string& sql) {
    return std::make_unique<Statement>(client_, sql);
  }
  char* text_of(const Column& column) { return reinterpret_cast<char*>(&record_) + column.offset; }

  // Those of the texts that are not empty, where only they are compared.
  std::vector<MYSQL_BIND> parameters(std::span<const Column> columns, bool only_full = false) {
    std::vector<MYSQL_BIND> binds;
    for (const Column& column : columns) {
      char* const place = text_of(column);
      if (!column.text) {
        binds.push_back(number(reinterpret_cast<uint32_t*>(place)));
      } else if (!only_full || *place != '\0') {
        binds.push_back(text_from(place, slots_[index_of(column)]));
      }
    }
    return binds;
  }
  static size_t index_of(const Column& column) {
    size_t index = 0;
    while (kStored[index].offset != column.offset) ++index;
    return index;
  }

  Statement& update(const PCISetting_info& record) {
    std::unique_ptr<Statement>& statement = updates_[shape_of(record)];
    if (statement == nullptr) {
      statement = prepared(update_sql(record));
      std::vector<MYSQL_BIND> binds = parameters(kStored);
      binds.push_back(number(&id_));
      const std::vector<MYSQL_BIND> compared = parameters(kCompared, true);
      binds.insert(binds.end(), compared.begin(), compared.end());
      statement->take(std::move(binds));
    }
    return *statement;
  }

  MYSQL* client_;
  PCISetting_info record_ = {};
  std::array<Slot, std::size(kStored)> slots_;
  uint64_t id_ = 0;
  uint32_t key_value_ = 0;
  uint64_t aim_ = 0;
  uint64_t source_ = 0;
  ListRow row_ = {};
  std::unique_ptr<Statement> find_;
  std::unique_ptr<Statement> insert_;
  std::unique_ptr<Statement> key_;
  std::unique_ptr<Statement> list_;
  std::unordered_map<uint32_t, std::unique_ptr<Statement>> updates_;
};

MYSQL* HandMariadb::connect(const std::string& socket) {
  MYSQL* const client = mysql_init(nullptr);
  mysql_optionsv(client, MYSQL_SET_CHARSET_NAME, "latin1");
  mysql_optionsv(client, MYSQL_INIT_COMMAND, "SET NAMES latin1 COLLATE latin1_nopad_bin");
  if (mysql_real_connect(client, "localhost", "root", "", "dmdb", 0, socket.c_str(), 0) == nullptr) {
    give_up(mysql_error(client));
  }
  return client;
}

void HandMariadb::bind_list() {
  ListRow& r = row_;
  const auto text = [](auto& field) { return text_into(field, sizeof(field)); };
  list_->give({text(r.SettingID),      text(r.SettingName),   text(r.PendingValue), text(r.CurrentValue),
               number(&r.PfaKey),      text(r.GroupID),       text(r.GroupName),    text(r.Mriname),
               text(r.ShortDesc),      text(r.FullDesc),      text(r.Defvalue),     text(r.RecordId),
               number(&r.Type),        number(&r.Flags),      number(&r.Minim),     number(&r.Maxim),
               number(&r.Step),        number(&r.Numchoices), text(r.Choices),      number(&r.Mininstances),
               number(&r.Maxinstances)});
}

unsigned HandMariadb::list() {
  const std::unique_ptr<ListRow[]> rows(new ListRow[kSettings]);
  unsigned count = 0;
  list_->run();
  // A cell that is NULL leaves its buffer alone.
  const auto clear = [this] {
    for (char* field : {row_.SettingID, row_.SettingName, row_.PendingValue, row_.CurrentValue, row_.GroupID,
                        row_.GroupName, row_.Mriname, row_.ShortDesc, row_.FullDesc, row_.Defvalue,
                        row_.RecordId, row_.Choices}) {
      *field = '\0';
    }
  };
  for (clear(); count < kSettings && list_->fetch(); clear()) rows[count++] = row_;
  list_->release();
  return count;
}

}  // namespace

std::unique_ptr<Works> hand_mariadb(const std::string& socket) {
  return std::make_unique<HandMariadb>(socket);
}

}  // namespace bench
