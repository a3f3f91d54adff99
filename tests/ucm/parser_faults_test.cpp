// SPDX-License-Identifier: Apache-2.0
//
// Faults while the parser stores a hundred settings in batches: the outcome is that of storing one after the
// other.
#include <nlohmann/json.hpp>
#include <sys/resource.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <thread>

#include "tests/platform/zel_db/client.h"
#include "tests/support/run_program.h"

namespace zeldb_test {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;

// Of the size of files, for the programs that are started.
struct Limit {
  explicit Limit(rlim_t size) {
    std::signal(SIGXFSZ, SIG_IGN);
    set(size);
  }
  Limit(const Limit&) = delete;
  Limit& operator=(const Limit&) = delete;
  ~Limit() { set(RLIM_INFINITY); }
  static void set(rlim_t size) {
    const rlimit limit{size, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
};

class ParserFaults : public DatabaseTest {
 protected:
  static std::string id(int number) { return "A-1.S" + std::to_string(100 + number); }
  // A run that finds these flags; with at most so many bytes in a file.
  Outcome parse(int flags, rlim_t room = RLIM_INFINITY) const {
    json attributes = json::array();
    for (int number = 0; number < 100; ++number)
      attributes.push_back(
          {{"AttributeName", id(number).substr(4)}, {"Bus", number}, {"Type", 5}, {"Flags", flags}});
    const json collection = {{"name", "A-1"}, {"attributes", attributes}};
    std::ofstream(database.folder() + "/bios.json") << json{{"collections", json::array({collection})}};
    std::filesystem::remove(log_);
    const Limit limit(room);
    return run_program({.argv = {ZELDB_PARSER},
                        .env = {"VREL_LOG=" + log_, "ZEL_PLATFORM_DIR=" + database.folder(),
                                "ZELDB_SHIM_TMP=" + database.folder()},
                        .preload = ZELDB_PRELOAD});
  }
  // The run has stored the first so many settings, and says once that the next one could not be.
  void expect_stored(int count, const Outcome& outcome) const {
    EXPECT_EQ(outcome.exit_status, count < 100 ? 255 : 0) << outcome.out << outcome.err;
    EXPECT_EQ(database.text("SELECT COUNT(*), MAX(SettingID) FROM PCISetting"),
              std::to_string(count) + "," + (count != 0 ? id(count - 1) : "NULL"));
    const std::string text = content_of(log_);
    const std::string line = "Failed to insert ZELDB_PCI_Config_Setting info: ZELDB_PCI_Setting_ID=";
    const std::string cause = "error: Failed to insert record";
    EXPECT_EQ(text.find(line + (count < 100 ? id(count) : "")), text.rfind(line)) << text;
    EXPECT_EQ(text.find(cause), text.rfind(cause)) << text;
  }
  std::string await(const std::string& select) const {
    for (int tries = 0; tries < 200; ++tries) {
      std::this_thread::sleep_for(150ms);  // the server remembers its answer for a while
      if (std::string found = database.text(select); !found.empty()) return found;
    }
    return "0";
  }

  const std::string log_ = database.folder() + "/log";
};
ZELDB_ON_EVERY_ENGINE(ParserFaults);

TEST_P(ParserFaults, NoRoomInTheMiddle) {
  if (GetParam() != Engine::Sqlite) GTEST_SKIP() << "the server's files are not the parser's";
  bool is_within_batch = false;
  for (rlim_t room = 4000; room <= 56000; room += 3000) {
    database.run_all({"DELETE FROM PCISetting", "PRAGMA wal_checkpoint(TRUNCATE)"});
    const Outcome outcome = parse(1, room);
    const int count = std::stoi(database.text("SELECT COUNT(*) FROM PCISetting"));
    expect_stored(count, outcome);
    is_within_batch = is_within_batch || (count % 64 != 0 && count < 100);
  }
  EXPECT_TRUE(is_within_batch);
}

// The other one holds a lock that a batch needs, and then wants one that the batch would have.
TEST_P(ParserFaults, AnotherWriter) {
  expect_stored(100, parse(1));
  const Client other;
  const auto change = [&](int number) {
    return raw(other, "UPDATE PCISetting SET Flags=9 WHERE SettingID='" + id(number) + "'");
  };
  EXPECT_EQ(raw(other, "BEGIN"), "");
  EXPECT_EQ(change(40), "");
  const bool waits = GetParam() == Engine::MariaDb;
  auto run = std::async(std::launch::async, [&] { return parse(2); });
  if (waits) await("SELECT 1 FROM information_schema.INNODB_TRX WHERE trx_state='LOCK WAIT'");
  EXPECT_EQ(change(10), "");
  EXPECT_EQ(raw(other, "COMMIT"), "");
  expect_stored(100, run.get());
  EXPECT_EQ(database.text("SELECT SettingID FROM PCISetting WHERE Flags<>2"), waits ? id(10) : "");
}

TEST_P(ParserFaults, AKilledConnection) {
  if (GetParam() != Engine::MariaDb) GTEST_SKIP() << "there is no connection";
  database.run(
      "CREATE TRIGGER Hold BEFORE INSERT ON PCISetting FOR EACH ROW "
      "SET NEW.SettingName=IF(NEW.SettingID='" +
      id(40) + "' AND SLEEP(60), NULL, NEW.SettingName)");
  auto run = std::async(std::launch::async, [&] { return parse(1); });
  std::string killed = "0";
  for (int kills = 0; kills < 2; ++kills) {
    killed =
        await("SELECT ID FROM information_schema.PROCESSLIST WHERE STATE='User sleep' AND ID<>" + killed);
    database.run("KILL " + killed);
  }
  expect_stored(40, run.get());
}

}  // namespace
}  // namespace zeldb_test
