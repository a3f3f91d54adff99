// SPDX-License-Identifier: Apache-2.0
//
// State that outlives a call: cached statements, handles, connections, processes.
#include <sys/socket.h>

#include <csignal>
#include <cstdlib>
#include <functional>
#include <thread>

#include "tests/platform/zel_db/client.h"
#include "zel_db/schema.h"

namespace zeldb_test {
namespace {

class Lifetime : public DatabaseTest {
 protected:
  // A fork closes what an earlier test of this process has left open.
  Lifetime() {
    in_child([] { return true; });
  }
  static std::string insert(_zel_db_handle_t* handle, int slot) {
    return raw(handle, "insert into PCIAdapter (SlotNo) values (" + std::to_string(slot) + ")");
  }
};
ZELDB_ON_EVERY_ENGINE(Lifetime);

TEST_P(Lifetime, CachedStatementsSeeWhatOthersDo) {
  const Client reader;
  const char* const cases[][2] = {
      {"select 1", "|status 2|V"},
      {"insert into PCIAdapter (SlotNo) values (1)", "1|status 2|V"},
      {"alter table ZeldbSchema add column Note integer default 5", "1|status 2|V,5"},
      {"alter table PCIAdapter add column More integer", "1|NULL|V,5"},
      {"alter table PCIAdapter drop column More", "1|status 2|V,5"},
      {"alter table PCIAdapter add column More integer default 9", "1|9|V,5"},
  };
  for (const auto& [change, expected] : cases) {
    database.run(change);
    EXPECT_EQ(query(reader, "PCIAdapter", "SlotNo", "SlotNo>0") + "|" +
                  query(reader, "PCIAdapter", "More", "SlotNo>0") + "|" + query(reader, "ZeldbSchema", "*"),
              replaced(expected, "V", std::to_string(zel_db::kSchemaVersion)))
        << change;
  }
}

// A long condition that mostly finds nothing is asked first.
TEST_P(Lifetime, ChangeFiltersSeeWhatOthersDo) {
  const Client client;
  database.run(
      "insert into PCIAdapter (SlotNo, SegNo, BusNo, DeviceNo, FunctionNo, Location, PCIKey, OOBSrc)"
      " values (1, 2, 3, 4, 5, 6, 7, 8)");
  zel_db_content_values_t* values = zel_db_get_content_values(client);
  zel_db_content_put_text(values, "CardName", "x");
  // A transaction of this server sees what was there when it first looked, but writes to what is there now.
  const bool keeps_looking_back = GetParam() == Engine::MariaDb;
  for (const auto& [slot, begun] : {std::pair(1, false), {1, false}, {2, false}, {1, false}, {2, true}}) {
    if (begun) raw(client, "begin");
    if (begun && keeps_looking_back) query(client, "PCIAdapter", "_id");
    database.run("update PCIAdapter set SlotNo=" + std::to_string(slot));
    const std::string changed =
        "(SlotNo!=1 OR SegNo!=2 OR BusNo!=3 OR DeviceNo!=4 OR FunctionNo!=5 OR Location!=6 OR PCIKey!=7)";
    const std::tuple<std::string, int, int> cases[] = {
        {"_id=1 AND " + changed, 0, slot == 1 ? 0 : 1},
        {"_id=2 AND " + changed, 0, 0},
        {"_id=2 AND " + changed + " OR (SlotNo=2)", 0, slot == 2 ? 1 : 0},
        {"_id=1 AND " + changed + "=", 2, 77},
        {"_id=1 AND (CardName!='x' OR ConnectorType=-1 OR " + changed + ")", 0, slot == 1 ? 0 : 1},
    };
    for (const auto& [where, status, rows] : cases) {
      int64_t updated = 77;
      EXPECT_EQ(zel_db_update(client, "PCIAdapter", values, where.c_str(), nullptr, 0, &updated), status);
      EXPECT_EQ(updated, rows) << slot << " " << where;
    }
    if (begun) raw(client, "commit");
  }
  // A batch that changes nothing waits for nobody, even if it asks for the first time.
  const Client locker;
  const Client batch;
  EXPECT_EQ(raw(locker, "begin"), "");
  EXPECT_EQ(raw(locker, "update PCIAdapter set SegNo=2"), "");
  EXPECT_EQ(zel_db_begin_batch(batch), 0);
  const char* const unchanged =
      "_id=1 AND (SlotNo!=2 OR SegNo!=2 OR BusNo!=3 OR DeviceNo!=4 OR FunctionNo!=5 OR Location!=6 OR "
      "PCIKey!=7)";
  EXPECT_EQ(zel_db_update(batch, "PCIAdapter", values, unchanged, nullptr, 0, nullptr), 0);
  EXPECT_EQ(zel_db_end_batch(batch), 0);
  EXPECT_EQ(raw(locker, "rollback"), "");
  // A server may refuse in an update what it lets pass in a query: then each time.
  const std::string converts =
      "_id=1 AND (CardName IN (5) OR SegNo!=2 OR BusNo!=3 OR DeviceNo!=4 OR FunctionNo!=5 OR Location!=6 OR "
      "PCIKey!=7 OR OOBSrc!=8)";
  const auto convert = [&] {
    return zel_db_update(client, "PCIAdapter", values, converts.c_str(), nullptr, 0, nullptr);
  };
  const int status = convert();
  EXPECT_EQ(convert(), status);
  zel_db_free_content_values(values);
  EXPECT_EQ(query(client, "PCIAdapter", "CardName"), "x");
}

TEST_P(Lifetime, MoreStatementsThanThereArePlaces) {
  const Client client;
  insert(client, 3);
  for (int i = 0; i < 600; ++i) {
    const std::string column = "SlotNo+" + std::to_string(i % 300);
    EXPECT_EQ(query(client, "PCIAdapter", column.c_str(), "SlotNo=3"), std::to_string(3 + i % 300));
    EXPECT_EQ(query(client, "PCIAdapter", "SlotNo", "SlotNo=3"), "3");
  }
}

TEST_P(Lifetime, ThreadsShareAHandle) {
  std::vector<std::thread> threads;
  for (int first : {0, 50, 100, 150}) {
    threads.emplace_back([first] {
      const Client own;
      for (int slot = first; slot < first + 50; ++slot) {
        _zel_db_handle_t* shared = get_dmdb_handle(0, nullptr, 0);
        EXPECT_EQ(insert(slot % 2 == 0 ? shared : own, slot), "");
        EXPECT_EQ(query(shared, "PCIAdapter", "count(*)", "SlotNo=" + std::to_string(slot)), "1");
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(database.text("select count(*), count(distinct SlotNo) from PCIAdapter"), "200,200");
}

// The child is killed: nothing that was acknowledged is lost.
TEST_P(Lifetime, ProcessesShareADatabaseAndInheritedHandlesWork) {
  const Client inherited;
  _zel_db_handle_t* const inventory = get_dmdb_handle(0, nullptr, 0);
  const auto work = [&](int first) {
    bool good = get_dmdb_handle(0, nullptr, 0) == inventory;
    for (int i = 0; i < 100; ++i)
      good = insert(i % 2 == 0 ? inherited : inventory, first + i).empty() && good;
    return good;
  };
  const pid_t child = fork();
  if (child == 0) _exit(work(100) ? kill(getpid(), SIGKILL) : 1);
  EXPECT_TRUE(work(200));
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(raw(inherited, "select count(distinct SlotNo) from PCIAdapter"), "200");
}

// The way of a daemon. Whoever closes the database last tidies it up, and must not do so under the child.
TEST_P(Lifetime, AParentMayEndBeforeItsChild) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  char mark = 0;
  EXPECT_EQ(in_child([&] {
              _zel_db_handle_t* handle = get_dmdb_handle(0, nullptr, 0);
              insert(handle, 1);
              if (fork() != 0) return true;
              insert(handle, 2);
              const bool told = write(ends[1], "x", 1) == 1 && read(ends[1], &mark, 1) == 1;
              insert(handle, 3);
              return told && write(ends[1], "x", 1) == 1;
            }),
            0);
  EXPECT_EQ(read(ends[0], &mark, 1), 1);
  EXPECT_EQ(zel_db_create(nullptr, nullptr, 0), 0);  // comes and goes
  EXPECT_EQ(write(ends[0], "x", 1), 1);
  EXPECT_EQ(read(ends[0], &mark, 1), 1);
  EXPECT_EQ(database.text("select SlotNo from PCIAdapter"), "1;2;3");
}

TEST_P(Lifetime, TransactionsHoldOffWritersAndEndWithTheirHandle) {
  const Client other;
  for (const char* end : {"", "commit"}) {
    const Client holder;
    EXPECT_EQ(raw(holder, "begin"), "");
    EXPECT_EQ(insert(holder, 1), "");
    if (*end == '\0') continue;
    EXPECT_EQ(query(other, "PCIAdapter", "SlotNo"), "");  // readers do not wait
    EXPECT_EQ(raw(other, "update PCIAdapter set SlotNo=3"), "status 5");
    EXPECT_EQ(raw(holder, end), "");
  }
  // A connection that was told not to commit is not handed to the next.
  if (GetParam() == Engine::MariaDb) raw(Client(), "set autocommit=0");
  insert(Client(), 2);
  EXPECT_EQ(query(other, "PCIAdapter", "SlotNo"), "1;2");
}

// The end of a batch tells why it was undone; until then nothing fails, waits or connects again.
TEST_P(Lifetime, ABatchIsStoredOrUndoneAsAWhole) {
  _zel_db_handle_t* const handle = get_dmdb_handle(0, nullptr, 0);
  const Client other;
  insert(other, 9);
  const std::string nine = "_id=" + query(other, "PCIAdapter", "_id");
  const auto slots = [](_zel_db_handle_t* client) {
    return query(client, "PCIAdapter", "SlotNo", "SlotNo<9");
  };
  const auto lock = [&](_zel_db_handle_t* client) {
    return raw(client, "update PCIAdapter set SegNo=1 where " + nine);
  };
  const std::pair<bool, std::function<void()>> cases[] = {
      {true, [&] { EXPECT_NE(raw(handle, "insert into PCIAdapter (SlotNo) values ('x')"), ""); }},
      {true,
       [&] {
         std::thread([&] { slots(handle); }).join();
         EXPECT_EQ(slots(other).substr(0, 3), "1;2");
       }},
      {false, [&] { raw(handle, "rollback"); }},
      {false, [] { in_child([] { return true; }); }},  // no connection crosses a fork
      {false, [&] { raw(other, "kill " + raw(handle, "select connection_id()")); }},
      {false, [&] { EXPECT_EQ(lock(handle), ""); }},
      {false, [&] { EXPECT_EQ(query(handle, "PCIAdapter", "SlotNo", nine), ""); }},
  };
  for (size_t i = 0; i < 2 * std::size(cases); ++i) {
    const auto& [is_kept, disturb] = cases[i / 2];
    if (i >= 8 && GetParam() == Engine::Sqlite) break;  // it has no such disturbances
    EXPECT_EQ(raw(other, "delete from PCIAdapter where SlotNo<9"), "");
    ASSERT_EQ(zel_db_begin_batch(handle), 0);
    EXPECT_NE(zel_db_begin_batch(handle), 0);
    insert(handle, 1);
    insert(handle, 2);
    EXPECT_EQ(slots(other), "");
    const Client locker;
    if (i >= 10) {
      raw(locker, "begin");
      EXPECT_EQ(lock(locker), "");
    }
    const auto start = std::chrono::steady_clock::now();
    if (i % 2 == 0) disturb();
    EXPECT_EQ(insert(handle, 3), "") << i;
    if (i % 2 != 0) disturb();
    EXPECT_EQ(get_dmdb_handle(0, nullptr, 0), handle);
    EXPECT_EQ(zel_db_end_batch(handle) == 0, is_kept) << i;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4)) << i;
    EXPECT_EQ(slots(other), is_kept ? "1;2;3" : "") << i;
    EXPECT_EQ(insert(handle, 4), "") << i;
    EXPECT_NE(zel_db_end_batch(handle), 0);
    EXPECT_EQ(slots(other), is_kept ? "1;2;3;4" : "4") << i;
  }
}

TEST_P(Lifetime, ReadsInOneTransactionAreOneThreadsAndEndBeforeAWrite) {
  const Client client;
  const Client other;
  const auto slots = [&] { return query(client, "PCIAdapter", "SlotNo"); };
  const bool begins = GetParam() == Engine::Sqlite;
  const std::function<void()> ends[] = {
      [&] { zel_db_end_reads(client); }, [&] { std::thread([&] { EXPECT_EQ(slots(), "1;2"); }).join(); },
      [&] { EXPECT_EQ(insert(client, 3), ""); },
      [] { in_child([] { return true; }); },  // no connection crosses a fork
  };
  for (const auto& end : ends) {
    database.run("delete from PCIAdapter");
    insert(other, 1);
    EXPECT_EQ(zel_db_begin_reads(client) == 0, begins);
    EXPECT_EQ(slots(), "1");
    EXPECT_EQ(insert(other, 2), "");
    EXPECT_EQ(slots(), begins ? "1" : "1;2");
    end();
    EXPECT_EQ(slots().substr(0, 3), "1;2");
    EXPECT_EQ(zel_db_end_reads(client), 0);
  }
}

TEST_P(Lifetime, ReadsOfTheInventoryIncludeHandlesThatTheirThreadOpens) {
  const Client other;
  insert(other, 1);
  _zel_db_handle_t* const inventory = get_dmdb_handle(0, nullptr, 0);
  const bool begins = zel_db_begin_reads(inventory) == 0;
  EXPECT_EQ(begins, GetParam() == Engine::Sqlite);
  const auto slots = [] { return query(Client(), "PCIAdapter", "SlotNo"); };
  EXPECT_EQ(slots(), "1");
  insert(other, 2);
  EXPECT_EQ(slots(), begins ? "1" : "1;2");
  std::thread([&] { EXPECT_EQ(slots(), "1;2"); }).join();
  const Client open;
  EXPECT_EQ(query(open, "PCIAdapter", "SlotNo"), begins ? "1" : "1;2");
  zel_db_end_reads(inventory);
  insert(other, 3);
  EXPECT_EQ(slots(), "1;2;3");
  EXPECT_EQ(query(open, "PCIAdapter", "SlotNo"), "1;2;3");
}

TEST_P(Lifetime, TraceHasTheCallersWords) {
  const std::filesystem::path file =
      std::filesystem::temp_directory_path() / ("trace." + database.engine() + std::to_string(getpid()));
  setenv("ZEL_DB_TRACE", file.c_str(), 1);
  const Client client;
  unsetenv("ZEL_DB_TRACE");
  zel_db_content_values_t* values = zel_db_get_content_values(client);
  zel_db_content_put_text(values, "CardName", "x");
  zel_db_content_put_int(values, "SlotNo", 1);
  zel_db_update(client, "PCIAdapter", values, "CardName=\"a\nb\"", nullptr, 0, nullptr);
  zel_db_free_content_values(values);
  query(client, "PCIAdapter", "_id,SlotNo", "SlotNo=? OR _id!=?", {{2, 0, 1, 0xFFFFFFFF}, {3, 0, 1, 5}},
        "_id");
  raw(client, "select nonsense from PCIs;");
  EXPECT_EQ(content_of(file),
            "update|PCIAdapter|CardName,SlotNo|CardName=\"a b\"|||0\n"
            "query|PCIAdapter|_id,SlotNo|SlotNo=? OR _id!=?|-1,5|_id|0\n"
            "raw|||select nonsense from PCIs;|||2\n");
  std::filesystem::remove(file);
}

}  // namespace
}  // namespace zeldb_test
