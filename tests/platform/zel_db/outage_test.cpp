// SPDX-License-Identifier: Apache-2.0
//
// Files that are not there, are not ours, come late or are made.
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <thread>

#include "tests/platform/zel_db/client.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
 protected:
  Files() {
    std::string name = (fs::temp_directory_path() / "zel_db.XXXXXX").string();
    folder = mkdtemp(name.data());
  }
  void TearDown() override { fs::remove_all(folder); }

  void use(const std::string& name) const {
    setenv("ZEL_DB_URL", ("sqlite://" + (folder / name).string()).c_str(), 1);
  }
  void write(const std::string& name, const std::string& text) const { std::ofstream(folder / name) << text; }
  std::string create(const std::string& name) const {
    use(name);
    char error[256];
    zel_db_create(nullptr, error, sizeof error);
    return error;
  }
  std::string load(const std::string& script, const char* database = "dmdb") const {
    write("script", script);
    char error[256];
    zel_db_load(nullptr, database, (folder / "script").c_str(), error, sizeof error);
    return error;
  }

  // The fault of the database, or empty.
  static std::string state() {
    char error[512] = "";
    const int status = zel_db_check(nullptr, "dmdb", error, sizeof error);
    EXPECT_EQ(status == 0, *error == '\0') << status;
    return error;
  }

  fs::path folder;
};

// A process of somebody who has no rights of his own. Asked, it says what it sees of a table, how a write of
// its own ends, and what is wrong.
class Stranger {
 public:
  Stranger() {
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends_) != 0 || fork() != 0) return;
    close(ends_[0]);
    const bool dropped =
        setresgid(kNobody, kNobody, kNobody) == 0 && setresuid(kNobody, kNobody, kNobody) == 0;
    for (char mark = 0; dropped && read(ends_[1], &mark, 1) == 1;) {
      _zel_db_handle_t* const handle = get_dmdb_handle(0, nullptr, 0);
      std::string answer = "none";
      if (handle != nullptr) {
        answer = query(handle, "PCIs", "FunKey") + "|" + raw(handle, "insert into PCIs (FunKey) values (0)");
      }
      char error[512] = "";
      zel_db_check(nullptr, "dmdb", error, sizeof error);
      answer += std::string("|") + error;
      if (send(ends_[1], answer.data(), answer.size(), 0) < 0) break;
    }
    std::exit(0);
  }
  Stranger(const Stranger&) = delete;
  Stranger& operator=(const Stranger&) = delete;
  ~Stranger() {
    for (const int end : ends_) close(end);
  }
  std::string answer() const {
    char text[1024];
    const ssize_t size = write(ends_[0], "?", 1) == 1 ? recv(ends_[0], text, sizeof text, 0) : 0;
    return {text, static_cast<size_t>(std::max<ssize_t>(size, 0))};
  }

 private:
  static constexpr unsigned kNobody = 65534;
  int ends_[2] = {-1, -1};
};

TEST_F(Files, WhatCannotBeOpenedIsOneLineInTheLog) {
  const std::string init = " (\"zeldb init\" makes the databases)";
  const std::string no_file = "cannot open FOLDER/NAME/dmdb.sqlite: No such file or directory" + init;
  const std::tuple<std::string, std::function<void(const std::string&)>, std::string> cases[] = {
      {"no directory", [](auto&) {}, no_file},
      {"no file", [&](auto& name) { fs::create_directory(folder / name); }, no_file},
      {"empty.sqlite", [&](auto& name) { write(name, ""); },
       "cannot open FOLDER/NAME: it is empty (\"zeldb init\" makes its tables)"},
      {"foreign.sqlite", [&](auto& name) { write(name, std::string(5000, 'x')); },
       "cannot open FOLDER/NAME: file is not a database"},
      {"folder", [&](auto& name) { fs::create_directories(folder / name / "dmdb.sqlite"); },
       "cannot open FOLDER/NAME/dmdb.sqlite: it is not a file"},
      {"newer", [&](auto& name) { create(name), load("update ZeldbSchema set Version=9999"); },
       "cannot use FOLDER/NAME/dmdb.sqlite: its schema has version 9999, this program knows up to "},
      {"wrong", [](auto&) { setenv("ZEL_DB_URL", "other://u:secret@x", 1); },
       "not the URL of a database: other://...: it starts neither with \"sqlite://\" nor with "
       "\"mariadb://\""},
      {"wrong", [](auto&) { setenv("ZEL_DB_URL", "sqlite://db", 1); },
       "not the URL of a database: sqlite://db: the path after \"sqlite://\" starts with \"/\""},
  };
  const fs::path log = folder / "log";
  setenv("VREL_LOG", log.c_str(), 1);
  for (const auto& [name, prepare, line] : cases) {
    use(name);
    in_child([&, &make = prepare, &at = name] { return make(at), true; });  // leaves no connection here
    if (name == "wrong") prepare(name);
    fs::remove(log);
    const auto files = [&] { return std::distance(fs::recursive_directory_iterator(folder), {}); };
    const auto before = files();
    for (int i = 0; i < 3; ++i) {
      EXPECT_EQ(get_dmdb_handle(0, nullptr, 0), nullptr) << name;
      EXPECT_EQ(zel_db_open("localhost", "root", "", "dmdb", 0), nullptr) << name;
    }
    EXPECT_LE(files(), before + 1) << name;  // the log
    const std::string text = content_of(log);
    const std::string expected = replaced(replaced(line, "FOLDER", folder), "NAME", name);
    EXPECT_EQ(text.find("error: zel_db: " + expected), 0U) << name << ": " << text;
    EXPECT_EQ(state().find(expected), 0U) << state();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << name << ": " << text;
  }
  unsetenv("VREL_LOG");
  EXPECT_EQ(zel_db_open("localhost", "root", "", "../dmdb", 0), nullptr);
}

TEST_F(Files, TheInventoryHandleComesAndGoesWithTheDatabase) {
  use("db");
  EXPECT_EQ(get_dmdb_handle(0, nullptr, 0), nullptr);
  EXPECT_EQ(create("db"), "");
  _zel_db_handle_t* const handle = get_dmdb_handle(0, nullptr, 0);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(raw(handle, "insert into PCIs (FunKey) values (7)"), "");
  EXPECT_EQ(query(Client(), "PCIs", "FunKey"), "7");  // the same data
  EXPECT_EQ(query(Client("propertiesdb"), "PCIs", "FunKey"), "status 2");

  fs::remove_all(folder / "db");
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(get_dmdb_handle(0, nullptr, 0), nullptr);
  EXPECT_EQ(create("db"), "");
  EXPECT_EQ(get_dmdb_handle(0, nullptr, 0), handle);
  EXPECT_EQ(query(Client(), "PCIs", "FunKey"), "");

  EXPECT_EQ(raw(handle, "insert into PCIs (FunKey) values (8)"), "");
  EXPECT_EQ(create("other"), "");
  EXPECT_EQ(query(get_dmdb_handle(0, nullptr, 0), "PCIs", "FunKey"), "");
  use("db");
  EXPECT_EQ(query(get_dmdb_handle(0, nullptr, 0), "PCIs", "FunKey"), "8");
}

TEST_F(Files, CreatingIsPrivateAndChangesNothingTwice) {
  EXPECT_EQ(create("db/inner"), "");
  const Client client;
  EXPECT_EQ(raw(client, "insert into PCIs (FunKey) values (7)"), "");
  EXPECT_EQ(create("db/inner"), "");
  EXPECT_EQ(raw(client, "select FunKey, (select count(*) from ZeldbSchema) from PCIs"), "7,1");
  for (const auto& [name, mode] :
       {std::pair("db", 0750), {"db/inner", 0750}, {"db/inner/dmdb.sqlite-wal", 0600}}) {
    EXPECT_EQ(fs::status(folder / name).permissions(), fs::perms(mode)) << name;
  }
  EXPECT_EQ(create("db/inner/dmdb.sqlite/x").find("cannot create "), 0U);
  write("empty.sqlite", "");
  fs::permissions(folder / "empty.sqlite", fs::perms(0644));
  fs::create_symlink("empty.sqlite", folder / "link.sqlite");
  EXPECT_EQ(create("link.sqlite"),
            "cannot create " + (folder / "link.sqlite").string() + ": it is a symbolic link");
  EXPECT_TRUE(fs::is_empty(folder / "empty.sqlite"));
  EXPECT_EQ(create("empty.sqlite"), "");
  EXPECT_EQ(fs::status(folder / "empty.sqlite").permissions(), fs::perms(0600));
  EXPECT_EQ(state(), "");
  EXPECT_EQ(load("drop table PCIs"), "");
  EXPECT_EQ(state(), (folder / "empty.sqlite").string() +
                         ": no such table: PCIs (\"zeldb init\" makes what is missing)");
  EXPECT_EQ(create("one.sqlite"), "");
  EXPECT_EQ(query(Client(), "propertiesDCTbl", "_id") + query(Client("propertiesdb"), "PCIs", "_id"), "");
}

TEST_F(Files, WhoMayOnlyReadReadsEverything) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become somebody else";
  EXPECT_EQ(create("db"), "");
  const fs::path file = folder / "db" / "dmdb.sqlite";
  fs::permissions(file, fs::perms(0444));
  for (const fs::path& path : {folder, folder / "db"}) fs::permissions(path, fs::perms(0555));
  const auto add = [](int key) {
    return raw(Client(), "insert into PCIs (FunKey) values (" + std::to_string(key) + ")");
  };
  const auto close_all = [] { in_child([] { return true; }); };
  EXPECT_EQ(add(7), "");
  close_all();
  EXPECT_FALSE(fs::exists(file.string() + "-wal"));
  const Stranger stranger;
  EXPECT_EQ(stranger.answer(), "7|status 15|");
  EXPECT_EQ(add(8), "");  // its connection stays, so that the row is in the log alone
  EXPECT_EQ(stranger.answer(), "7;8|status 15|");
  close_all();
  EXPECT_EQ(stranger.answer(), "7;8|status 15|");
  in_child([&] { return add(9).empty() && raise(SIGKILL) == 0; });
  EXPECT_EQ(stranger.answer(), "7;8;9|status 15|");
  EXPECT_EQ(Stranger().answer(), "7;8;9|status 15|");
  // Without its index the log cannot be read, and without the log the newest row would be missing.
  fs::remove(file.string() + "-shm");
  const std::string refused = "none|cannot open " + file.string() +
                              ": there are changes beside it that only one who may write can bring in";
  EXPECT_EQ(Stranger().answer(), refused);
  EXPECT_EQ(raw(Client(), "select count(*) from PCIs"), "3");
  close_all();
  EXPECT_EQ(Stranger().answer(), "7;8;9|status 15|");
  fs::permissions(file, fs::perms(0400));
  EXPECT_EQ(Stranger().answer(), "none|cannot open " + file.string() + ": Permission denied");
}

// There is no moment at which nobody reads.
TEST_F(Files, TheLogStaysShortBesideThreadsThatRead) {
  EXPECT_EQ(create("db"), "");
  std::string rows = "insert into PCIAdapter (SlotNo, CardName) values (0, '')";
  for (int slot = 1; slot < 1000; ++slot)
    rows += ",(" + std::to_string(slot) + ",'" + std::string(100, 'x') + "')";
  EXPECT_EQ(raw(Client(), rows, 1 << 20), "");
  std::atomic<bool> done = false;
  uintmax_t longest = 0;
  std::thread reader([&] {
    const Client clients[2];  // each looks at what was there a read ago, until it is its turn again
    for (size_t i = 0; !done; ++i) {
      const Client& client = clients[i % std::size(clients)];
      raw(client, "commit");
      raw(client, "begin");
      query(client, "PCIAdapter", "*");
    }
  });
  const Client writer;
  for (int i = 0; i < 400; ++i) {
    ASSERT_EQ(raw(writer, "update PCIAdapter set SegNo=" + std::to_string(i)), "");  // 140 KB
    longest = std::max(longest, fs::file_size(folder / "db" / "dmdb.sqlite-wal"));
  }
  done = true;
  reader.join();
  EXPECT_LT(longest, 32U << 20U);
}

TEST_F(Files, LoadingStopsAtTheFirstFailure) {
  EXPECT_EQ(create("db"), "");
  EXPECT_EQ(load("-- two; rows\ninsert into PCIs (SlotDesignation) values (\"a;b\"), ('c''d');"), "");
  EXPECT_EQ(load("insert into PCIs (FunKey) values (3);; select 'open;"),
            (folder / "script").string() + ": statement 2: unterminated text");
  EXPECT_EQ(query(Client(), "PCIs", "SlotDesignation,FunKey"), "a;b,NULL;c'd,NULL;NULL,3");
  EXPECT_EQ(load("", "other"), "there is no database \"other\", only dmdb and propertiesdb");
}

}  // namespace
}  // namespace zeldb_test
