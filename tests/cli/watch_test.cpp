// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <poll.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <utility>

#include "tests/cli/sample.h"

namespace zeldb_test {
namespace {

using Json = nlohmann::json;

class Watch : public DatabaseTest {
 protected:
  void SetUp() override {
    load_sample();
    const std::string command =
        "echo $$; exec env VREL_LOG=/dev/null ZEL_PLATFORM_DIR=" + with_samples("SAMPLES") +
        " " ZELDB_COMMAND_LINE " watch --json --mask --exec 'cat >>" + told_ + "' 2>&1";
    output_ = popen(command.c_str(), "r");  // NOLINT(cert-env33-c): the line is this file's own
    ASSERT_NE(output_, nullptr);
    pid_ = std::stoi(line());
  }

  void TearDown() override {
    if (output_ == nullptr) return;
    kill(pid_, SIGKILL);
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

  const std::string told_ = database.folder() + "/told";
  FILE* output_ = nullptr;
  pid_t pid_ = -1;
};
ZELDB_ON_EVERY_ENGINE(Watch);

TEST_P(Watch, TellsEachChangeUntilASignalComes) {
  // It has to have looked once before there is a change.
  for (int life = 40; !has_line(); life = 81 - life)
    database.run("UPDATE AimDisks SET RemainLife=" + std::to_string(life) + " WHERE Location='Bay 1'");
  std::string text = line();
  std::string all = text;
  Json change = Json::parse(text);
  EXPECT_EQ(change.at("change"), "changed");
  EXPECT_EQ(change.at("place"), "Bay 1");
  EXPECT_EQ(change.at("columns").size(), 1U) << text;
  EXPECT_TRUE(change.at("columns").at("RemainLife").contains("was")) << text;
  database.run("UPDATE AimDisks SET SerialNo='another' WHERE Location='Bay 0'");
  database.run("DELETE FROM Memory WHERE SlotNo=19");
  std::string seen;
  bool is_removed = false;
  while (!is_removed || seen.empty()) {
    text = line();
    ASSERT_NE(text, "");
    all += text;
    change = Json::parse(text);
    if (change.contains("columns") && change.at("columns").contains("SerialNo"))
      seen = change.at("columns").at("SerialNo").at("is");
    if (change.at("listing") == "memory") {
      is_removed = change.at("change") == "removed";
      EXPECT_EQ(change.at("place"), "DIMM 19 19 0");
    }
  }
  EXPECT_TRUE(seen.starts_with("serial-")) << seen;
  kill(pid_, SIGTERM);
  while (!(text = line()).empty()) all += text;
  EXPECT_EQ(pclose(std::exchange(output_, nullptr)), 0);
  EXPECT_EQ(content_of(told_), all);
}

}  // namespace
}  // namespace zeldb_test
