// SPDX-License-Identifier: Apache-2.0
//
// Calls a function once for each allocation, and once for each call of the platform, that it makes: that one
// fails, or that one and all that follow. Each time in a process of its own, from the same rows on; then the
// tables are read through the connection that the fault has struck.
//   sweep STATUS,... CALL ARGUMENT...
// Among the statuses may stand what a contract allows:
//   id         a status above 0 is the id of a row, and a success
//   less       a success may come with less than it has otherwise
//   part       a failure may come with part of a list
//   unheard    a success may come without what was to be written
//   each       rows are written one by one, and stay where a later one fails
//   twice      a lookup that fails counts as no row: what is written may stand beside the row that is there
//   untouched  a list may be left as it was, and not only without a handle
//   cold       opening the connection is swept, too, and not only at some of its allocations
// CALL is NAME, or FUNCTION=NAME where the call has another name than the function. ctest takes one place of
// each kind; with ZELDB_SWEEP=FILE every one, and FILE gets a line of counts for each function.
#include <nlohmann/json.hpp>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <fstream>
#include <functional>
#include <iostream>
#include <set>
#include <sstream>

#include "tests/support/texts.h"
#include "tests/support/transcript.h"
#include "tests/support/zel_db_shim.h"

namespace zeldb_test {
namespace {

using nlohmann::json;
using Names = std::set<std::string>;

enum class Of { Call, Read, Allocation };
struct Kind {
  const char* name;
  Of of;
  bool warm;   // over a connection that is open
  int places;  // at most
};
// Opening a connection is the same for all functions: one row takes all of its allocations.
constexpr Kind kKinds[] = {{"call", Of::Call, false, INT_MAX},
                           {"read", Of::Read, false, INT_MAX},
                           {"allocation", Of::Allocation, true, INT_MAX},
                           {"cold allocation", Of::Allocation, false, 20}};

struct Fault {
  Kind kind;
  int nth;
  bool and_after;
};

// The rows of the tables without their ids, or the status that reading them ends with.
json rows_of(const Names& tables) {
  json all = json::array();
  std::string text(16384, '\0');
  for (const std::string& table : tables) {
    zel_db_result_t* result = nullptr;
    int status =
        zel_db_query(zeldb::inventory(), table.c_str(), nullptr, 0, nullptr, nullptr, 0, nullptr, &result);
    if (status == 0 && result != nullptr) {
      while ((status = zel_db_result_step(result)) == 9) {
        std::string row = table;
        for (int column = 1, read = 0; read != 12; ++column) {
          read = zel_db_result_column_text(result, column, text.data(), static_cast<unsigned>(text.size()));
          if (read != 12) row += "|" + (read == 0 ? text.substr(0, text.find('\0')) : "NULL");
        }
        all.push_back(row);
      }
    }
    zel_db_free_result(result);
    if (status != 10) all.push_back(table + " cannot be read: " + std::to_string(status));
  }
  return all;
}

struct Sweep {
  std::function<Seen()> call;
  Names tables = {"PCIs"};

  json seen(const Fault& fault) const {
    if (fault.kind.warm) rows_of(tables);
    shim().reset();
    const bool memory = fault.kind.of == Of::Allocation;
    const auto kind = fault.kind.of == Of::Read ? ZelDbShim::Kind::Read : ZelDbShim::Kind::Call;
    LibcShim::fail_allocations(memory ? fault.nth : 0, fault.and_after);
    ZelDbShim::fail_calls(kind, memory ? 0 : fault.nth, fault.and_after);
    const Seen seen = call();
    const int allocations = LibcShim::fail_allocations(0);
    const int calls = ZelDbShim::fail_calls(kind, 0);
    Names written;
    for (const Call& made : shim().calls()) {
      if (made.op == "insert" || made.op == "update" || made.op == "delete") written.insert(made.table);
    }
    std::istringstream line(seen.line.substr(1));
    std::string status = "empty";
    line >> status;
    return {{"status", status},
            {"line", seen.line},
            {"below", seen.below},
            {"alive", shim().alive()},
            {"rows", rows_of(tables)},
            {"written", written},
            {"count", memory ? allocations : calls}};
  }

  // The observations of a process of its own.
  json run(const Fault& fault) const {
    int ends[2];
    if (pipe(ends) != 0) return {{"died", "before it began"}};
    const pid_t child = fork();
    if (child == 0) {
      alarm(60);
      std::string text = R"({"died":"an exception"})";
      try {
        text = seen(fault).dump(-1, ' ', false, json::error_handler_t::replace);
      } catch (const std::exception&) {  // what the function throws must not go on in this process
        LibcShim::fail_allocations(0);
      }
      const bool told = write(ends[1], text.data(), text.size()) == static_cast<ssize_t>(text.size());
      _exit(told ? 0 : 1);
    }
    close(ends[1]);
    std::string text;
    char part[4096];
    for (ssize_t size = 0; (size = read(ends[0], part, sizeof(part))) > 0;)
      text.append(part, static_cast<size_t>(size));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    json seen = json::parse(text, nullptr, false);
    if (status == 0 && seen.is_object()) return seen;
    return {{"died", WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status)) : "an exit"}};
  }
};

// The statuses that a contract allows, the undisturbed call, and the rows before it.
struct Judge {
  Names allowed;
  json before;
  json after;

  // The fault; empty if there is none.
  std::string verdict(const json& run, Of of) const {
    if (run.contains("died")) return "ended by " + std::string(run["died"]);
    std::string wrong = run["alive"];
    const std::string status = run["status"];
    const std::string below = run["below"];
    const bool is_id = allowed.contains("id") && std::strtol(status.c_str(), nullptr, 10) > 0;
    const bool well = is_id || status == after["status"];
    if (!well && !allowed.contains(status)) wrong += "status " + status + ";";
    const bool less = of != Of::Read && !is_id && (run["line"] != after["line"] || below != after["below"]);
    if (well && less && !allowed.contains("less")) wrong += "less: " + std::string(run["line"]) + below;
    const bool is_list = below.size() > 3 && isdigit(static_cast<unsigned char>(below[3])) != 0;
    const bool unopened = status == "6" || allowed.contains("untouched");
    const bool absent =
        below.starts_with("   0") || (unopened && below.find("untouched") != std::string::npos);
    if (!well && is_list && !absent && !allowed.contains("part") && below != after["below"])
      wrong += "part of a list, status " + status + ": " + below;
    return wrong + verdict_on_rows(run["rows"], well);
  }

 private:
  std::string verdict_on_rows(const json& rows, bool well) const {
    if (rows == after["rows"]) return "";
    if (rows == before) return well && !allowed.contains("unheard") ? "a success without a row" : "";
    const auto in = [](const json& row, const json& all) {
      return std::find(all.begin(), all.end(), row) != all.end();
    };
    const bool twice = allowed.contains("twice");
    for (const json& row : rows) {
      if (!in(row, before) && !in(row, after["rows"]) && !(twice && stands_beside(row)))
        return "a row " + std::string(row);
    }
    const auto has = [&](const json& all) {
      return std::all_of(all.begin(), all.end(), [&](const json& row) { return in(row, rows); });
    };
    if (allowed.contains("each") || (twice && (has(before) || has(after["rows"])))) return "";
    return "some rows, not all";
  }

  // Whether a row of that table with the same first columns was there before.
  bool stands_beside(const std::string& row) const {
    size_t end = 0;
    for (int columns = 0; columns < 3 && end != std::string::npos; ++columns) end = row.find('|', end + 1);
    const std::string first = row.substr(0, end);
    return std::any_of(before.begin(), before.end(),
                       [&](const std::string& other) { return other.starts_with(first + "|"); });
  }
};

// Tables, and a copy of each to make them from again.
class Kept {
 public:
  Kept(const Database& database, Names tables) : database_(database), tables_(std::move(tables)) {
    each({"DROP TABLE IF EXISTS kept_$", "CREATE TABLE kept_$ AS SELECT * FROM $"});
  }
  void restore() const { each({"DELETE FROM $", "INSERT INTO $ SELECT * FROM kept_$"}); }

 private:
  void each(const std::vector<std::string>& templates) const {
    std::vector<std::string> statements;
    for (const std::string& table : tables_) {
      for (const std::string& text : templates) statements.push_back(replaced(text, "$", table));
    }
    database_.run_all(statements);
  }

  const Database& database_;
  Names tables_;
};

// MariaDB's client library ends the process if two of its allocations in mysql_real_connect fail: the text of
// the server's version and that of an authentication plugin. One connect meets them five times.
constexpr const char* kClientCrash = "ended by signal 11";
bool of_client(const Kind& kind, const Database& database) {
  return kind.of == Of::Allocation && database.kind() == Engine::MariaDb;
}

Names split(const std::string& text) {
  std::istringstream words(text);
  Names names;
  for (std::string word; std::getline(words, word, ',');) names.insert(word);
  return names;
}

}  // namespace

std::string sweep(const std::string& command, const Database& database) {
  std::istringstream words(command);
  Judge judge = {split(next_word(words)), {}, {}};
  if (judge.allowed.contains("77") && database.kind() == Engine::MariaDb)
    judge.allowed.insert("14");  // the connection, dropped by a client without memory
  const std::string name = next_word(words);
  const Player& function = kFamily.calls.at(name.substr(name.find('=') + 1));
  std::string arguments;
  std::getline(words, arguments);

  const auto play = [&] {
    std::istringstream in(arguments);
    return function(in);
  };
  const Fault none = {kKinds[0], INT_MAX, false};
  Sweep sweep = {play};
  const json first = sweep.run(none);
  if (first.contains("died")) return "  undisturbed: ended by " + std::string(first["died"]) + "\n";
  sweep.tables.merge(Names(first["written"]));
  const Kept kept(database, sweep.tables);
  kept.restore();
  judge.before = Sweep{[] { return Seen{"="}; }, sweep.tables}.run(none)["rows"];
  judge.after = sweep.run(none);

  const char* const counts = std::getenv("ZELDB_SWEEP");
  std::vector<std::string> wrong;
  std::string counted = name + " " + database.engine();
  for (const Kind& kind : kKinds) {
    const int places = sweep.run({kind, INT_MAX, false})["count"];
    kept.restore();
    const bool all = counts != nullptr && (kind.places > places || judge.allowed.contains("cold"));
    const int step = all ? 1 : places / (counts != nullptr ? kind.places : 1) + 1;
    int faults = 0;
    int crashes = 0;
    for (int nth = 1 + static_cast<int>(std::hash<std::string>()(command) %
                                        static_cast<size_t>(std::min(step, std::max(places, 1))));
         nth <= places; nth += step) {
      for (const bool and_after : {false, true}) {
        ++faults;
        const json run = sweep.run({kind, nth, and_after});
        if (run.value("rows", json()) != judge.before) kept.restore();
        std::string verdict = judge.verdict(run, kind.of);
        if (verdict.empty() || (of_client(kind, database) && verdict == kClientCrash && ++crashes <= 5))
          continue;
        std::replace(verdict.begin(), verdict.end(), '\n', ' ');
        wrong.push_back("  " + std::string(kind.name) + " " + std::to_string(nth) +
                        (and_after ? " and after: " : ": ") + verdict.substr(0, 150) + "\n");
        if (counts != nullptr) std::cerr << name << " on " << database.engine() << wrong.back();
      }
    }
    counted += " " + std::to_string(faults);
  }
  if (counts != nullptr) std::ofstream(counts, std::ios::app) << counted << " " << wrong.size() << "\n";
  std::string all;
  for (size_t i = 0; i < std::min<size_t>(wrong.size(), 6); ++i) all += wrong[i];
  return all;
}

}  // namespace zeldb_test
