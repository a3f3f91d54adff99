// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/cli/sample.h"
#include "tests/cli/views.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& content) {
  std::ofstream(path, std::ios::binary) << content;
}

class Snapshot : public DatabaseTest {
 protected:
  void SetUp() override {
    for (const fs::path& made : {platform_, temporary_}) fs::create_directory(made);
    load_sample();
  }

  Outcome zeldb(const std::vector<std::string>& arguments, const std::string& url = {}) const {
    return run_zeldb(arguments,
                     {"ZEL_PLATFORM_DIR=" + (url.empty() ? platform_.string() : "/nonexistent"),
                      "TMPDIR=" + temporary_.string(), "ZEL_DB_URL=" + (url.empty() ? database.url() : url)});
  }
  void export_to(const fs::path& file, std::vector<std::string> options = {}) const {
    options.insert(options.begin(), {"export", file});
    const Outcome outcome = zeldb(options);
    ASSERT_EQ(outcome.exit_status, 0) << outcome.err;
    EXPECT_EQ(outcome.out + outcome.err, "");
  }
  std::string text_of(const fs::path& exported, const std::string& select) const {
    const Redirected redirected(exported, database);
    return database.text(select);
  }
  std::vector<std::string> text_rows(const fs::path& exported, const std::string& select) const {
    const Redirected redirected(exported, database);
    std::vector<std::string> texts;
    for (const auto& row : database.rows(select)) texts.push_back(row[0].value_or(""));
    return texts;
  }
  void change(const fs::path& exported, const std::string& statement) const {
    const Redirected redirected(exported, database);
    database.run(statement);
  }

  const fs::path folder_ = database.folder();
  const fs::path platform_ = folder_ / "platform";
  const fs::path temporary_ = folder_ / "tmp";
  const fs::path file_ = folder_ / "export.db";
};
ZELDB_ON_EVERY_ENGINE(Snapshot);

// Of each view, the first command that a transcript of the sample shows.
std::map<std::string, std::string> commands_of_views() {
  std::map<std::string, std::string> commands;
  for (const std::string& name : names_in(ZELDB_GOLDEN, ".txt")) {
    const auto [databases, blocks] = transcript_of(name);
    if (databases != "# sample") continue;
    for (const Block& block : blocks) {
      const std::string view = view_of(block.command);
      if (schema().at("$defs").contains(view)) commands.try_emplace(view, block.command);
    }
  }
  return commands;
}

TEST_P(Snapshot, ShowsWhatTheControllerShows) {
  const bool is_signed = database.kind() == Engine::Sqlite;  // keeps all bits, with a sign
  database.run(
      "INSERT INTO Memory (SlotNo, DevLocator, SerialNo, PartNo, MemSize, Manufacturer, TypeDetail, "
      "Capacity) "
      "VALUES (40, 'D\xC4M \x01 ''\xFF', '', NULL, -5, 'Intel', 4096, " +
      std::string(is_signed ? "-1" : "18446744073709551615") + ")");
  database.run(
      "INSERT INTO PCISetting (SettingID, PfaKey, Flags, Choices) VALUES ('Long.Choices', 5120, 2, '" +
      std::string(2000, 'c') + "')");
  database.run(
      "INSERT INTO propertiesDCTbl (propName, propValue) VALUES ('/blob', x'00FF0080270A'), ('/null', NULL)",
      "propertiesdb");
  write(platform_ / "bios.json", "{ broken \xFF");
  write(platform_ / "platform.json", "{\"platform_flags\": 32768}");
  export_to(file_);

  const std::string odd =
      "SELECT hex(DevLocator), hex(SerialNo), PartNo, MemSize FROM Memory WHERE SlotNo=40";
  EXPECT_EQ(text_of(file_, odd), "44C44D20012027FF,,NULL,-5");
  EXPECT_EQ(text_of(file_,
                    "SELECT hex(propValue), propValue IS NULL FROM propertiesDCTbl "
                    "WHERE propName IN ('/blob', '/null')"),
            "00FF0080270A,0;,1");
  // A file that is no JSON may hold anything, and is of no use.
  EXPECT_EQ(text_of(file_, "SELECT Name, hex(Content) FROM ZeldbFiles WHERE Name='bios.json'"), "bios.json,");

  const auto commands = commands_of_views();
  EXPECT_EQ(commands.size() + 1, schema().at("$defs").size());  // all but that of many exports
  for (const auto& [view, command] : commands) {
    std::vector<std::string> words = words_of(command);
    words.emplace_back("--json");
    const Outcome live = zeldb(words);
    words.insert(words.end(), {"--from", file_});
    const Outcome exported = zeldb(words, url_of_nothing(database));
    EXPECT_EQ(exported.out, live.out) << view;
    EXPECT_EQ(exported.exit_status, live.exit_status) << view;
    EXPECT_EQ(live.err, exported.err) << view;
  }
  EXPECT_TRUE(fs::is_empty(temporary_));
}

// By way of each engine.
TEST_P(Snapshot, IsImportedWholeOrNotAtAll) {
  const bool is_signed = database.kind() == Engine::Sqlite;
  database.run(
      "INSERT INTO Memory (SlotNo, DevLocator, SerialNo, PartNo, MemSize) VALUES "
      "(40, 'D\xC4M \x01 ''\\ \xFF', '', NULL, -5)");
  database.run("INSERT INTO Memory (SlotNo, DevLocator, Capacity) VALUES (41, 'x', " +
               std::string(is_signed ? "-1" : "18446744073709551615") + ")");
  database.run(
      "INSERT INTO propertiesDCTbl (propName, propValue) VALUES ('/blob', x'00FF0080270A'), ('/null', NULL)",
      "propertiesdb");
  export_to(file_);
  const auto content = [this](const fs::path& exported) {
    std::vector<Rows> tables;
    for (const std::string& name :
         text_rows(exported, "SELECT name FROM sqlite_schema WHERE type='table' AND name<>'ZeldbExport'")) {
      const Redirected redirected(exported, database);
      tables.push_back(database.rows("SELECT * FROM " + name));
    }
    return tables;
  };
  const std::vector<Rows> whole = content(file_);
  EXPECT_GT(whole.size(), 20U);
  for (const Engine engine : engines()) {
    if (engine == Engine::MariaDb && std::getenv("ZELDB_TEST_MARIADB") == nullptr) continue;
    const Database other(engine);
    const auto import = [&](std::vector<std::string> options = {}) {
      options.insert(options.begin(), {"import", file_});
      return zeldb(options, other.url());
    };
    const auto count = [&] { return other.text("SELECT count(*) FROM Memory"); };
    other.run("CREATE UNIQUE INDEX Narrow ON AimDisks (Presence)");
    expect_failure(import(), 1, "table AimDisks: the row with _id ");
    EXPECT_EQ(count(), "0");
    other.run("INSERT INTO Memory (SlotNo, DevLocator) VALUES (1, 'mine')");
    expect_failure(import(), 1, "Memory has rows already (--replace");
    expect_failure(import({"--replace"}), 1, "table AimDisks");
    EXPECT_EQ(count(), "1");
    other.run(engine == Engine::Sqlite ? "DROP INDEX Narrow" : "DROP INDEX Narrow ON AimDisks");
    const Outcome done = import({"--replace"});
    EXPECT_EQ(done.exit_status, 0) << done.err;
    EXPECT_EQ(done.out + done.err, "");
    const fs::path again = folder_ / ("again-" + name_of(engine));
    ASSERT_EQ(
        run_zeldb({"export", again}, {"ZEL_DB_URL=" + other.url(), "ZEL_PLATFORM_DIR=" + platform_.string()})
            .exit_status,
        0);
    EXPECT_EQ(content(again), whole) << name_of(engine);
  }
  setenv("ZEL_DB_URL", database.url().c_str(), 1);
  expect_failure(zeldb({"load", with_samples("SAMPLES/drives.sql")}), 1, "is in the database already");
  database.run("INSERT INTO AimDisks (Location) VALUES ('mine')");
  const std::string drives = "SELECT count(*) FROM AimDisks WHERE Location='mine'";
  expect_failure(zeldb({"load", "--replace", "/nonexistent"}), 1, "cannot read");
  EXPECT_EQ(database.text(drives), "1");
  EXPECT_EQ(zeldb({"load", "--replace", with_samples("SAMPLES/drives.sql")}).exit_status, 0);
  EXPECT_EQ(database.text(drives), "0");
  EXPECT_NE(database.text("SELECT count(*) FROM propertiesDCTbl", "propertiesdb"), "0");
  change(file_, "UPDATE ZeldbSchema SET Version=99");
  expect_failure(zeldb({"import", "--replace", file_}), 1, "schema version 99");
  change(file_, "DROP TABLE ZeldbSchema");
  EXPECT_EQ(zeldb({"import", "--replace", file_}).exit_status, 0);
  EXPECT_TRUE(fs::is_empty(temporary_));
}

TEST_P(Snapshot, IsAWholePrivateFileOrNone) {
  export_to(file_);
  EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0600));
  const std::string first = content_of(file_);
  expect_failure(zeldb({"export", file_}), 1, "--force");
  expect_failure(zeldb({"export", "--force", folder_}), 1, "no regular file");
  expect_failure(zeldb({"export", folder_ / "none" / "file"}), 1, "No such file");
  write(platform_ / "bios.json", "[");
  expect_failure(zeldb({"export", "--force", "--mask", file_}), 1, "bios.json");
  fs::remove(platform_ / "bios.json");
  database.run("DROP TABLE SensorSlotMap");
  expect_failure(zeldb({"export", "--force", file_}), 1, "SensorSlotMap");
  EXPECT_EQ(content_of(file_), first);
  const fs::path copy = folder_ / "copy %41?#.db";
  export_to(copy, {"--from", file_});
  export_to(file_, {"--force", "--from", copy});
  EXPECT_EQ(content_of(file_).size(), first.size());
  for (const auto& entry : fs::directory_iterator(folder_))
    EXPECT_NE(entry.path().stem().string().substr(0, 9), "export.db") << entry.path();
  EXPECT_TRUE(fs::is_empty(temporary_));
}

std::set<std::string> names_in_folder(const fs::path& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename());
  return names;
}

// Two ends of an export: no room for the file, or a signal while it is being written.
TEST_P(Snapshot, LeavesNothingWhenItEnds) {
  const fs::path to = folder_ / "to";
  fs::create_directory(to);
  const std::string zeldb_line = "TMPDIR=" + temporary_.string() + " exec " ZELDB_COMMAND_LINE " ";
  for (const auto& [blocks, command] :
       {std::pair("0", "export"), {"8", "export"}, {"40", "export"}, {"100", "export"}, {"40", "report"}}) {
    const Outcome outcome = run_program({.argv = {"sh", "-c",
                                                  "ulimit -f " + std::string(blocks) + "; " + zeldb_line +
                                                      command + " " + (to / "file").string()},
                                         .env = {"VREL_LOG=/dev/null"}});
    EXPECT_EQ(outcome.exit_status, 1) << blocks << outcome.err;
    EXPECT_EQ(outcome.signal, 0) << blocks;
    EXPECT_EQ(names_in_folder(to), std::set<std::string>()) << blocks;
  }
  export_to(file_);
  // At each of many moments, from the first system call to the end of the command.
  size_t ended = 0;
  for (int moment = 0; moment < 25; ++moment) {
    for (const std::string& command :
         {"export " + (to / "file").string(), "slots --from " + file_.string() + " >/dev/null"}) {
      const std::string line = zeldb_line + command + " & sleep 0.0" + (moment < 10 ? "0" : "") +
                               std::to_string(moment) + "; kill -TERM $!; wait $!";
      const Outcome outcome =
          run_program({.argv = {"sh", "-c", "(" + line + ")"}, .env = {"VREL_LOG=/dev/null"}});
      if (outcome.exit_status == 143) ++ended;
      fs::remove(to / "file");
      EXPECT_EQ(names_in_folder(to), std::set<std::string>()) << line;
      EXPECT_TRUE(fs::is_empty(temporary_)) << line;
    }
  }
  EXPECT_GT(ended, 0U);
}

// A pipe that somebody has put where a file was is not waited for.
TEST_P(Snapshot, WaitsForNoPipe) {
  const fs::path pipe = folder_ / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"diff", pipe}, {"slots", "--from", pipe}, {"decode-vpd", pipe}})
    expect_failure(zeldb(arguments), arguments[0] == "diff" ? 2 : 1, "pipe: is no regular file");
  fs::rename(pipe, platform_ / "bios.json");
  expect_failure(zeldb({"export", file_}), 1, "bios.json: is no regular file");
}

TEST_P(Snapshot, IsReadWhenItIsOne) {
  export_to(file_);
  const std::string good = content_of(file_);
  const fs::path bad = folder_ / "bad.db";
  write(bad, "no database");
  expect_failure(zeldb({"slots", "--from", bad}), 1, "is no export of zeldb");
  write(bad, good.substr(0, 6000));
  expect_failure(zeldb({"slots", "--from", bad}), 1, "bad.db: ");
  write(bad, good);
  change(bad, "UPDATE ZeldbExport SET FormatVersion = 2");
  expect_failure(zeldb({"slots", "--from", bad}), 1, "written by a newer zeldb (format 2");
  change(bad, "DELETE FROM ZeldbExport");
  expect_failure(zeldb({"slots", "--from", bad}), 1, "is no export of zeldb");
  change(bad, "DROP TABLE ZeldbExport");
  expect_failure(zeldb({"slots", "--from", bad}), 1, "is no export of zeldb");
  change(bad, "CREATE TABLE ZeldbExport (Version INTEGER)");
  expect_failure(zeldb({"slots", "--from", bad}), 1, "no such column: FormatVersion");
  expect_failure(zeldb({"slots", "--from", "/proc/self/mem"}), 1, "/proc/self/mem: Input/output error");
  expect_failure(zeldb({"slots", "--from", temporary_}), 1, "tmp: has no files");
  expect_failure(zeldb({"slots", "--from", folder_ / "none"}), 1, "none: No such file");

  // Of a version with fewer tables and columns, and with a file that would be written elsewhere.
  const fs::path older = folder_ / "older.db";
  write(older, good);
  for (const char* table : {"VPDs", "SensorSlotMap"}) change(older, std::string("DROP TABLE ") + table);
  change(older, "CREATE TABLE SensorSlotMap (Unheard INTEGER)");
  change(older, "ALTER TABLE ZeldbExport DROP COLUMN Written");
  change(older, "ALTER TABLE PCIAdapter DROP COLUMN NodeNo");
  change(older, "INSERT INTO ZeldbFiles VALUES ('../escaped', x'78')");
  const Outcome slots = zeldb({"slots", "--from", older});
  EXPECT_EQ(slots.exit_status, 0) << slots.err;
  EXPECT_NE(slots.out.find("Onboard SATA controller"), std::string::npos) << slots.out;
  EXPECT_FALSE(fs::exists(folder_ / "escaped"));
  EXPECT_TRUE(fs::is_empty(temporary_));
  expect_failure(run_zeldb({"slots", "--from", older}, {"TMPDIR=/proc"}), 1, "/proc/zeldb-");
  fs::remove(temporary_);
  expect_failure(zeldb({"slots", "--from", older}), 1,
                 "zeldb: no folder for temporary files (TMPDIR): No such");
}

std::string lower(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

std::string in_hexadecimal(const std::string& text) {
  std::string digits;
  for (const char c : text) {
    digits += "0123456789ABCDEF"[(c >> 4) & 0xF];
    digits += "0123456789ABCDEF"[c & 0xF];
  }
  return digits;
}

// A word of its own in each text column of each table, and in each text of each file.
TEST_P(Snapshot, MasksAllButWhatIsListed) {
  std::map<std::string, std::string> columns;  // by their words
  std::set<std::string> listed;
  std::istringstream unmasked(zeldb({"columns", "--unmasked", "--raw", "--no-headings"}).out);
  for (std::string line; std::getline(unmasked, line);) {
    const size_t end = line.find('\t');
    listed.insert(line.substr(0, end));
    EXPECT_GT(line.size(), end + 10) << line;
  }
  // Written by firmware, or a list of choices: addresses and what is known from elsewhere are replaced in it.
  for (const char* column : {"Choices", "Message", "UpdateErrString"})
    EXPECT_TRUE(listed.insert(column).second);
  const auto planted = [&columns](const std::string& column) {
    std::string word = "zq" + std::to_string(1000 + columns.size()) + "p";
    columns[word] = column;
    return word;
  };
  export_to(file_);
  for (const auto& table : text_rows(file_,
                                     "SELECT name FROM sqlite_schema WHERE type='table' AND name NOT IN "
                                     "('ZeldbExport', 'ZeldbFiles', 'ZeldbSchema', 'sqlite_sequence')")) {
    std::string names, values;
    for (const auto& column :
         text_rows(file_, "SELECT name FROM pragma_table_info('" + table + "') WHERE type='TEXT'")) {
      names += (names.empty() ? "" : ", ") + column;
      values += (values.empty() ? "'" : ", '") + planted(column) + "'";
    }
    if (names.empty()) continue;
    if (table == "PCISetting") names += ", Type", values += ", 4";
    if (table == "propertiesDCTbl")
      names += ", propValue", values += ", x'" + in_hexadecimal("s" + planted("propValue")) + "'";
    database.run("INSERT INTO " + table + " (" + names + ") VALUES (" + values + ")",
                 table == "propertiesDCTbl" ? "propertiesdb" : "dmdb");
  }
  EXPECT_GT(columns.size(), 80U);
  const std::string bios = planted("SettingID") + "\",\"attributes\":[{\"Type\":4,\"AttributeName\":\"" +
                           planted("SettingID") + "\",\"current\":\"" + planted("current") +
                           "\",\"pending\":\"" + planted("pending") + "\",\"Defvalue\":\"" +
                           planted("Defvalue") + "\",\"ShortDesc\":\"" + planted("ShortDesc") +
                           "\",\"Unheard\":\"" + planted("Unheard");
  write(platform_ / "bios.json", "{\"collections\":[{\"name\":\"" + bios + "\"}]}]}");
  write(platform_ / "platform.json", "{\"host\":\"" + planted("host") + "\"}");
  database.run(
      "INSERT INTO propertiesDCTbl (propName, propValue) VALUES ('/gpu/uuid', "
      "x'735345433132333435004C454654')",
      "propertiesdb");
  export_to(file_, {"--force", "--mask"});
  const std::string content = content_of(file_);
  for (const auto& [word, column] : columns)
    EXPECT_EQ(content.find(word) != std::string::npos, listed.contains(column)) << column;
  // The end of a text stays, the bytes after it do not.
  EXPECT_EQ(text_of(file_,
                    "SELECT length(propValue), hex(propValue) LIKE '%00' FROM propertiesDCTbl WHERE "
                    "propName='/gpu/uuid'"),
            "11,1");
}

TEST_P(Snapshot, MasksWhateverIdentifies) {
  database.run(
      "INSERT INTO DPUEvents (Slot, GenID, Message) VALUES (12, 'X', 'mt2200001 has 02:00:5e:20:00:77 and "
      "2001:db8::17')");
  database.run("UPDATE PCISetting SET CurrentValue='was SP2200001, 198.51.100.7' WHERE PfaKey=5120");
  write(platform_ / "bios.json",
        "{\"collections\":[{\"name\":\"A\",\"attributes\":[{\"AttributeName\":\"b\",\"Choices\":"
        "\"50:06:01:60:3b:a0:11:22\",\"current\":\"C1A0F3B200D41\",\"pending\":\"203.0.113.9\"}]}]}");
  std::vector<std::string> originals = {"02:00:5e:20:00:77", "2001:db8", "198.51", "50:06:01", "203.0"};
  for (const char* select :
       {"SerialNo FROM VPDs", "UUID FROM VPDs", "SupplierSN FROM VPDs", "FoDUid FROM PCIMisc",
        "GPUChipSerialNumber FROM PCIGPUChip", "GPUChipUniqueID FROM PCIGPUChip", "SerialNo FROM Memory",
        "PermanentAddress FROM PCIPhysicalPort", "PermanentAddress FROM PCILogicalPort",
        "NetworkAddresses FROM PCILogicalPort", "FCoEPermanentAddress FROM PCILogicalPort",
        "SerialNo FROM Processor", "AssetTag FROM Processor", "SerialNo FROM AimDisks",
        "SupplierSN FROM NVMeDrives", "UUID FROM NVMeDrives"}) {
    for (const auto& row : database.rows(std::string("SELECT ") + select)) {
      const std::string value = row[0].value_or("");
      if (value.find_first_of("0123456789") != std::string::npos) originals.push_back(lower(value));
    }
  }
  ASSERT_GT(originals.size(), 60U);
  export_to(file_, {"--mask"});
  const std::string content = lower(content_of(file_));
  for (const std::string& original : originals)
    EXPECT_EQ(content.find(original), std::string::npos) << original;

  const std::string shared =
      "SELECT count(*) FROM VPDs v JOIN PCIGPUChip c ON v.SerialNo=c.GPUChipSerialNumber";
  EXPECT_EQ(text_of(file_, shared), "1");
  EXPECT_EQ(database.text(shared), "1");
  for (const char* view : {"slots", "ports", "disks", "gpus"}) {
    const std::string live = zeldb({view, "--raw"}).out;
    const std::string masked = zeldb({view, "--raw", "--from", file_}).out;
    EXPECT_EQ(std::ranges::count(masked, '\n'), std::ranges::count(live, '\n')) << view;
  }
}

}  // namespace
}  // namespace zeldb_test
