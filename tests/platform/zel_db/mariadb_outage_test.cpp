// SPDX-License-Identifier: Apache-2.0
//
// Servers that refuse, vanish, come back and are full.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <list>
#include <set>
#include <thread>

#include "tests/platform/zel_db/client.h"
#include "tests/support/mariadb_server.h"
#include "tests/support/run_program.h"

namespace zeldb_test {
namespace {

using namespace std::chrono_literals;

class MariaDbOutage : public testing::Test {
 protected:
  void SetUp() override {
    const char* const folder = std::getenv("ZELDB_TEST_MARIADB_FOLDER");
    if (folder == nullptr) GTEST_SKIP() << "no MariaDB server: run the tests under with_mariadb";
    log_ = std::filesystem::path(testing::TempDir()) / ("outage." + std::to_string(getpid()));
    setenv("VREL_LOG", log_.c_str(), 1);
    parent_ = folder;
    in_child([] { return true; });  // leaves no connection of another test
  }
  void TearDown() override {
    unsetenv("VREL_LOG");
    std::filesystem::remove(log_);
  }

  // Running, with the tables; the URL is in the environment.
  MariaDbServer& server(const std::vector<std::string>& options = {}) {
    MariaDbServer& made = servers_.emplace_back(parent_, parent_ / "pristine");
    std::vector<std::string> all = {"--skip-networking"};
    all.insert(all.end(), options.begin(), options.end());
    made.start(all);
    use("root@localhost/?socket=" + made.socket());
    char error[256] = "";
    EXPECT_EQ(zel_db_create(nullptr, error, sizeof error), 0) << error << content_of(made.folder() / "log");
    return made;
  }
  static void use(const std::string& rest) { setenv("ZEL_DB_URL", ("mariadb://" + rest).c_str(), 1); }
  static std::string insert(_zel_db_handle_t* handle, int slot) {
    return raw(handle, "insert into PCIAdapter (SlotNo) values (" + std::to_string(slot) + ")");
  }
  // The lines of the log since the last call.
  std::string log() const {
    std::string text = content_of(log_);
    std::filesystem::remove(log_);
    return text;
  }
  // One line that has all the words.
  void expect_one_line(std::initializer_list<const char*> words) const {
    const std::string text = log();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    for (const char* word : words) EXPECT_NE(text.find(word), std::string::npos) << word << " in " << text;
  }

  std::filesystem::path parent_;
  std::filesystem::path log_;
  std::list<MariaDbServer> servers_;
};

TEST_F(MariaDbOutage, WhoIsRefusedGetsNoHandleAndOneLine) {
  MariaDbServer& made = server();
  const std::string at = "@localhost/?socket=" + made.socket();
  const std::tuple<std::string, const char*> cases[] = {
      {"root:wrong" + at, "Access denied for user 'root'"},
      {"nobody" + at, "Access denied for user 'nobody'"},
      {"root" + at + "&prefix=other_", "Unknown database 'other_dmdb'"},
      {"root@localhost/?socket=" + made.socket() + "x", "Can't connect to local server through socket"},
      {"root@127.0.0.1:" + std::to_string(made.port()) + "/", "Can't connect to server on '127.0.0.1'"},
  };
  log();
  for (const auto& [url, reason] : cases) {
    use(url);
    in_child([] { return true; });  // leaves no connection here
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(get_dmdb_handle(0, nullptr, 0), nullptr) << url;
      EXPECT_EQ(zel_db_open("localhost", "root", "", "dmdb", 0), nullptr) << url;
    }
    expect_one_line({"cannot open ", "dmdb at ", reason});
  }
  use("root" + at);
  EXPECT_NE(get_dmdb_handle(0, nullptr, 0), nullptr);
}

TEST_F(MariaDbOutage, AKilledServerIsMissedOnceAndFoundAgain) {
  MariaDbServer& made = server();
  _zel_db_handle_t* const inventory = get_dmdb_handle(0, nullptr, 0);
  const Client client;
  ASSERT_EQ(insert(client, 1), "");
  EXPECT_EQ(query(client, "PCIAdapter", "SlotNo", "SlotNo=1"), "1");
  EXPECT_EQ(query(inventory, "PCIAdapter", "SlotNo", "SlotNo=1"), "1");
  log();

  made.kill();
  EXPECT_EQ(insert(client, 2), "status 14");
  EXPECT_EQ(query(client, "PCIAdapter", "SlotNo", "SlotNo=1"), "status 14");
  const std::string text = log();
  EXPECT_NE(text.find("lost the connection to dmdb at localhost ("), std::string::npos) << text;
  EXPECT_NE(text.find("cannot open dmdb at localhost ("), std::string::npos) << text;
  for (int i = 0; i < 3; ++i) EXPECT_EQ(get_dmdb_handle(0, nullptr, 0), nullptr);
  EXPECT_EQ(query(inventory, "PCIAdapter", "SlotNo", "SlotNo=1"), "status 14");
  expect_one_line({"lost the connection to dmdb at localhost ("});

  made.start({"--skip-networking"});
  EXPECT_EQ(query(client, "PCIAdapter", "SlotNo", "SlotNo=1"), "1");
  EXPECT_EQ(get_dmdb_handle(0, nullptr, 0), inventory);
  EXPECT_EQ(query(inventory, "PCIAdapter", "SlotNo", "SlotNo=1"), "1");
  EXPECT_EQ(log(), "");
}

// Between two uses of its statement, which the new server has never heard of.
TEST_F(MariaDbOutage, ARestartGoesUnnoticed) {
  MariaDbServer& made = server();
  const Client client;
  for (int round = 1; round <= 3; ++round) {
    EXPECT_EQ(insert(client, round), "");
    EXPECT_EQ(query(client, "PCIAdapter", "SlotNo", "SlotNo=1"), "1");
    made.kill();
    made.start({"--skip-networking"});
  }
  EXPECT_EQ(query(client, "PCIAdapter", "count(*)"), "3");
  made.kill();
  made.start({"--skip-networking"});
  EXPECT_EQ(raw(client, "BEGIN"), "");
  EXPECT_EQ(insert(client, 9), "");
  made.kill();
  made.start({"--skip-networking"});
  EXPECT_EQ(insert(client, 10), "status 14");  // it would be a transaction of its own
  EXPECT_EQ(query(client, "PCIAdapter", "SlotNo", "SlotNo>8"), "");
}

TEST_F(MariaDbOutage, AServerKilledDuringACall) {
  MariaDbServer& made = server();
  for (const char* const statement : {"select sleep(20)", "insert into PCIAdapter (SlotNo) select sleep(20)",
                                      "update PCIAdapter set SlotNo=sleep(20)+7"}) {
    const Client client;
    ASSERT_EQ(insert(client, 1), "");
    std::thread killer([&] {
      std::this_thread::sleep_for(300ms);
      made.kill();
    });
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(raw(client, statement), "status 14");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    killer.join();
    EXPECT_NE(log().find("lost the connection to dmdb at localhost ("), std::string::npos) << statement;
    made.start({"--skip-networking"});
    EXPECT_EQ(query(client, "PCIAdapter", "count(*)", "SlotNo!=1"), "0") << statement;
  }
}

TEST_F(MariaDbOutage, AFullServer) {
  server({"--max-connections=10"});
  std::list<Client> clients;
  log();
  while (clients.size() < 20) {
    if (clients.emplace_back() == nullptr) break;
  }
  clients.pop_back();
  EXPECT_GE(clients.size(), 10U);
  EXPECT_LE(clients.size(), 11U);  // one more for an administrator
  EXPECT_EQ(get_dmdb_handle(0, nullptr, 0), nullptr);
  expect_one_line({"cannot open dmdb at localhost (", "Too many connections"});
  for (const Client& client : clients) EXPECT_EQ(query(client, "PCIAdapter", "count(*)"), "0");
  clients.clear();
  in_child([] { return true; });  // closes what waits for the next who opens
  std::this_thread::sleep_for(100ms);
  EXPECT_NE(get_dmdb_handle(0, nullptr, 0), nullptr);
}

// "0.0.0.0" leads here, too, but is not known to be this machine.
TEST_F(MariaDbOutage, TlsPasswordFilesAndRights) {
  MariaDbServer& made = servers_.emplace_back(parent_, parent_ / "pristine");
  const std::string folder = made.folder();
  const std::string request = "openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2";
  const std::string signed_by_us = request + " -CA ca.pem -CAkey ca.key -addext basicConstraints=CA:FALSE";
  const std::string commands =
      "cd " + folder + " && " + request + " -subj /CN=ca -keyout ca.key -out ca.pem && " + request +
      " -subj /CN=other -keyout other.key -out other.pem && " + signed_by_us +
      " -subj /CN=us -keyout our.key -out our.pem && " + signed_by_us +
      " -subj /CN=it -keyout its.key -out its.pem -addext subjectAltName=IP:127.0.0.1,IP:0.0.0.0";
  const Outcome made_certificates = run_program({.argv = {"/bin/sh", "-c", commands}});
  ASSERT_EQ(made_certificates.exit_status, 0) << made_certificates.err;
  const std::vector<std::string> options = {
      "--port=" + std::to_string(made.port()), "--bind-address=127.0.0.1", "--ssl-ca=" + folder + "/ca.pem",
      "--ssl-cert=" + folder + "/its.pem", "--ssl-key=" + folder + "/its.key"};
  made.start(options);
  use("root@localhost/?socket=" + made.socket());
  ASSERT_EQ(zel_db_create(nullptr, nullptr, 0), 0);
  for (const char* sql :
       {"create user signed@127.0.0.1 require x509", "grant all on *.* to signed@127.0.0.1",
        "create user reader@127.0.0.1 identified by 'p@ss'", "grant select on dmdb.* to reader@127.0.0.1"}) {
    EXPECT_EQ(raw(Client(), sql), "") << sql;
  }
  const std::string file = folder + "/password";
  std::ofstream(file) << "p@ss\nmore\n";
  const std::string authority = "&ssl-ca=" + folder + "/ca.pem";
  const std::string our = "&ssl-cert=" + folder + "/our.pem&ssl-key=" + folder + "/our.key";
  const std::tuple<std::string, std::string, std::string> cases[] = {
      {"root@127.0.0.1", "", ""},
      {"root@127.0.0.1", authority, "TLSv1.3"},
      {"root@127.0.0.1", "&ssl-ca=" + folder + "/other.pem", "certificate"},
      {"root@0.0.0.0", "", "certificate"},
      {"root@0.0.0.0", authority, "TLSv1.3"},
      {"root@0.0.0.0", "&ssl-verify=off", "TLSv1.3"},
      {"root@0.0.0.0", "&ssl=off", ""},
      {"root@0.0.0.0", "&ssl-ca=/none", "No such file"},
      {"signed@127.0.0.1", authority, "Access denied"},
      {"signed@127.0.0.1", authority + our, "TLSv1.3"},
      {"reader@127.0.0.1", "&password-file=" + file, ""},
      {"reader@127.0.0.1", "&password-file=" + file + "x", "password from " + file + "x: No such file"},
  };
  std::filesystem::permissions(file, std::filesystem::perms(0600));
  const auto url_of = [&](const std::string& host, const std::string& more) {
    return host + ":" + std::to_string(made.port()) + "/?prefix=" + more;
  };
  for (const auto& [host, more, expected] : cases) {
    use(url_of(host, more));
    char error[512] = "";
    const int status = zel_db_check(nullptr, "dmdb", error, sizeof error);
    const std::string version =
        "select variable_value from information_schema.session_status where variable_name='Ssl_version'";
    const std::string answer = status == 0 ? raw(Client(), version) : error;
    EXPECT_TRUE(expected.empty() ? answer.empty() : answer.find(expected) != std::string::npos)
        << host << more << ": " << answer;
  }
  use(url_of("reader@127.0.0.1", "&password-file=" + file));
  EXPECT_EQ(query(Client(), "PCIAdapter", "count(*)"), "0");
  EXPECT_EQ(insert(Client(), 1), "status 15");
  std::filesystem::permissions(file, std::filesystem::perms(0604));
  in_child([] { return true; });  // leaves no connection here
  EXPECT_EQ(Client(), nullptr);

  // A write to a server that has gone must not end the process.
  use(url_of("root@0.0.0.0", authority));
  const Client client;
  EXPECT_EQ(insert(client, 1), "");
  EXPECT_EQ(query(client, "PCIAdapter", "SlotNo"), "1");
  made.kill();
  EXPECT_EQ(query(client, "PCIAdapter", "SlotNo"), "status 14");
  EXPECT_EQ(insert(client, 2), "status 14");
  made.start(options);
  EXPECT_EQ(query(client, "PCIAdapter", "SlotNo"), "1");
}

// Acknowledged rows are on the one server or the other, and the first one keeps its rows.
TEST_F(MariaDbOutage, TheNextHostTakesOver) {
  const auto host_of = [](MariaDbServer& made) { return "127.0.0.1:" + std::to_string(made.port()); };
  const auto start = [&](MariaDbServer& made) {
    made.start({"--innodb-flush-log-at-trx-commit=1", "--port=" + std::to_string(made.port()),
                "--bind-address=127.0.0.1"});
  };
  std::string hosts;
  for (int i = 0; i < 2; ++i) {
    MariaDbServer& made = servers_.emplace_back(parent_, parent_ / "pristine");
    start(made);
    hosts += (hosts.empty() ? "" : ",") + host_of(made);
    use("root@" + host_of(made) + "/");
    ASSERT_EQ(zel_db_create(nullptr, nullptr, 0), 0);
  }
  use("root@" + hosts + "/");

  std::atomic<int> written = 0;
  std::thread killer([&] {
    while (written < 200) std::this_thread::sleep_for(1ms);
    servers_.front().kill();
  });
  std::vector<std::string> failures;
  std::set<std::string> acknowledged;
  const Client client;
  for (int slot = 1; slot <= 600; ++slot) {
    const std::string answer = insert(client, slot);
    if (answer.empty()) {
      ++written;
      acknowledged.insert(std::to_string(slot));
    } else {
      failures.push_back(answer);
    }
    EXPECT_NE(query(client, "PCIAdapter", "count(*)"), "status 14");
  }
  killer.join();
  EXPECT_LE(failures.size(), 1U);  // the write that was under way, if there was one
  EXPECT_TRUE(failures.empty() || failures.front() == "status 14") << failures.front();

  start(servers_.front());
  std::set<std::string> kept;
  for (MariaDbServer& made : servers_) {
    use("root@" + host_of(made) + "/");
    std::istringstream rows(query(Client(), "PCIAdapter", "SlotNo"));
    size_t count = 0;
    for (std::string slot; std::getline(rows, slot, ';'); ++count)
      EXPECT_TRUE(kept.insert(slot).second) << slot;
    EXPECT_GE(count, 200U);
  }
  for (const std::string& slot : acknowledged) EXPECT_EQ(kept.count(slot), 1U) << slot;
  EXPECT_LE(kept.size(), acknowledged.size() + failures.size());  // done, but its answer was lost
}

}  // namespace
}  // namespace zeldb_test
