// SPDX-License-Identifier: Apache-2.0
//
// The parser as its callers see it. Each case is two files in tests/golden: NAME.json is what the parser
// finds, NAME.expected what it makes of that. ZELDB_UPDATE_GOLDEN=1 writes the latter anew, to be read before
// it is committed. Members of an input, each optional:
//   bios      content of bios.json: an object, or a text that is no JSON; without it there is no such file
//   platform  content of platform.json
//   sql       statements, run once before the first run
//   markers   marker files that exist
//   rules     faults of the table access, see zel_db_shim.h
//   times     what the clock shows, [[seconds, microseconds], ...]
//   args      of the command line
//   files     further files, by their path in the run's folder
//   env       further environment, NAME=VALUE, where FOLDER stands for that folder
//   runs      an object for each run; its members replace those above, "before" are statements to run first
// In an expected file a row lists what is neither a NULL text nor the number 0, keys in hexadecimal; "rows"
// counts what each kind of statement wrote. In both files "x{300}" stands for 300 times x.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "tests/support/database.h"
#include "tests/support/run_program.h"
#include "tests/support/texts.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

struct Table {
  const char* name;
  const char* texts;
  const char* numbers;
};
constexpr Table kTables[] = {
    {"PCISetting",
     "SettingID SettingName PendingValue CurrentValue SuppressIf GrayIf GroupID GroupName GroupSuppressIf "
     "GroupGrayIf Mriname ShortDesc FullDesc Defvalue Mfg_default Defaultaction RecordId Pattern Choices",
     "PfaKey Type Flags Minim Maxim Step Mins Maxs Numchoices Mininstances Maxinstances"},
    {"PCIAdapter", "CardName ConnectorType",
     "PCIKey PCIFuncKey NodeNo SlotNo SegNo BusNo DeviceNo FunctionNo Location AIMSupported OOBSrc "
     "HealthStatus"}};

std::vector<std::string> words(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

std::string expanded(const std::string& text) {
  static const std::regex kRun("(.)\\{([0-9]{2,})\\}");
  std::string out;
  auto from = text.begin();
  for (std::sregex_iterator run(text.begin(), text.end(), kRun), end; run != end; ++run) {
    out.append(from, (*run)[0].first).append(std::stoul((*run)[2]), *(*run)[1].first);
    from = (*run)[0].second;
  }
  return out.append(from, text.end());
}

std::string abbreviated(const std::string& text) {
  std::string out;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find_first_not_of(text[at], at), text.size());
    const size_t length = end - at;
    out += length < 20 ? text.substr(at, length) : text[at] + ("{" + std::to_string(length) + "}");
    at = end;
  }
  return out;
}

std::string in_quotes(const std::string& text) {
  return json(text).dump(-1, ' ', false, json::error_handler_t::replace);
}

// One column of a row, in front of it a blank; nothing for what is usual.
std::string cell_text(const std::string& column, bool is_text, const Cell& cell) {
  if (!cell) return is_text ? "" : " " + column + "=NULL";
  if (is_text) return " " + column + "=" + in_quotes(*cell);
  if (*cell == "0") return "";
  if (!column.ends_with("Key")) return " " + column + "=" + *cell;
  std::ostringstream text;
  text << " " << column << "=0x" << std::hex << std::uppercase << std::stoull(*cell);
  return text.str();
}

std::string rows(const Database& database, const Table& table) try {
  const size_t texts = words(table.texts).size();
  const std::vector<std::string> columns = words(std::string(table.texts) + " " + table.numbers);
  std::string select = "SELECT ";
  for (const std::string& column : columns) select += column + (column == columns.back() ? " FROM " : ", ");
  std::string lines;
  for (const auto& row : database.rows(select + table.name + " ORDER BY _id")) {
    lines += " ";
    for (size_t i = 0; i < columns.size(); ++i) lines += cell_text(columns[i], i < texts, row[i]);
    lines += "\n";
  }
  return lines;
} catch (const std::runtime_error&) {
  return "  no such table\n";
}

struct Seen {
  Outcome outcome;
  std::string record;
  std::string client_calls;
  std::vector<std::string> files;  // those in "db" of the folder
};

void prepare(const fs::path& folder, const json& input) {
  const json none = json::array();
  fs::create_directories(folder / "tmp");
  fs::create_directory(folder / "db");
  for (const char* file : {"bios", "platform"}) {
    const json text = input.value(file, json());
    if (text.is_null()) continue;
    std::ofstream(folder / (std::string(file) + ".json"))
        << (text.is_string() ? std::string(text) : text.dump());
  }
  for (const std::string marker : input.value("markers", none)) std::ofstream(folder / "tmp" / marker);
  const json files = input.value("files", json::object());
  for (const auto& [path, text] : files.items()) std::ofstream(folder / path) << std::string(text);
  const json midnight = json::array({json::array({0, 0})});
  std::ofstream(folder / "rules") << json{{"rules", input.value("rules", none)},
                                          {"times", input.value("times", midnight)}};
}

// One run in a folder of its own.
Seen run_parser(const fs::path& folder, const json& input) {
  prepare(folder, input);
  Program program{.argv = {ZELDB_PARSER}, .preload = ZELDB_PRELOAD};
  for (const std::string argument : input.value("args", json::array())) program.argv.push_back(argument);
  program.env = {"VREL_LOG=",
                 "ZEL_PLATFORM_DIR=FOLDER",
                 "CMR_CALL_LOG=FOLDER/cmr",
                 "ZELDB_SHIM_TMP=FOLDER/tmp",
                 "ZELDB_SHIM_RULES=FOLDER/rules",
                 "ZELDB_SHIM_RECORD=FOLDER/record"};
  for (const std::string variable : input.value("env", json::array())) program.env.push_back(variable);
  for (std::string& variable : program.env) variable = replaced(variable, "FOLDER", folder);
  Seen seen;
  seen.outcome = run_program(program);
  seen.record = content_of(folder / "record");
  seen.client_calls = replaced(content_of(folder / "cmr"), "\t", " ");
  for (const auto& file : fs::recursive_directory_iterator(folder / "db")) {
    seen.files.push_back(file.path().filename().string() + " " + std::to_string(file.file_size()));
  }
  fs::remove_all(folder);
  return seen;
}

std::string text_of(const Seen& seen, const fs::path& folder) {
  const json record = json::parse(seen.record, nullptr, false);
  if (record.is_discarded()) return "no record: the shims were not loaded\n" + seen.outcome.err;
  std::string text = "exit " + std::to_string(seen.outcome.exit_status) + "\n";
  if (seen.outcome.signal != 0) text += "signal " + std::to_string(seen.outcome.signal) + "\n";
  if (!seen.outcome.out.empty()) text += "stdout " + in_quotes(seen.outcome.out) + "\n";
  if (!seen.outcome.err.empty()) text += "stderr " + in_quotes(seen.outcome.err) + "\n";
  for (const std::string line : record["syslogs"]) text += "trace " + in_quotes(line) + "\n";
  for (const std::string line : record["logs"])
    text += "log " + in_quotes(replaced(line, folder, "FOLDER")) + "\n";
  std::istringstream calls(seen.client_calls);
  for (std::string call; std::getline(calls, call);) text += "client " + call + "\n";
  for (const auto& [what, count] : record["written"].items())
    text += "rows " + what + " " + count.dump() + "\n";
  for (const std::string& file : seen.files) text += "file " + file + "\n";
  if (const std::string alive = record["alive"]; !alive.empty()) text += "alive " + alive + "\n";
  return text;
}

// The parser on an engine and an input.
class ParserRuns : public testing::TestWithParam<std::tuple<Engine, std::string>> {
 protected:
  // The outcome of all runs of an input.
  std::string story(const json& input) {
    std::string text;
    std::vector<std::string> before(std::size(kTables));
    database_.run_all(input.value("sql", std::vector<std::string>()));
    const json runs = input.value("runs", json::array({json::object()}));
    for (size_t i = 0; i < runs.size(); ++i) {
      json run = input;
      run.merge_patch(runs[i]);
      database_.run_all(run.value("before", std::vector<std::string>()));
      text += "== run " + std::to_string(i + 1) + "\n" + text_of(run_parser(folder(), run), folder());
      for (size_t table = 0; table < std::size(kTables); ++table) {
        const std::string now = rows(database_, kTables[table]);
        const char* state = now.empty() ? " empty" : now == before[table] ? " as before" : "";
        text += std::string(kTables[table].name) + state + "\n" + (*state == '\0' ? now : "");
        before[table] = now;
      }
    }
    return text;
  }

  fs::path folder() const { return fs::temp_directory_path() / ("zeldb-parser-" + std::to_string(getpid())); }

  static json input() { return json::parse(expanded(content_of(file(".json")))); }
  static std::string expected() { return content_of(file(".expected")); }
  static fs::path file(const char* suffix) {
    return fs::path(ZELDB_GOLDEN) / (std::get<1>(GetParam()) + suffix);
  }

  Database database_{std::get<0>(GetParam())};
};

// The first line that differs; nothing when all are equal.
std::string difference(const std::string& actual, const std::string& expected) {
  std::istringstream lines[] = {std::istringstream(actual), std::istringstream(expected)};
  std::string line[2];
  for (int number = 1;; ++number) {
    const bool more = static_cast<bool>(std::getline(lines[0], line[0]));
    const bool more_expected = static_cast<bool>(std::getline(lines[1], line[1]));
    if (!more && !more_expected) return "";
    if (more == more_expected && line[0] == line[1]) continue;
    return "line " + std::to_string(number) + "\n  is       " + (more ? line[0] : "missing") +
           "\n  expected " + (more_expected ? line[1] : "nothing");
  }
}

template <typename Names>
auto on_every_engine(Names names) {
  return testing::Combine(testing::ValuesIn(engines()), testing::ValuesIn(names));
}

std::string name_of(const testing::TestParamInfo<ParserRuns::ParamType>& test) {
  std::string name = name_of(std::get<0>(test.param)) + "_" + std::get<1>(test.param);
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

class ParserGolden : public ParserRuns {};
INSTANTIATE_TEST_SUITE_P(Cases, ParserGolden, on_every_engine(names_in(ZELDB_GOLDEN, ".json")), name_of);

TEST_P(ParserGolden, MakesOfItsInputWhatIsExpected) {
  const std::string actual = abbreviated(story(input()));
  if (std::getenv("ZELDB_UPDATE_GOLDEN") != nullptr) std::ofstream(file(".expected")) << actual;
  EXPECT_EQ(difference(actual, expected()), "");
}

}  // namespace
}  // namespace zeldb_test
