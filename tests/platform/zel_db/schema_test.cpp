// SPDX-License-Identifier: Apache-2.0
//
// The values that tables take, and the upgrade of tables of an older program.
#include "zel_db/schema.h"

#include <thread>

#include "tests/platform/zel_db/client.h"

namespace zeldb_test {
namespace {

class Schema : public DatabaseTest {
 protected:
  Client handle;

  std::string create() const {
    char error[256] = "";
    const int status = zel_db_create(nullptr, error, sizeof error);
    return status == 0 ? error : "status " + std::to_string(status) + ": " + error;
  }
  static std::string check() {
    char error[256] = "";
    zel_db_check(nullptr, "dmdb", error, sizeof error);
    return error;
  }
  // Version 1 had no sizes on SQLite, and here fewer columns; others have added a column, an index and a
  // view.
  void make_older_table() const {
    const bool is_sqlite = GetParam() == Engine::Sqlite;
    const std::string text = is_sqlite ? "text" : "varchar(255)";
    for (const std::string& sql :
         {std::string("drop table AimDisks"),
          "create table AimDisks (_id " +
              std::string(is_sqlite ? "integer primary key autoincrement"
                                    : "bigint auto_increment primary key") +
              ", SlotNo bigint, Location " + text + ", model " + text + ", `A Note` " + text + ")",
          std::string("create index others on AimDisks (`A Note`)"),
          std::string("create view places as select Location from AimDisks"),
          std::string(
              "insert into AimDisks (SlotNo, Location, model, `A Note`) values (1, 'Bay 1', 'x', 'n'), "
              "(2, NULL, '', NULL), (3, 'Bay 3', NULL, 'last')"),
          std::string("delete from AimDisks where SlotNo=3"),
          std::string("update ZeldbSchema set Version=1")}) {
      database.run(sql);
    }
  }
  std::string disks() const {
    return database.text("select _id, SlotNo, Location, Model, `A Note` from AimDisks");
  }
};
ZELDB_ON_EVERY_ENGINE(Schema);

TEST_P(Schema, EveryColumnTakesItsSizeAndNoMore) {
  const Client properties("propertiesdb");
  for (const zel_db::Family& family : zel_db::families()) {
    const bool is_property = family.database == zel_db::kDatabases[1];
    for (const zel_db::Table& table : family.tables) {
      for (const zel_db::Column& column : table.columns) {
        if (column.size == 0) continue;
        const auto insert = [&](size_t size) {
          const std::string value = column.kind == zel_db::Kind::Blob
                                        ? "x'" + replaced(std::string(size, '.'), ".", "e9") + "'"
                                        : "'" + std::string(size, '\xe9') + "'";
          const std::string sql =
              std::string("insert into ") + table.name + " (" + column.name + ") values (" + value + ")";
          return raw(is_property ? properties : handle, sql, static_cast<int>(sql.size()));
        };
        EXPECT_EQ(insert(column.size), "") << table.name << "." << column.name;
        EXPECT_EQ(insert(column.size + size_t{1}), "status 13") << table.name << "." << column.name;
      }
    }
  }
  zel_db_content_values_t* values = zel_db_get_content_values(handle);
  zel_db_content_put_text(values, "Model", std::string(256, 'x').c_str());
  EXPECT_EQ(zel_db_update(handle, "AimDisks", values, "_id=1", nullptr, 0, nullptr), 13);
  zel_db_free_content_values(values);
}

TEST_P(Schema, AnOlderDatabaseIsBroughtToTodays) {
  make_older_table();
  EXPECT_EQ(query(handle, "AimDisks", "InfoMask"), "status 2");
  EXPECT_NE(check().find("PCIFuncKey"), std::string::npos) << check();
  EXPECT_EQ(create(), "");
  const std::string before = "1,1,Bay 1,x,n;2,2,NULL,,NULL";
  EXPECT_EQ(disks(), before);
  EXPECT_EQ(query(handle, "AimDisks", "InfoMask,UUID"), "0,NULL;0,NULL");
  EXPECT_EQ(query(handle, "ZeldbSchema", "Version"), std::to_string(zel_db::kSchemaVersion));
  EXPECT_EQ(raw(handle, "insert into AimDisks (SlotNo) values (4)"), "");
  EXPECT_EQ(disks(), before + ";4,4,NULL,NULL,NULL");  // 3 is not given out again
  EXPECT_EQ(raw(handle, "update AimDisks set Model='" + std::string(256, 'x') + "'"), "status 13");
  EXPECT_EQ(raw(handle, "select count(*) from places"), "3");
  EXPECT_EQ(
      raw(handle, GetParam() == Engine::Sqlite
                      ? "select name from sqlite_schema where type='index' and tbl_name='AimDisks' order by 1"
                      : "select index_name from information_schema.statistics where table_schema=database() "
                        "and table_name='AimDisks' and index_name!='PRIMARY' order by 1"),
      "AimDisks_Location;others");
  EXPECT_EQ(create(), "");
  EXPECT_EQ(query(handle, "AimDisks", "count(*)"), "3");
  database.run("drop table ZeldbSchema");
  EXPECT_EQ(check(), "");
}

TEST_P(Schema, ThreadsBringAnOlderDatabaseToTodaysTogether) {
  make_older_table();
  database.run("delete from ZeldbSchema");
  std::vector<std::string> seen(8);
  {
    std::vector<std::jthread> threads;
    for (std::string& one : seen) threads.emplace_back([&] { one = create(); });
  }
  EXPECT_EQ(seen, std::vector<std::string>(seen.size()));
  EXPECT_EQ(query(handle, "ZeldbSchema", "Version"), std::to_string(zel_db::kSchemaVersion));
}

TEST(OneFile, IsBroughtToTodaysForBothDatabases) {
  const Database file(Engine::Sqlite);
  setenv("ZEL_DB_URL", (file.url() + "/one.sqlite").c_str(), 1);
  ASSERT_EQ(zel_db_create(nullptr, nullptr, 0), 0);
  const Client client("propertiesdb");
  for (const char* sql :
       {"drop table propertiesDCTbl", "update ZeldbSchema set Version=1",
        "create table propertiesDCTbl (_id integer primary key autoincrement, propName text)"}) {
    EXPECT_EQ(raw(client, sql), "");
  }
  EXPECT_EQ(zel_db_create(nullptr, nullptr, 0), 0);
  EXPECT_EQ(query(client, "propertiesDCTbl", "propValue"), "");
  EXPECT_EQ(raw(client, "insert into propertiesDCTbl (propName) values ('" + std::string(256, 'x') + "')"),
            "status 13");
}

TEST_P(Schema, ATooLongTextIsReportedAndNothingIsChanged) {
  if (GetParam() == Engine::MariaDb) GTEST_SKIP() << "its columns have always had sizes";
  make_older_table();
  raw(handle, "update AimDisks set model='" + std::string(300, 'x') + "' where SlotNo=2");
  const std::string before = disks();
  EXPECT_EQ(
      create(),
      "status 13: cannot make the tables of dmdb: AimDisks.Model of the row with _id 2 has 300 bytes, it may "
      "have 255");
  EXPECT_EQ(disks(), before);
  EXPECT_EQ(raw(handle, "select Version from ZeldbSchema"), "1");
  raw(handle, "update AimDisks set model='short' where SlotNo=2");
  EXPECT_EQ(create(), "");
  EXPECT_EQ(disks(), "1,1,Bay 1,x,n;2,2,NULL,short,NULL");
}

}  // namespace
}  // namespace zeldb_test
