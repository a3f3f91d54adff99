// SPDX-License-Identifier: Apache-2.0
#include <soci/soci-config.h>
#undef SOCI_HAVE_BOOST  // only further overloads, for types that are not used here
#include <soci/mysql/soci-mysql.h>
#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>

#include <algorithm>
#include <cstring>
#include <deque>

#include "bench/hand.h"

namespace bench {

namespace {

struct SociSqlite {
  static constexpr const char* kClear = "DELETE FROM PCISetting";
  static const soci::backend_factory& backend() { return soci::sqlite3; }
  static std::string place(const std::string& folder, bool properties) {
    return "db=" + folder + (properties ? "/propertiesdb.sqlite" : "/dmdb.sqlite") + " timeout=5";
  }
  static constexpr const char* kSettings[] = {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL",
                                              "PRAGMA case_sensitive_like=ON"};
};

struct SociMariadb {
  static constexpr const char* kClear = "TRUNCATE TABLE PCISetting";
  static const soci::backend_factory& backend() { return soci::mysql; }
  static std::string place(const std::string& socket, bool properties) {
    return std::string("db=") + (properties ? "propertiesdb" : "dmdb") + " user=root unix_socket=" + socket +
           " charset=latin1";
  }
  static constexpr const char* kSettings[] = {"SET NAMES latin1 COLLATE latin1_nopad_bin"};
};

template <class Engine>
struct Soci {
  static constexpr bool kTuned = false;
  static constexpr const char* kClear = Engine::kClear;

  Soci(const std::string& where, bool properties)
      : session(Engine::backend(), Engine::place(where, properties)) {
    for (const char* setting : Engine::kSettings) run(setting);
  }
  void run(const char* sql) { session << sql; }

  // Values and cells stand in variables that the statement knows.
  class Statement {
   public:
    Statement(Soci& client, const std::string& sql, const std::string& in, const std::string& out)
        : statement_(client.session), selects_(!out.empty()) {
      for (const char letter : in) {
        Cell& cell = values_.emplace_back();
        if (letter == 't') {
          statement_.exchange(soci::use(cell.text, cell.indicator));
        } else {
          statement_.exchange(soci::use(cell.number, cell.indicator));
        }
      }
      for (const char letter : out) {
        Cell& cell = cells_.emplace_back();
        if (letter == 't') {
          statement_.exchange(soci::into(cell.text, cell.indicator));
        } else {
          statement_.exchange(soci::into(cell.number, cell.indicator));
        }
      }
      statement_.alloc();
      statement_.prepare(named(sql));
      statement_.define_and_bind();
    }

    void bind(int place, const char* text) {
      value(place).text = text;
      value(place).indicator = soci::i_ok;
    }
    void bind(int place, int64_t number) {
      value(place).number = number;
      value(place).indicator = soci::i_ok;
    }
    void bind_null(int place) { value(place).indicator = soci::i_null; }
    bool step() {
      if (runs_) return statement_.fetch();
      runs_ = true;
      return statement_.execute(true) && selects_;
    }
    // Reads the remaining rows: an unfinished read would hold back writers.
    void reset() {
      while (selects_ && statement_.got_data()) statement_.fetch();
      runs_ = false;
    }
    int columns() const { return static_cast<int>(cells_.size()); }
    int64_t number(int column) {
      const Cell& cell = cells_[static_cast<size_t>(column)];
      return cell.indicator == soci::i_ok ? cell.number : 0;
    }
    void text(int column, char* field, size_t capacity) {
      const Cell& cell = cells_[static_cast<size_t>(column)];
      const size_t size = cell.indicator == soci::i_ok ? std::min(cell.text.size(), capacity - 1) : 0;
      std::memcpy(field, cell.text.data(), size);
      field[size] = '\0';
    }
    int64_t cell(int column, char* /*field*/, size_t /*capacity*/) { return number(column); }

   private:
    struct Cell {
      std::string text;
      long long number = 0;
      soci::indicator indicator = soci::i_ok;
    };

    Cell& value(int place) { return values_[static_cast<size_t>(place - 1)]; }

    static std::string named(const std::string& sql) {
      std::string result;
      for (int count = 0; const char c : sql) {
        if (c == '?') {
          result.append(":v").append(std::to_string(++count));
        } else {
          result.push_back(c);
        }
      }
      return result;
    }

    soci::statement statement_;
    bool selects_;
    bool runs_ = false;
    std::deque<Cell> values_;
    std::deque<Cell> cells_;
  };

  soci::session session;
};

}  // namespace

std::unique_ptr<Works> soci_sqlite(const std::string& where) {
  return std::make_unique<Hand<Soci<SociSqlite>>>(where);
}

std::unique_ptr<Works> soci_mariadb(const std::string& where) {
  return std::make_unique<Hand<Soci<SociMariadb>>>(where);
}

}  // namespace bench
