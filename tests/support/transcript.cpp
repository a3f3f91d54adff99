// SPDX-License-Identifier: Apache-2.0
#include "tests/support/transcript.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <set>
#include <sstream>

#include "db/product.h"
#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/texts.h"
#include "tests/support/zel_db_shim.h"

namespace zeldb_test {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Rule, op, table, nth, status, with_result, after, fewer,
                                                column, name)

namespace {

std::vector<std::pair<void*, Fields>>& records() {
  static std::vector<std::pair<void*, Fields>> all;
  return all;
}

// <200 x> stands for a run of 200 x.
std::string without_runs(std::string text) {
  for (size_t at = 0; (at = text.find("xxxxxxxxx", at)) != std::string::npos;) {
    const size_t length = text.find_first_not_of('x', at) - at;
    text.replace(at, length, "<" + std::to_string(length) + " x>");
  }
  return text;
}

void put(const zeldb::Field& field, void* record, const std::string& value) {
  if (field.kind != zeldb::Kind::Text) return set_number(field, record, std::stoull(value, nullptr, 0));
  std::snprintf(reinterpret_cast<char*>(bytes_of(field, record)), field.size, "%s", value.c_str());
}

const std::string kMaker = std::to_string(zeldb::kMakerSubVendorId);

const std::pair<const char*, Rule> kFaults[] = {
    {"query refused", {.op = "query", .status = 2, .with_result = true}},
    {"no result", {.op = "query"}},
    {"a row less", {.op = "row_count", .fewer = 1}},
    {"row 1 fails", {.op = "step", .status = 5, .after = 0}},
    {"row 2 fails", {.op = "step", .status = 5, .after = 1}},
    {"row 3 fails", {.op = "step", .status = 5, .after = 2}},
    {"0 for row 2", {.op = "step", .status = 0, .after = 1}},
    {"column 1 unreadable", {.op = "column", .status = 8, .column = 0}}};

constexpr const char* kTraced[] = {"ZEL_PLATFORM_TRACE", "CMR_CALL_LOG"};

class Transcript : public testing::TestWithParam<std::tuple<std::string, Engine>> {
 protected:
  void SetUp() override { setenv("ZEL_PLATFORM_DIR", database_.folder().c_str(), 1); }
  void TearDown() override {
    for (const char* traced : kTraced) unsetenv(traced);
  }

  void play(const std::string& command) {
    static const std::map<std::string, void (Transcript::*)(const std::string&)> kVerbs = {
        {"sql", &Transcript::sql},       {"show", &Transcript::show},     {"set", &Transcript::set},
        {"fill", &Transcript::fill},     {"fail", &Transcript::fail},     {"memory", &Transcript::memory},
        {"repeat", &Transcript::repeat}, {"file", &Transcript::file},     {"trace", &Transcript::trace},
        {"mark", &Transcript::mark},     {"pipe", &Transcript::pipe},     {"result", &Transcript::result},
        {"check", &Transcript::check},   {"faults", &Transcript::faults}, {"sweep", &Transcript::sweep},
        {"sample", &Transcript::sample}, {"sizes", &Transcript::sizes}};
    const std::string verb = command.substr(0, command.find(' '));
    const auto found = kVerbs.find(verb);
    if (found == kVerbs.end()) return call(command);
    (this->*found->second)(command.substr(std::min(command.size(), verb.size() + 1)));
  }

  std::string seen_;
  bool skipped_ = false;

 private:
  void sql(const std::string& statement) {
    const bool properties = statement.find("propertiesDCTbl") != std::string::npos;
    database_.run(replaced(statement, "{MAKER}", kMaker), properties ? "propertiesdb" : "dmdb");
  }
  void show(const std::string& select) { seen_ += without_runs("   " + database_.text(select) + "\n"); }
  void fail(const std::string& rule) { faults_.push_back(nlohmann::json::parse(rule).get<Rule>()); }
  void memory(const std::string& size) { allocation_ = std::stoul(size); }
  void sizes(const std::string& /*none*/) { sizes_ = true; }
  void mark(const std::string& name) { libc().mark(name); }
  void pipe(const std::string& name) {
    libc().mark(name);
    const std::string marker = libc().tmp + "/" + name;
    std::filesystem::remove(marker);
    mkfifo(marker.c_str(), 0600);
  }
  void trace(const std::string& /*none*/) {
    for (const char* traced : kTraced) setenv(traced, path("trace").c_str(), 1);
  }

  void set(const std::string& pairs) {
    std::istringstream in(pairs);
    for (std::string name; !(name = next_word(in)).empty();) {
      const std::string value = next_word(in);
      bool is_known = false;
      for (const auto& [record, fields] : records()) {
        for (const zeldb::Field& field : fields) {
          if (name != field.column) continue;
          put(field, record, value);
          is_known = true;
        }
      }
      EXPECT_TRUE(is_known) << name;
    }
  }

  void fill(const std::string& /*none*/) {
    for (const auto& [record, fields] : records()) {
      for (const zeldb::Field& field : fields) std::memset(bytes_of(field, record), 'x', field.size);
    }
  }

  void file(const std::string& name_content) {
    const size_t end = name_content.find(' ');
    const std::string name = path(name_content.substr(0, end));
    std::filesystem::remove(name);
    if (end != std::string::npos) std::ofstream(name) << name_content.substr(end + 1);
  }

  void repeat(const std::string& times_command) {
    const std::string before = seen_;
    for (int left = std::stoi(times_command); left > 0; --left) {
      seen_ = before;
      play(times_command.substr(times_command.find(' ') + 1));
    }
  }

  void result(const std::string& command) {
    const Seen seen = outcome(command);
    told();
    seen_ += without_runs(seen.line + "\n" + seen.below);
  }

  void check(const std::string& command) {
    const std::vector<Rule> others = faults_;
    for (const char* op : {"get_dmdb_handle", "open"}) faults_.push_back({.op = op, .nth = 0});
    const Seen without = outcome(command);
    told();
    seen_ += without.line + " without a database\n" + without.below;
    faults_ = others;
    call(command);
  }

  void faults(const std::string& command) {
    for (const auto& [name, rule] : kFaults) {
      faults_.push_back(rule);
      const Seen seen = outcome(command);
      const auto queries = shim().calls("query");
      const bool stepped = rule.op == "step" && !queries.empty();
      const std::string steps = stepped ? ", steps " + std::to_string(queries[0].steps) : "";
      told();
      std::string all = seen.line + "\n" + seen.below;
      all.pop_back();
      seen_ += without_runs("  " + std::string(name) + steps + " " + replaced(all, "\n   ", "; ") + "\n");
    }
  }

  void sweep(const std::string& command) { seen_ += zeldb_test::sweep(command, database_); }

  void sample(const std::string& /*none*/) {
    for (const char* name : {"inventory", "adapters", "processors", "drives", "firmware", "properties"}) {
      database_.load(ZELDB_SAMPLES "/" + std::string(name) + ".sql",
                     name == std::string("properties") ? "propertiesdb" : "dmdb");
    }
    for (const char* name : {"bios.json", "platform.json"}) {
      std::filesystem::copy(ZELDB_SAMPLES "/" + std::string(name), path(name));
    }
  }

  void call(const std::string& command) {
    const Seen seen = outcome(command);
    if (!skipped_) seen_ += without_runs(seen.line + "\n" + told() + seen.below);
  }

  Seen outcome(const std::string& command) {
    std::istringstream words(command);
    const Player& function = kFamily.calls.at(next_word(words));
    shim().reset();
    for (const Rule& rule : std::exchange(faults_, {})) shim().fail(rule);
    if (allocation_ > 0) skipped_ = !LibcShim::fail_allocation(std::exchange(allocation_, 0));
    return skipped_ ? Seen() : function(words);
  }

  // The queries, writes, sleeps and log lines since the last call.
  std::string told() {
    std::string all;
    for (const Call& made : shim().calls()) all += told(made);
    sizes_ = false;
    std::ifstream trace(path("trace"));
    for (std::string line; std::getline(trace, line);) all += "  platform " + line + "\n";
    std::filesystem::remove(path("trace"));
    for (auto* lines : {&libc().syslogs, &libc().logs, &libc().debug_logs}) {
      for (const std::string& line : std::exchange(*lines, {})) {
        if (!line.starts_with("debug zel_db:")) all += "  log " + replaced(line, "\n", "\\n") + "\n";
      }
    }
    for (const unsigned seconds : std::exchange(libc().sleeps, {}))
      all += "  sleep " + std::to_string(seconds) + "\n";
    return all;
  }

  std::string told(const Call& made) {
    static const std::set<std::string> kShown = {"query", "raw_query", "update", "insert", "delete"};
    // The platform's own lookups are made once per process.
    const bool own = !made.table.starts_with(kFamily.others) && made.columns != "propValue";
    if (!kShown.contains(made.op) || (made.op == "query" && !own)) return "";
    std::string text = "  " + made.op + " " + made.table + made.text;
    if (!made.columns.empty() && columns_.insert(made.table + made.columns).second)
      text += " [" + made.columns + "]";
    if (!made.where.empty())
      text += " where " + replaced(made.where, "SubVendorId=" + kMaker, "SubVendorId=MAKER");
    if (!made.params.empty()) text += " with " + made.params;
    if (!made.order.empty() && made.order != "(null)") text += " order " + made.order;
    for (const std::string& put : made.puts) text += ", " + put;
    if (made.op == "raw_query") text += " [" + std::to_string(made.capacity) + "]";
    if (made.op == "update" || made.op == "delete") text += " [" + std::to_string(made.rows) + "]";
    for (const unsigned size : sizes_ ? made.sizes : std::vector<unsigned>())
      text += " {" + std::to_string(size) + "}";
    if (made.status != 0) text += " -> " + std::to_string(made.status);
    return text + "\n";
  }

  std::string path(const std::string& name) const { return database_.folder() + "/" + name; }

  Database database_{std::get<Engine>(GetParam())};
  std::vector<Rule> faults_;
  size_t allocation_ = 0;
  bool sizes_ = false;             // of buffers are shown of the next call
  std::set<std::string> columns_;  // shown before
};

INSTANTIATE_TEST_SUITE_P(Family, Transcript,
                         testing::Combine(testing::ValuesIn(names_in(kFamily.folder, ".txt")),
                                          testing::ValuesIn(engines())),
                         [](const auto& test) {
                           return std::get<0>(test.param) + "_" + name_of(std::get<1>(test.param));
                         });

TEST_P(Transcript, IsRepeated) {
#if defined(__SANITIZE_ADDRESS__) || defined(__arm__)
  if (std::get<0>(GetParam()) == "sweep") GTEST_SKIP() << "a process for each fault takes too long here";
#endif
  const std::string name = kFamily.folder + ("/" + std::get<0>(GetParam())) + ".txt";
  std::ifstream file(name);
  std::string expected;
  std::string command;
  for (std::string line; file;) {
    const bool is_line = static_cast<bool>(std::getline(file, line));
    const bool goes_on = is_line && line.starts_with("> ");
    if (!goes_on && !command.empty()) play(std::exchange(command, {}));
    if (!is_line) break;
    if (line.starts_with("$ ") || goes_on) command += (goes_on ? " " : "") + line.substr(2);
    if (line.empty() || !command.empty() || line[0] == '#') seen_ += line + "\n";
    expected += line + "\n";
  }
  if (skipped_) GTEST_SKIP() << "a sanitizer owns the allocations";
  if (std::getenv("ZELDB_UPDATE_TRANSCRIPTS") != nullptr) std::ofstream(name) << (expected = seen_);
  std::istringstream got(seen_);
  std::istringstream wanted(expected);
  int number = 0;
  for (std::string line, other; std::getline(wanted, other);) {
    ++number;
    ASSERT_EQ(std::getline(got, line) ? line : "nothing", other)
        << name << ":" << number << ", after " << command;
    if (other.starts_with("$ ")) command = other;
  }
  EXPECT_EQ(seen_.size(), expected.size()) << name;
}

}  // namespace

Fields listed(void* record, Fields fields) {
  records().emplace_back(record, fields);
  return fields;
}

std::string text_of(const Fields& fields, const void* record) {
  std::string all;
  for (const zeldb::Field& field : fields) {
    const auto* const text = reinterpret_cast<const char*>(bytes_of(field, record));
    const bool is_text = field.kind == zeldb::Kind::Text;
    const std::string value =
        is_text ? std::string(text, strnlen(text, field.size)) : std::to_string(number_of(field, record));
    if (!value.empty() && value != "0")
      all += (all.empty() ? "" : " ") + std::string(field.column) + "=" + value;
  }
  return all.empty() ? "nothing" : all;
}

void Argument<Buffer*>::show(Seen& seen, const std::string& name) const {
  if (is_null) return;
  std::string all(text, sizeof(text));
  all.erase(all.find_last_not_of('.') + 1);
  seen.line += " " + name + (all.empty() ? " untouched" : "=" + replaced(all, std::string(1, '\0'), "\\0"));
}

std::string parameter_name(const std::string& function, size_t index) {
  static const std::string declarations = [] {
    std::string all = content_of(std::string(kFamily.folder) + "/../calls.cpp");
    for (const std::string& header : names_in(ZELDB_HEADERS, ".h"))
      all += content_of(ZELDB_HEADERS "/" + header + ".h");
    return all;
  }();
  const std::string start = " " + function + "(";
  for (size_t at = declarations.find(start); at != std::string::npos; at = declarations.find(start, at + 1)) {
    const size_t first = at + start.size();
    std::istringstream list(declarations.substr(first, declarations.find(')', first) - first));
    std::string parameter;
    size_t i = 0;
    while (std::getline(list, parameter, ',') && i < index) ++i;
    if (list && i == index) return parameter.substr(parameter.find_last_of(" *&") + 1);
  }
  return "text";
}

std::string next_word(std::istream& words) {
  std::string word;
  words >> std::quoted(word);
  return word;
}

}  // namespace zeldb_test
