// SPDX-License-Identifier: Apache-2.0
//
// What the command prints. A file in tests/cli/golden is a transcript: its first line says in front of which
// databases ("# sample", "# odd", "# empty", "# away"), each line "$ zeldb ..." is run as it is and with
// --json, and what both print stands below it; "! 1 text" is an exit status and standard error.
// ZELDB_UPDATE_GOLDEN=1 writes the transcripts anew, to be read before they are committed. SAMPLES stands for
// the folder of the samples.
//
// What is shown as JSON has to agree with docs/zeldb.schema.json, and what --mask leaves with its
// "identifies".
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "tests/cli/sample.h"
#include "tests/cli/views.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

bool agrees(const Json& value, const Json& property) {
  if (property.at("type") == "integer")
    return value.is_number_integer() && (!property.contains("minimum") || value >= property.at("minimum"));
  if (value.is_null()) return property.at("type") != "string";
  if (!value.is_string() || value.get<std::string>().empty()) return false;
  return !property.contains("pattern") ||
         std::regex_match(value.get<std::string>(), std::regex(property.at("pattern").get<std::string>()));
}

// Every column in its order, and of its type; the first one is there for several machines alone.
void expect_agreement(const Json& output, const Json& view) {
  EXPECT_EQ(output.size(), 2U);
  EXPECT_EQ(output.at("format_version"), schema().at("properties").at("format_version").at("const"));
  for (const Json& row : output.at("rows")) {
    auto property = std::next(view.at("properties").begin(), row.contains("Machine") ? 0 : 1);
    for (const auto& [key, value] : row.items()) {
      ASSERT_NE(property, view.at("properties").end()) << key;
      EXPECT_EQ(key, property.key());
      EXPECT_TRUE(agrees(value, property.value())) << key << ": " << value;
      ++property;
    }
    EXPECT_EQ(property, view.at("properties").end());
  }
}

// Equal values have equal replacements, different ones different ones; other columns are as they were.
void expect_masked(const Json& output, const Json& masked, const Json& view) {
  std::map<std::string, std::string> replacements;
  std::set<std::string> given;
  ASSERT_EQ(output.at("rows").size(), masked.at("rows").size());
  for (size_t row = 0; row < output.at("rows").size(); ++row) {
    for (const auto& [key, value] : output.at("rows")[row].items()) {
      const Json& shown = masked.at("rows")[row].at(key);
      const std::string kind = view.at("properties").at(key).value("identifies", "");
      if (kind.empty() || value.is_null()) {
        EXPECT_EQ(shown, value) << key;
      } else if (kind != "text" && kind != "value") {
        const std::string word = shown.get<std::string>();
        EXPECT_TRUE(std::regex_match(word, std::regex("[a-z]+-[0-9]+"))) << key << ": " << word;
        const auto known = replacements.try_emplace(value.get<std::string>(), word);
        EXPECT_EQ(known.first->second, word) << key;
        EXPECT_TRUE(!known.second || given.insert(word).second) << word;
      }
    }
  }
}

// The listings of a place are checked one by one.
void expect_schema(const Json& output, const Json& masked, const std::string& name, bool is_whole) {
  if (output.contains("listings")) {
    for (const auto& [listing, rows] : output.at("listings").items())
      expect_schema(rows, masked.at("listings").at(listing), listing, true);
    return;
  }
  const Json& view = schema().at("$defs").at(name);
  if (is_whole) expect_agreement(output, view);
  expect_masked(output, masked, view);
}

class Golden : public testing::TestWithParam<std::tuple<Engine, std::string>> {
 protected:
  Golden() : database_(std::get<Engine>(GetParam())) {}

  static Outcome run(const std::string& command, const std::vector<std::string>& more = {}) {
    std::vector<std::string> words = words_of(command);
    words.insert(words.end(), more.begin(), more.end());
    return run_zeldb(words);
  }

  static std::string shown(const Outcome& outcome) {
    std::string text = outcome.out;
    if (outcome.exit_status != 0) text += "! " + std::to_string(outcome.exit_status) + " " + outcome.err;
    // Engines have words of their own for it.
    static const std::regex missing(
        R"(cannot open \S+nothing(/|_)(dmdb|properties)\S*( at \S+ \(\S+\))?: (No such file or directory|Unknown database '\S+'))");
    return std::regex_replace(without_samples(text), missing, "cannot open DATABASE: not there");
  }

  static std::string replay(const std::string& command) {
    SCOPED_TRACE(command);
    const Outcome plain = run(command);
    if (plain.exit_status != 0 || command.find(" --json") != std::string::npos) return shown(plain);
    const Outcome json = run(command, {"--json"});
    const Outcome masked = run(command, {"--json", "--mask"});
    if (json.exit_status == 0 && masked.exit_status == 0) {
      const bool is_whole = command.find("--output") == std::string::npos;
      expect_schema(Json::parse(json.out), Json::parse(masked.out), view_of(command), is_whole);
    }
    EXPECT_EQ(plain.err + json.err + masked.err, "");
    return shown(plain) + shown(json);
  }

  Database database_;
};

// What a reader meets while another process writes, or after one that has written nonsense: keys and ids of
// rows that cannot be read by them, cards without any product data, and a setting without flag 2. And
// high-bandwidth memory: no processor has it beside persistent modules.
const std::vector<std::string> kOdd = {
    "INSERT INTO PCIs (FunKey, SlotNo, Location) VALUES (-1, 5, 1)",
    "INSERT INTO Memory (_id, SlotNo, DevLocator) VALUES (-7, 40, 'DIMM 40')",
    "INSERT INTO Memory (ArrayId, MemSize, MemType, DevLocator, Manufacturer) "
    "VALUES (2, 16384, 32, 'CPU 1 HbmIo 0', 'Intel')",
    "INSERT INTO Processor (_id, Socket) VALUES (-7, 'CPU 9')",
    "INSERT INTO VPDs (HardwareId, HardwareTypeId, Location, SlotNo) "
    "SELECT FunKey, 3, 1, 90 FROM PCIs WHERE FunKey BETWEEN 0 AND 18000000",
    "INSERT INTO PCISetting (SettingID, PfaKey, Flags) VALUES ('Usb-Ports.Inner', 5120, 1)",
};

TEST_P(Golden, IsWhatItPrints) {
  const std::string name = std::get<std::string>(GetParam());
  const auto [databases, blocks] = transcript_of(name);
  if (databases == "# sample" || databases == "# odd") load_sample();
  if (databases == "# odd") database_.run_all(kOdd);
  if (databases == "# away") setenv("ZEL_DB_URL", url_of_nothing(database_).c_str(), 1);
  const bool updates = std::getenv("ZELDB_UPDATE_GOLDEN") != nullptr;
  std::string actual = databases + "\n";
  for (const Block& block : blocks) {
    const std::string printed = replay(block.command);
    if (!updates) {
      EXPECT_EQ(printed, block.printed) << block.place << ": " << kPrompt << block.command;
    }
    actual += "\n" + kPrompt + block.command + "\n" + printed;
  }
  if (updates) std::ofstream(fs::path(ZELDB_GOLDEN) / (name + ".txt")) << actual;
}

INSTANTIATE_TEST_SUITE_P(All, Golden,
                         testing::Combine(testing::ValuesIn(engines()),
                                          testing::ValuesIn(names_in(ZELDB_GOLDEN, ".txt"))),
                         [](const auto& parameter) {
                           return name_of(std::get<Engine>(parameter.param)) + "_" +
                                  std::get<std::string>(parameter.param);
                         });

// Shown in fleet_test.cpp.
const std::string kOfExports = "diff-fleet";

// Of each view the transcripts show rows, and the database that is empty or away.
TEST(GoldenFiles, ShowEveryView) {
  std::map<std::string, std::set<std::string>> seen;
  const std::regex row("\n\\{\"(?!format_version)");
  for (const std::string& name : names_in(ZELDB_GOLDEN, ".txt")) {
    const auto [databases, blocks] = transcript_of(name);
    for (const auto& [place, command, printed] : blocks) {
      const bool has_parts = databases == "# sample" || databases == "# odd";
      if (!has_parts || std::regex_search(printed, row))
        seen[view_of(command)].insert(has_parts ? "# sample" : databases);
    }
  }
  for (const auto& [view, definition] : schema().at("$defs").items()) {
    EXPECT_TRUE(seen[view].contains("# sample") || view == "retimer" || view == kOfExports) << view;
    const bool needs_no_database =
        view == kOfExports || std::regex_match(view, std::regex("cards|retimer|decode-vpd.*|columns.*"));
    if (needs_no_database) continue;
    EXPECT_TRUE(seen[view].contains("# empty")) << view;
    EXPECT_TRUE(seen[view].contains("# away")) << view;
  }
}

}  // namespace
}  // namespace zeldb_test
