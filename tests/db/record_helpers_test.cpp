// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <functional>

#include "platform/zel_db.h"
#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/db.h"

namespace zeldb_test {
namespace {

using Texts = std::vector<std::string>;

constexpr int64_t kNewId = 1000;
constexpr int64_t kInvalid = 3;
constexpr int64_t kBusy = 5;

class RecordHelpers : public DatabaseTest {
 protected:
  void SetUp() override {
    values = zel_db_get_content_values(handle);
    zel_db_content_put_uint(values, "SlotNo", 5);
    shim().require_calls();
  }
  void TearDown() override { zel_db_free_content_values(values); }

  std::string slots() const { return database.text("SELECT FunKey, SlotNo FROM PCIs ORDER BY _id"); }

  _zel_db_handle_t* handle = get_dmdb_handle(0, nullptr, 0);
  zel_db_content_values_t* values = nullptr;
};
ZELDB_ON_EVERY_ENGINE(RecordHelpers);

struct Case {
  const char* name;
  std::vector<Rule> rules;
  std::function<int64_t(_zel_db_handle_t*, zel_db_content_values_t*)> call;
  int64_t result;
  Texts logs;
  const char* slots = "7,1;8,1";
  Texts where{};  // of the updates and deletes
};

const Case kCases[] = {
    {"find: first row of several",
     {},
     [](auto* h, auto*) { return find_db_record(h, "PCIs", "SlotNo=1"); },
     1,
     {}},
    {"find: none", {}, [](auto* h, auto*) { return find_db_record(h, "PCIs", "SlotNo=2"); }, 0, {}},
    {"find: null", {}, [](auto* h, auto*) { return find_db_record(h, "PCIs", nullptr); }, -1, {}},
    {"find: refused",
     {},
     [](auto* h, auto*) { return find_db_record(h, "PCIs", "x y"); },
     -1,
     {"error Failed to query record:", "error table=PCIs", "error where=x y"}},
    {"find: no result",
     {{.op = "query", .status = 0}},
     [](auto* h, auto*) { return find_db_record(h, "PCIs", "SlotNo=1"); },
     -1,
     {"error Failed to query record:", "error table=PCIs", "error where=SlotNo=1"}},
    {"find: failed step is not found",
     {{.op = "step", .status = 5}},
     [](auto* h, auto*) { return find_db_record(h, "PCIs", "SlotNo=1"); },
     0,
     {}},
    {"find: unreadable id",
     {{.op = "column", .status = 7, .column = 0}},
     [](auto* h, auto*) { return find_db_record(h, "PCIs", "SlotNo=1"); },
     -1,
     {}},
    {"insert",
     {},
     [](auto* h, auto* v) { return insert_db_record(h, "PCIs", v); },
     kNewId,
     {},
     "7,1;8,1;NULL,5"},
    {"insert: refused",
     {{.op = "insert", .status = 13}},
     [](auto* h, auto* v) { return insert_db_record(h, "PCIs", v); },
     -1,
     {std::string("error Failed to insert record: ") + zel_db_get_error_str(13)}},
    {"delete: matching",
     {},
     [](auto* h, auto*) { return delete_db_record(h, "PCIs", "FunKey=7", nullptr, 0); },
     0,
     {"info Delete from PCIs, FunKey=7\n"},
     "8,1",
     {"FunKey=7"}},
    {"delete: all",
     {},
     [](auto* h, auto*) { return delete_db_record(h, "PCIs", nullptr, nullptr, 0); },
     0,
     {"info Delete from PCIs, null\n"},
     "",
     {"(null)"}},
    {"delete: none",
     {},
     [](auto* h, auto*) { return delete_db_record(h, "PCIs", "FunKey=9", nullptr, 0); },
     0,
     {},
     "7,1;8,1",
     {"FunKey=9"}},
    {"delete: refused",
     {{.op = "delete", .status = 5}},
     [](auto* h, auto*) { return delete_db_record(h, "PCIs", nullptr, nullptr, 0); },
     kBusy,
     {"error failed to delete db records", "error table=PCIs, where=null"},
     "7,1;8,1",
     {"(null)"}},
    {"delete: null handle",
     {},
     [](auto*, auto*) { return delete_db_record(nullptr, "PCIs", nullptr, nullptr, 0); },
     kInvalid,
     {}},
    {"update: filter holds",
     {},
     [](auto* h, auto* v) { return update_db_record(h, "PCIs", "FunKey=8", v, "SlotNo!=5 OR 0"); },
     2,
     {},
     "7,1;8,5",
     {"_id=2 AND (SlotNo!=5 OR 0)"}},
    {"update: ruled out",
     {},
     [](auto* h, auto* v) { return update_db_record(h, "PCIs", "FunKey=8", v, "SlotNo!=1"); },
     2,
     {},
     "7,1;8,1",
     {"_id=2 AND (SlotNo!=1)"}},
    {"update: no filter",
     {},
     [](auto* h, auto* v) { return update_db_record(h, "PCIs", "SlotNo=1", v, nullptr); },
     1,
     {},
     "7,5;8,1",
     {"_id=1"}},
    {"update: no row",
     {},
     [](auto* h, auto* v) { return update_db_record(h, "PCIs", "FunKey=9", v, nullptr); },
     0,
     {}},
    {"update: refused",
     {},
     [](auto* h, auto* v) { return update_db_record(h, "PCIs", "FunKey=8", v, "("); },
     -1,
     {"error Failed to update record:", "error table=PCIs", "error filter=_id=2 AND (()"},
     "7,1;8,1",
     {"_id=2 AND (()"}},
    {"insert or update: inserts",
     {},
     [](auto* h, auto* v) { return insert_or_update_db_record(h, "PCIs", "FunKey=9", v, "1"); },
     kNewId,
     {},
     "7,1;8,1;NULL,5"},
    {"insert or update: a failed lookup inserts nothing",
     {{.op = "query", .status = 2}},
     [](auto* h, auto* v) { return insert_or_update_db_record(h, "PCIs", "FunKey=9", v, nullptr); },
     -1,
     {"error Failed to query record:", "error table=PCIs", "error where=FunKey=9",
      "error insert/update record failed: table=PCIs, where=FunKey=9",
      "error insert/update record failed: filter=null"}},
    {"insert or update: id 0 is a failure",
     {{.op = "insert", .status = 0}},
     [](auto* h, auto* v) { return insert_or_update_db_record(h, "PCIs", "FunKey=9", v, "1"); },
     0,
     {"error insert/update record failed: table=PCIs, where=FunKey=9",
      "error insert/update record failed: filter=1"}},
    {"update by slot: entries in name order, every row of the slot",
     {},
     [](auto*, auto*) {
       update_pci_table("PCIs", {{"SlotNo", "6"}, {"BusNo", ""}, {"DeviceNo", "1"}}, 1);
       return int64_t{0};
     },
     0,
     {"error update_pci_table: sql failed: update PCIs set BusNo='', DeviceNo='1', SlotNo='6' where "
      "SlotNo=1"}},
    {"update by slot",
     {},
     [](auto*, auto*) {
       update_pci_table("PCIs", {{"SlotNo", "6"}}, 1);
       update_pci_table("PCIs", {}, 6);
       return int64_t{0};
     },
     0,
     {},
     "7,6;8,6"},
};

TEST_P(RecordHelpers, Behave) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    database.run_all({"DELETE FROM PCIs", "INSERT INTO PCIs (_id, FunKey, SlotNo) VALUES (1, 7, 1)",
                      "INSERT INTO PCIs (_id, FunKey, SlotNo) VALUES (2, 8, 1)"});
    shim().reset();
    libc().logs.clear();
    for (const Rule& rule : c.rules) shim().fail(rule);
    const int64_t result = c.call(handle, values);
    const bool is_new = c.result == kNewId && result > 2;
    EXPECT_EQ(is_new ? kNewId : result, c.result);
    Texts where;
    for (const Call& call : shim().calls()) {
      if (call.op == "update" || call.op == "delete") where.push_back(call.where);
    }
    EXPECT_EQ(where, c.where);
    EXPECT_EQ(libc().logs, c.logs);
    EXPECT_EQ(slots(), c.slots);
    EXPECT_EQ(shim().alive(), "1 content values alive;");
  }
}

TEST_P(RecordHelpers, PutsAnEmptyTextAsNull) {
  using Bytes = const unsigned char*;
  EXPECT_EQ(put_text_value(values, "CardName", reinterpret_cast<Bytes>("x")), 0);
  EXPECT_EQ(put_text_value(values, "ConnectorType", reinterpret_cast<Bytes>("")), 0);
  EXPECT_GT(insert_db_record(handle, "PCIAdapter", values), 0);
  EXPECT_EQ(database.text("SELECT CardName, ConnectorType, SlotNo FROM PCIAdapter"), "x,NULL,5");
}

}  // namespace
}  // namespace zeldb_test
