// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <poll.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>

#include "tests/cli/sample.h"
#include "tests/support/mariadb_server.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

class Watch : public DatabaseTest {
 protected:
  // Of the databases of ZEL_DB_URL.
  void start() {
    load_sample();
    const std::string command =
        "echo $$; exec env VREL_LOG=/dev/null ZEL_PLATFORM_DIR=" + with_samples("SAMPLES") +
        " " ZELDB_COMMAND_LINE " watch --json --mask --exec 'cat >>" + told_ + "' 2>&1";
    output_ = popen(command.c_str(), "r");  // NOLINT(cert-env33-c): the line is this file's own
    ASSERT_NE(output_, nullptr);
    pid_ = std::stoi(line());
    // It has to have looked once before there is a change.
    for (int life = 40; !has_line(); life = 81 - life)
      database.run("UPDATE AimDisks SET RemainLife=" + std::to_string(life) + " WHERE Location='Bay 1'");
  }

  void TearDown() override {
    if (output_ == nullptr) return;
    kill(pid_, SIGTERM);
    pclose(output_);
  }

  std::string line() {
    char text[4096] = "";
    return std::fgets(text, sizeof(text), output_) != nullptr ? text : "";
  }
  bool has_line() const {
    pollfd file{.fd = fileno(output_), .events = POLLIN, .revents = 0};
    return poll(&file, 1, 300) == 1;
  }
  // The lines up to this one; all of them if it does not come.
  std::string lines_until(const std::string& part) {
    std::string all;
    for (std::string text = line(); !text.empty(); text = line()) {
      all += text;
      if (text.find(part) != std::string::npos) return all;
    }
    ADD_FAILURE() << part << " is not in " << all;
    return all;
  }

  const std::string told_ = database.folder() + "/told";
  FILE* output_ = nullptr;
  pid_t pid_ = -1;
};
ZELDB_ON_EVERY_ENGINE(Watch);

TEST_P(Watch, TellsEachChangeUntilASignalComes) {
  start();
  std::string text = line();
  std::string all = text;
  const Json change = Json::parse(text);
  EXPECT_EQ(change.at("change"), "changed");
  EXPECT_EQ(change.at("place"), "Bay 1");
  EXPECT_EQ(change.at("columns").size(), 1U) << text;
  EXPECT_TRUE(change.at("columns").at("RemainLife").contains("was")) << text;
  database.run("UPDATE AimDisks SET SerialNo='another' WHERE Location='Bay 0'");
  all += lines_until("\"SerialNo\":{\"was\":\"serial-");
  database.run("DELETE FROM Memory WHERE SlotNo=19");
  all += lines_until("\"change\":\"removed\",\"listing\":\"memory\",\"place\":\"DIMM 19 19 0\"");
  kill(pid_, SIGTERM);
  while (!(text = line()).empty()) all += text;
  EXPECT_EQ(pclose(std::exchange(output_, nullptr)), 0);
  EXPECT_EQ(content_of(told_), all);
}

// Another file under the name of the one that is watched; a server that goes and comes back.
TEST_P(Watch, SurvivesWhatItWatches) {
  const char* const parent = std::getenv("ZELDB_TEST_MARIADB_FOLDER");
  const fs::path folder = parent != nullptr ? parent : "";
  std::optional<MariaDbServer> server;
  if (GetParam() == Engine::MariaDb) {
    server.emplace(folder, folder / "pristine");
    server->start({"--skip-networking"});
    setenv("ZEL_DB_URL", ("mariadb://root@localhost/?socket=" + server->socket()).c_str(), 1);
    ASSERT_EQ(run_zeldb({"init"}).exit_status, 0);
  }
  start();
  // The second file in its place has the data version of the first.
  for (const char* slot : {"19", "18"}) {
    const std::string removal = std::string("DELETE FROM Memory WHERE SlotNo=") + slot;
    if (server) {
      server->kill();
      lines_until("zeldb: watch: the databases cannot be reached, waiting for them\n");
      server->start({"--skip-networking"});
      database.run(removal);
    } else {
      const std::string file = database.folder() + "/dmdb.sqlite";
      const std::string other = database.folder() + "/other.sqlite";
      database.run("VACUUM INTO '" + other + "'");
      const std::string change = database.folder() + "/change.sql";
      std::ofstream(change) << removal;
      ASSERT_EQ(run_zeldb({"load", change}, {"ZEL_DB_URL=sqlite://" + other}).exit_status, 0);
      for (const char* log : {"-wal", "-shm"}) fs::remove(file + log);
      fs::rename(other, file);
    }
    lines_until(std::string("\"change\":\"removed\",\"listing\":\"memory\",\"place\":\"DIMM ") + slot);
  }
  setenv("ZEL_DB_URL", database.url().c_str(), 1);
}

}  // namespace
}  // namespace zeldb_test
