// SPDX-License-Identifier: Apache-2.0
//
// The contract of the table access, on every engine.
#include <set>

#include "tests/platform/zel_db/client.h"

namespace zeldb_test {
namespace {

class Contract : public DatabaseTest {
 protected:
  Client handle;
  zel_db_content_values_t* const values = zel_db_get_content_values(handle);
  void TearDown() override { zel_db_free_content_values(values); }

  void insert_card(const std::string& name) const {
    zel_db_content_clear(values);
    zel_db_content_put_text(values, "CardName", name.c_str());
    ASSERT_EQ(zel_db_insert(handle, "PCIAdapter", values, 0, nullptr), 0) << name;
  }
};
ZELDB_ON_EVERY_ENGINE(Contract);

TEST_P(Contract, SubSelectsAreAskedAnew) {
  raw(handle, "insert into PCIAdapter (PCIKey) values (1), (NULL)");
  const std::pair<const char*, const char*> cases[] = {{"delete from PCIs", "2"},
                                                       {"insert into PCIs (FunKey) values (7)", "1"},
                                                       {"update PCIs set FunKey=1", "0"}};
  for (int round = 0; round < 2; ++round) {
    for (const auto& [change, expected] : cases) {
      raw(handle, change);
      const char* const where = "PCIKey NOT IN (SELECT FunKey FROM PCIs WHERE FunKey IS NOT NULL)";
      EXPECT_EQ(query(handle, "PCIAdapter", "count(*)", where), expected) << change;
    }
  }
}

// Wherever the caller asks for no other order; also where a planner would rather start elsewhere.
TEST_P(Contract, RowsComeAsTheyWereInserted) {
  std::string keys;
  for (int i = 40; i > 0; --i) {
    const std::string key = std::to_string(i * 7 % 41);
    raw(handle, "insert into Disks (RAIDCtrlId) values (1)");
    raw(handle, "insert into VPDs (HardwareId) values (" + key + ")");
    raw(handle, "insert into PCIs (DevKey, Location) values (" + std::to_string(i) + ",1)");
    raw(handle,
        "insert into PCIAdapter (PCIKey, PCIFuncKey, SlotNo) values (" + key + "," + key + "," + key + ")");
    raw(handle, "insert into PCISetting (SettingID, PfaKey, Flags) values ('a" + key + "',1,0)");
    keys += (keys.empty() ? "" : ";") + key;
  }
  const char* const cases[][4] = {
      // table, column, where, order
      {"VPDs", "HardwareId", "HardwareId IN (SELECT _id FROM Disks WHERE RAIDCtrlId IN (SELECT 1))", ""},
      {"PCIAdapter", "DISTINCT PCIFuncKey", "PCIKey in (select DevKey from PCIs where Location=1)", ""},
      {"PCIAdapter", "PCIKey", "", ""},
      {"PCIAdapter", "PCIFuncKey", "SlotNo>0", ""},
      {"PCIAdapter", "PCIFuncKey", "SlotNo BETWEEN 1 AND 20 OR PCIKey>20", ""},
      {"PCIAdapter", "SlotNo", "1=1 ORDER BY Location", ""},
      {"PCIAdapter", "SlotNo", "PCIKey!=99", "NodeNo, Location"},
      {"PCIAdapter", "SlotNo", "1=1", ""},
      {"PCIAdapter", "SlotNo", "SlotNo>0 -- all", ""},
  };
  for (const auto& [table, column, where, order] : cases) {
    EXPECT_EQ(query(handle, table, column, where, {}, order), keys) << table << " " << where;
  }
  EXPECT_EQ(query(handle, "PCIAdapter", "SlotNo,1,true"), replaced(keys, ";", ",1,1;") + ",1,1");
  const std::string settings = "a" + replaced(keys, ";", ";a");
  for (const char* where : {"PfaKey=1", "PfaKey=1 AND Flags = 0", "PfaKey=1 AND SettingID like 'a%'", ""}) {
    EXPECT_EQ(query(handle, "PCISetting", "SettingID", where), settings) << where;
  }
  EXPECT_EQ(query(handle, "PCISetting", "PfaKey", "1 GROUP BY PfaKey"), "1");
  EXPECT_EQ(query(handle, "PCIAdapter", "PCIKey", "1=1 ORDER BY PCIKey DESC LIMIT 2"), "40;39");
  EXPECT_EQ(query(handle, "PCIAdapter", "PCIKey", "PCIKey<3", {}, "PCIKey"), "1;2");
}

TEST_P(Contract, QueriesArePastedAsTheyStand) {
  raw(handle,
      "insert into PCIAdapter (PCIKey, PCIFuncKey, SlotNo, CardName) values"
      " (7, 30, 1, 'c'), (7, 10, 2, 'a'), (8, 20, NULL, 'b')");
  const char* const cases[][4] = {
      // columns, where, order, expected
      {"_id,CardName", "", nullptr, "1,c;2,a;3,b"},
      {"CardName", "", "PCIFuncKey ASC", "a;b;c"},
      {"DISTINCT PCIKey", "", "PCIKey", "7;8"},
      {"count(*),sum(SlotNo)", "SlotNo>=1", nullptr, "2,3"},
      {"PCIKey,count(*)", "1 GROUP BY PCIKey", "", "7,2;8,1"},
      {"SlotNo", "CardName='b'", nullptr, "NULL"},
      {"_id", "PCIKey=9", nullptr, ""},
      {"_id", "PCIKey IN (select PCIKey from PCIAdapter where CardName=\"b\") ;", nullptr, "3"},
      {"_id", "PCIKey=8;", "_id", "status 2"},
      {"_id", "PCIKey=8; DELETE FROM PCIAdapter", nullptr, "status 2"},
      {"_id", "", "_id; DELETE FROM PCIAdapter", "status 2"},
      {"_id", "PCIKey=8)", nullptr, "status 2"},
      {"_id", "CardName=\"b", nullptr, "status 2"},
      {"_id", "CardName=15B3A2D4", nullptr, "status 2"},
      {"_id", "CardName=''1", nullptr, "status 2"},
      {"_id", "CardName='a'AND PCIKey=7", nullptr, "2"},
      {"_id", "CardName||'x'='cx' /* x", nullptr, "1"},
      {"_id", "PCIKey=8 /*! OR PCIKey=7 */ -- x", "_id", "3"},
      {"_id", "PCIKey=8--1", nullptr, "3"},
      {"_id", "PCIKey=8 # x", nullptr, "status 2"},
      {"NoColumn", "", nullptr, "status 2"},
  };
  for (const auto& [columns, where, order, expected] : cases) {
    EXPECT_EQ(query(handle, "PCIAdapter", columns, where, {}, order), expected) << columns << " | " << where;
  }
  zel_db_result_t* result = nullptr;
  EXPECT_EQ(zel_db_query(handle, "NoTable", nullptr, 0, nullptr, nullptr, 0, nullptr, &result), 2);
  EXPECT_EQ(zel_db_query(handle, "PCIAdapter", nullptr, 0, nullptr, nullptr, 0, nullptr, &result), 0);
  EXPECT_EQ(taken(result).substr(0, 9), "1,7,30,NU");
}

TEST_P(Contract, TextsAreBytes) {
  std::string all;
  for (int byte = 1; byte <= 0xFF; ++byte) all.push_back(static_cast<char>(byte));
  const std::string names[] = {"Status", "Rowid", "abc", "ABC",   "abc ", "say \"hi\"",
                               "it's",   "a\\",   "?",   "x;--y", "",     all};
  for (const std::string& name : names) insert_card(name);
  for (size_t i = 0; i < std::size(names); ++i) {
    const std::string id = std::to_string(i + 1);
    EXPECT_EQ(query(handle, "PCIAdapter", "CardName", "_id=" + id), names[i]);
    for (const char quote : {'"', '\''}) {
      std::string literal(1, quote);
      for (const char c : names[i]) literal.append(c == quote ? 2 : 1, c);
      literal += quote;
      EXPECT_EQ(query(handle, "PCIAdapter", "_id", "CardName=" + literal), id) << literal;
      EXPECT_EQ(raw(handle, "select count(*) from PCIAdapter where CardName!=" + literal), "11") << literal;
    }
  }
  EXPECT_EQ(query(handle, "PCIAdapter", "_id", "CardName like \"ab%\""), "3;5");
}

// The results of the accessors of a column: "!" and the status, the number (77 if it was left alone), the
// text.
std::string read_all(zel_db_result_t* result, int column) {
  std::string line;
  const auto add = [&](auto read, auto value) {
    const int status = read(result, column, &value);
    line += (status != 0 ? "!" + std::to_string(status) + " " : "") + std::to_string(value) + " ";
  };
  add(zel_db_result_column_int, int32_t{77});
  add(zel_db_result_column_uint, uint32_t{77});
  add(zel_db_result_column_int64, int64_t{77});
  add(zel_db_result_column_uint64, uint64_t{77});
  add(zel_db_result_column_short_uint, uint16_t{77});
  add(zel_db_result_column_uchar, uint8_t{77});
  char text[32] = "before";
  const int status = zel_db_result_column_text(result, column, text, sizeof text);
  return line + (status != 0 ? "!" + std::to_string(status) : "") + "[" + text + "]";
}

TEST_P(Contract, ValuesAreParsedCutAndNarrowed) {
  const std::string no_number = "!8 77 !8 77 !8 77 !8 77 !8 77 !8 77 ";
  const std::pair<std::string, std::string> cases[] = {
      {"-1", "-1 4294967295 -1 18446744073709551615 65535 255 [-1]"},
      {"4295032834", "65538 65538 4295032834 4295032834 2 2 [4295032834]"},
      {"'-300'", "-300 4294966996 -300 18446744073709551316 65236 212 [-300]"},
      {"'4.0000'", "4 4 4 4 4 4 [4.0000]"},
      {"'18446744073709551615'", "-1 4294967295 -1 18446744073709551615 65535 255 [18446744073709551615]"},
      {"'18446744073709551616'", no_number + "[18446744073709551616]"},
      {"'-9223372036854775809'", no_number + "[-9223372036854775809]"},
      {"'0x10'", no_number + "[0x10]"},
      {"'12 '", no_number + "[12 ]"},
      {"''", no_number + "[]"},
      {"x'3132'", no_number + "[12]"},
      {"NULL", "!7 77 !7 77 !7 77 !7 77 !7 77 !7 77 !7[]"},
      {"0 limit 0", "!3 77 !3 77 !3 77 !3 77 !3 77 !3 77 !3[]"},  // no row
  };
  for (const auto& [expression, expected] : cases) {
    zel_db_result_t* result = nullptr;
    ASSERT_EQ(zel_db_raw_query(handle, ("select " + expression).c_str(), 99, &result), 0);
    zel_db_result_step(result);
    EXPECT_EQ(read_all(result, 0), expected) << expression;
    EXPECT_EQ(zel_db_result_column_is_null(result, 0) != 0,
              expected.ends_with("!7[]") || expected.ends_with("!3[]"));
    zel_db_free_result(result);
  }
}

TEST_P(Contract, ColumnsAreFoundByPlaceAndByName) {
  const Client properties("propertiesdb");
  raw(properties, "insert into propertiesDCTbl (propName, propValue) values ('abcdef', x'020041ff')");
  zel_db_result_t* result = nullptr;
  ASSERT_EQ(zel_db_raw_query(properties, "select _id, propName, propValue from propertiesDCTbl", 99, &result),
            0);
  ASSERT_EQ(zel_db_result_step(result), 9);
  EXPECT_EQ(read_all(result, 3), "!12 77 !12 77 !12 77 !12 77 !12 77 !12 77 !12[]");
  EXPECT_EQ(read_all(result, -1), read_all(result, 3));
  char bytes[8];
  unsigned size = sizeof bytes;
  EXPECT_EQ(zel_db_result_column_blob(result, 2, bytes, &size), 0);
  EXPECT_EQ(std::string(bytes, size), std::string("\2\0A\xff", 4));
  size = 2;
  EXPECT_EQ(zel_db_result_column_bytes(result, 1, bytes, &size), 0);
  EXPECT_EQ(std::string(bytes, size), "ab");
  EXPECT_EQ(extract_str_column_from_result(result, "propName", bytes, 4), 0);
  EXPECT_STREQ(bytes, "abc");
  EXPECT_EQ(zel_db_result_column_text(result, 1, bytes, 0), 3);
  uint32_t number = 77;
  EXPECT_EQ(extract_uint_column_from_result(result, "none", &number), 12);
  EXPECT_EQ(number, 77U);
  EXPECT_EQ(extract_uint_column_from_result(result, "_id", &number), 0);
  EXPECT_EQ(number, 1U);
  zel_db_free_result(result);
}

TEST_P(Contract, ResultsAreCompleteBeforeTheCallReturns) {
  for (const char* name : {"a", "b", "c"}) insert_card(name);
  zel_db_result_t* outer = nullptr;
  ASSERT_EQ(zel_db_raw_query(handle, "select _id from PCIAdapter order by _id", 99, &outer), 0);
  EXPECT_EQ(zel_db_result_row_count(outer), 3U);
  std::string seen;
  while (zel_db_result_step(outer) == 9 && seen.size() < 9) {
    insert_card("new");
    EXPECT_EQ(query(handle, "PCIAdapter", "count(*)", "CardName=\"new\""), "1");
    EXPECT_EQ(zel_db_delete(handle, "PCIAdapter", "CardName=\"new\"", nullptr, 0, nullptr), 0);
    seen += read_all(outer, 0)[0];
  }
  EXPECT_EQ(seen, "123");
  EXPECT_EQ(zel_db_result_step(outer), 10);
  EXPECT_EQ(zel_db_result_reset(outer), 0);
  EXPECT_EQ(taken(outer), "1;2;3");
}

TEST_P(Contract, RawStatementsAreOneAndEndAtTheirCapacity) {
  insert_card("a");
  EXPECT_EQ(raw(handle, "select count(*) from PCIAdapter; nonsense", 32), "1");
  for (const char* sql : {"select count(*) from PCIAdapter; nonsense", "", " ; ", "selec 1", "select 'x"}) {
    EXPECT_EQ(raw(handle, sql), "status 2") << sql;
  }
  EXPECT_EQ(raw(handle, "select ?"), "status 3");
  EXPECT_EQ(zel_db_raw_query(handle, "update PCIAdapter set CardName='x', SlotNo='12';", 99, nullptr), 0);
  EXPECT_EQ(raw(handle, "select CardName, SlotNo from PCIAdapter where SlotNo=12;"), "x,12");
  EXPECT_EQ(raw(handle, "create table More (Name varchar(9) default 'it''s; ?', Value integer);"), "");
  EXPECT_EQ(raw(handle, "insert into More (Value) values (\"5\")"), "");
  EXPECT_EQ(raw(handle, "select * from More"), "it's; ?,5");
}

TEST_P(Contract, ContentValuesAreOrderedAndBound) {
  int64_t number = 0;
  EXPECT_EQ(zel_db_update(handle, "PCIAdapter", values, nullptr, nullptr, 0, nullptr), 3);
  EXPECT_EQ(zel_db_insert(handle, "PCIAdapter", values, 0, &number), 0);
  EXPECT_EQ(number, 1);
  zel_db_content_put_text(values, "CardName", "replaced");
  zel_db_content_put_uchar(values, "SlotNo", 255);
  zel_db_content_put_short_uint(values, "SegNo", 65535);
  zel_db_content_put_uint(values, "PCIKey", 4294967295U);
  zel_db_content_put_int(values, "PCIFuncKey", -1);
  zel_db_content_put_uint64(values, "BusNo", uint64_t{1} << 62U);
  zel_db_content_put_text(values, "ConnectorType", nullptr);
  zel_db_content_put_null(values, "AIMSupported");
  zel_db_content_put_text(values, "CardName", "x\"'; DROP TABLE PCIAdapter --");
  EXPECT_EQ(zel_db_content_put_null(values, ""), 3);
  ASSERT_EQ(zel_db_insert(handle, "PCIAdapter", values, 0, &number), 0);
  const char* columns = "CardName,SlotNo,SegNo,PCIKey,PCIFuncKey,BusNo,ConnectorType,AIMSupported,OOBSrc";
  EXPECT_EQ(query(handle, "PCIAdapter", columns, "_id=2"),
            "x\"'; DROP TABLE PCIAdapter --,255,65535,4294967295,-1,4611686018427387904,NULL,NULL,0");

  zel_db_content_clear(values);
  zel_db_content_put_text(values, "CardName", "y");
  for (const auto& [where, matched] : {std::pair("SlotNo=255", 1), {"CardName=\"y\"", 1}, {"_id=9", 0}}) {
    EXPECT_EQ(zel_db_update(handle, "PCIAdapter", values, where, nullptr, 0, &number), 0) << where;
    EXPECT_EQ(number, matched) << where;  // changed or not
  }
  for (const auto& [where, matched] : {std::pair("_id=9", 0), {"_id=2", 1}, {"", 1}}) {
    EXPECT_EQ(zel_db_delete(handle, "PCIAdapter", where, nullptr, 0, &number), 0) << where;
    EXPECT_EQ(number, matched) << where;
  }
  ASSERT_EQ(zel_db_insert(handle, "PCIAdapter", values, 0, &number), 0);
  EXPECT_EQ(number, 3);  // ids are not given out again
}

TEST_P(Contract, ParametersTakeTheirPlaceAmongLiterals) {
  raw(handle, "insert into PCIs (FunKey, DevKey) values (4294967295, 1), (-1, 1), (7, 2)");
  const std::tuple<const char*, Params, const char*> cases[] = {
      {"FunKey=?", {{3, 0, 1, 0xFFFFFFFF}}, "1"},
      {"FunKey=?", {{2, 0, 1, 0xFFFFFFFF}}, "2"},
      {"DevKey=2 AND FunKey=? AND DevKey=\"2\" AND DevKey<?", {{3, 0, 1, 0x1200000007}, {2, 0, 1, 3}}, "3"},
      {"FunKey=?", {{4, 0, 1, 7}}, "status 3"},
      {"FunKey=?", {}, "status 3"},
      {"FunKey='?'", {{3, 0, 1, 7}}, "status 3"},
      {"FunKey=? OR FunKey=?", {{3, 0, 1, 7}}, "status 3"},
  };
  for (const auto& [where, params, expected] : cases) {
    EXPECT_EQ(query(handle, "PCIs", "_id", where, params), expected) << where;
  }
  raw(handle, "insert into PCIAdapter (CardName) values ('12'), ('012'), ('twelve'), ('0'), ('')");
  EXPECT_EQ(query(handle, "PCIAdapter", "_id", "CardName=?", {{3, 0, 1, 12}}), "1");
  EXPECT_EQ(query(handle, "PCIAdapter", "_id", "CardName=?", {{2, 0, 1, 0}}), "4");
}

// A column of numbers compares all their digits, one of texts compares texts. Location is both.
TEST_P(Contract, NumbersAreComparedAsTheirColumnIs) {
  raw(handle,
      "insert into PCIAdapter (PCIKey, CardName) values (9007199254740992, '9007199254740992'), (7, '07'), "
      "(8, 'eight')");
  raw(handle, "insert into PCIs (DevKey, SlotDesignation) values (8, '8')");
  const char* const cases[][2] = {
      {"PCIKey=9007199254740993", ""},
      {"pcikey != 9007199254740993", "1;2;3"},
      {"CardName=7 OR CardName=0 OR CardName=-0", ""},
      {"PCIKey='07' OR PCIKey=\" 8.0 \"", "2;3"},
      {"PCIKey='0x8' OR PCIKey=\"8 a\" OR PCIKey>'' OR PCIKey >= '.'", ""},
      {"PCIKey!='eight' AND PCIKey<='+' AND CardName<'eights'", "1;2;3"},
      {"_id=3 AND PCIKey IN (SELECT PCIKey FROM PCIAdapter WHERE PCIKey<'eight' AND _id='3')", "3"},
      {"CardName=9007199254740992", "1"},
      {"`CardName`=7 OR _id<1", ""},
      {"PCIKey>0 AND (CardName != 07)", "1;3"},  // as it is spelled
      {"CardName=7 OR CardName=+7 OR CardName IN (7,0) OR CardName BETWEEN 6 AND 8 OR 7=CardName", ""},
      {"CardName=1E3 OR CardName=12E45678 OR CardName IN (07)", "2"},
      {"PCIKey IN ('five') OR PCIKey=7E0 AND PCIKey=007 OR 'eight'=PCIKey", "2"},
      {"PCIKey IN (SELECT DevKey FROM PCIs WHERE SlotDesignation=8)", "3"},
      {"PCIKey IN (SELECT DevKey FROM PCIs WHERE SlotDesignation=0)", ""},
  };
  for (const auto& [where, expected] : cases) {
    EXPECT_EQ(query(handle, "PCIAdapter", "_id", where), expected) << where;
  }
  raw(handle, "insert into AimDisks (BayNo, Location) values (8, 'Slot 8')");
  for (const char* where : {"Location=0 AND BayNo IN (SELECT DevKey FROM PCIs)",
                            "BayNo IN (SELECT DevKey FROM PCIs) AND Location=0",
                            "BayNo IN (SELECT DevKey FROM PCIs WHERE AimDisks.Location=0)",
                            "BayNo IN (SELECT DevKey FROM (SELECT 8 DevKey) made WHERE Location=0)"}) {
    EXPECT_EQ(query(handle, "AimDisks", "_id", where), "") << where;
  }
  raw(handle, "update PCIs set Location=1");
  raw(handle, "insert into Disks (RAIDCtrlId) values (1)");
  for (const char* from : {"Disks, AimDisks disk", "`AimDisks` disk", "Disks join AimDisks disk"}) {
    const std::string where =
        std::string("EXISTS (SELECT 1 FROM ") + from + " WHERE disk.BayNo=8 AND Location=0)";
    EXPECT_EQ(query(handle, "PCIs", "_id", where), "") << where;
  }
  for (const char* where : {"CardName IN (?) OR ?=CardName", "CardName=? OR CardName=/**/?"}) {
    EXPECT_EQ(query(handle, "PCIAdapter", "_id", where, {{3, 0, 1, 0}, {2, 0, 1, 7}}), "") << where;
  }
  // Two minus signs to a server, a comment to us.
  EXPECT_EQ(query(handle, "PCIAdapter", "PCIKey--1", "PCIKey=7"),
            database.kind() == Engine::Sqlite ? "status 2" : "8");
}

TEST_P(Contract, TheSchemaRefusesTheSameValues) {
  const char* const cases[][2] = {
      {"insert into PCISetting (SettingID) values ('a.b')", ""},
      {"insert into PCISetting (SettingID) values ('A.B')", ""},
      {"insert into PCISetting (SettingID) values ('a.b')", "status 13"},
      {"insert into PCISetting (SettingID) values (NULL), (NULL)", ""},
      {"insert into PCISetting (PfaKey) values ('')", "status 13"},
      {"insert into PCISetting (PfaKey) values ('12')", ""},
      {"update PCISetting set Type='x'", "status 13"},
      {"insert into PCISetting (Type, Flags) values (-1, 4294967295)", ""},
  };
  for (const auto& [sql, expected] : cases) EXPECT_EQ(raw(handle, sql), expected) << sql;
}

TEST_P(Contract, ArgumentsAreChecked) {
  zel_db_result_t* result = nullptr;
  const char* none = nullptr;
  const int statuses[] = {
      zel_db_query(nullptr, "PCIs", nullptr, 0, nullptr, nullptr, 0, nullptr, &result),
      zel_db_query(handle, nullptr, nullptr, 0, nullptr, nullptr, 0, nullptr, &result),
      zel_db_query(handle, "PCIs", nullptr, 1, nullptr, nullptr, 0, nullptr, &result),
      zel_db_query(handle, "PCIs", &none, 1, nullptr, nullptr, 0, nullptr, &result),
      zel_db_query(handle, "PCIs", nullptr, -1, nullptr, nullptr, 0, nullptr, &result),
      zel_db_query(handle, "PCIs", nullptr, 0, nullptr, nullptr, 1, nullptr, &result),
      zel_db_query(handle, "PCIs", nullptr, 0, nullptr, nullptr, 0, nullptr, nullptr),
      zel_db_raw_query(handle, "select 1", -1, &result),
      zel_db_insert(handle, "PCIs", nullptr, 0, nullptr),
      zel_db_delete(handle, "PCIs", nullptr, nullptr, -1, nullptr),
      zel_db_close(get_dmdb_handle(0, nullptr, 0)),
  };
  for (size_t i = 0; i < std::size(statuses); ++i) EXPECT_EQ(statuses[i], 3) << "call " << i;
  std::set<std::string> texts;
  for (const int status : {0, 2, 3, 4, 5, 7, 8, 9, 10, 12, 13, 14, -1})
    texts.insert(zel_db_get_error_str(status));
  EXPECT_EQ(texts.size(), 13U);
}

}  // namespace
}  // namespace zeldb_test
