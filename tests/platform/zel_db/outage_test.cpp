// SPDX-License-Identifier: Apache-2.0
//
// Files that are not there, are not ours, come late or are made.
#include <gtest/gtest.h>

#include <algorithm>
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

  fs::path folder;
};

TEST_F(Files, WhatCannotBeOpenedIsOneLineInTheLog) {
  const std::tuple<std::string, std::function<void(const std::string&)>, const char*> cases[] = {
      {"no directory", [](auto&) {}, "dmdb.sqlite: No such file"},
      {"no file", [&](auto& name) { fs::create_directory(folder / name); }, "dmdb.sqlite: No such file"},
      {"empty.sqlite", [&](auto& name) { write(name, ""); }, "empty.sqlite: it is empty"},
      {"foreign.sqlite", [&](auto& name) { write(name, std::string(5000, 'x')); }, "file is not a database"},
      {"folder", [&](auto& name) { fs::create_directories(folder / name / "dmdb.sqlite"); },
       "it is not a file"},
      {"newer", [&](auto& name) { create(name), load("update ZeldbSchema set Version=9"); },
       "its schema has version 9, this program knows up to 2"},
      {"wrong", [](auto&) { setenv("ZEL_DB_URL", "other://x", 1); }, "not the URL of a database"},
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
    EXPECT_NE(text.find(line), std::string::npos) << name << ": " << text;
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
  EXPECT_EQ(create("one.sqlite"), "");
  EXPECT_EQ(query(Client(), "propertiesDCTbl", "_id") + query(Client("propertiesdb"), "PCIs", "_id"), "");
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
