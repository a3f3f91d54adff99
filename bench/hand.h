// SPDX-License-Identifier: Apache-2.0
//
// The works written by hand over the statements of a client. A client has the databases open and kept
// statements: bind values, step, read cells in place, reset.
#ifndef BENCH_HAND_H
#define BENCH_HAND_H

#include <array>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "bench/records.h"
#include "bench/setting_columns.h"
#include "bench/works.h"

namespace bench {

// The members of a record in the order of the columns that fill them.
template <auto... members>
struct Members {};

using SettingMembers =
    Members<&ListRow::SettingID, &ListRow::SettingName, &ListRow::PendingValue, &ListRow::CurrentValue,
            &ListRow::PfaKey, &ListRow::GroupID, &ListRow::GroupName, &ListRow::Mriname, &ListRow::ShortDesc,
            &ListRow::FullDesc, &ListRow::Defvalue, &ListRow::RecordId, &ListRow::Type, &ListRow::Flags,
            &ListRow::Minim, &ListRow::Maxim, &ListRow::Step, &ListRow::Numchoices, &ListRow::Choices,
            &ListRow::Mininstances, &ListRow::Maxinstances>;
inline constexpr const char* kSettingsSql =
    "SELECT SettingID,SettingName,PendingValue,CurrentValue,PfaKey,GroupID,GroupName,Mriname,ShortDesc,"
    "FullDesc,Defvalue,RecordId,Type,Flags,Minim,Maxim,Step,Numchoices,Choices,Mininstances,Maxinstances "
    "FROM PCISetting";

using D = aim_disk_info_t;
using DriveMembers = Members<&D::PCIFuncKey, &D::SlotNo, &D::CtrlType, &D::BayNo, &D::LocationId,
                             &D::Location, &D::DriveType, &D::MediaType, &D::FruNo, &D::PartNo, &D::SerialNo,
                             &D::Model, &D::UUID, &D::Manufacture, &D::FwVersion, &D::Capacity, &D::SFlags,
                             &D::Warning, &D::Temperature, &D::RemainLife, &D::InfoMask>;
inline constexpr const char* kDrivesSql =
    "SELECT PCIFuncKey,SlotNo,CtrlType,BayNo,LocationId,Location,DriveTypeId,MediaTypeId,FruNo,PartNo,"
    "SerialNo,Model,UUID,Manufacture,FwVersion,Capacity,SFlags,Warning,Temperature,RemainLife,InfoMask FROM "
    "AimDisks";

using F = _ZELDB_PCI_Generic_Info;
using FunctionMembers =
    Members<&F::_id, &F::BridgeId, &F::SegNo, &F::BusNo, &F::DeviceNo, &F::FunctionNo, &F::VendorId,
            &F::DeviceId, &F::RevId, &F::ClsCode, &F::SubVendorId, &F::SubDeviceId, &F::SlotNo, &F::Location,
            &F::SlotDesignation, &F::SlotType, &F::SlotDataBusWidth, &F::Hotplug, &F::PCIType,
            &F::BladeSlotPort, &F::NodeIndex, &F::FunType, &F::LanesInUse, &F::MaxLanes, &F::MaxPCIeType,
            &F::PCIeType, &F::DevKey>;
inline constexpr const char* kFunctionSql =
    "SELECT _id,BridgeId,SegNo,BusNo,DeviceNo,FunctionNo,VendorId,DeviceId,RevId,ClsCode,SubVendorId,"
    "SubDeviceId,SlotNo,Location,SlotDesignation,SlotType,SlotDataBusWidth,Hotplug,PCIType,BladeSlotPort,"
    "NodeIndex,FunType,LanesInUse,MaxLanes,MaxPCIeType,PCIeType,DevKey FROM PCIs WHERE FunKey=?";

inline constexpr const char* kFindSql = "SELECT _id FROM PCISetting WHERE SettingID=?";
inline constexpr const char* kKeySql = "SELECT AIMSupported,OOBSrc FROM PCIAdapter WHERE PCIFuncKey=?";
inline constexpr const char* kPropertySql = "SELECT propValue FROM propertiesDCTbl WHERE propName=?";

template <class Record, class Cell>
constexpr char letter(Cell Record::* /*member*/) {
  return std::is_array_v<Cell> ? 't' : 'n';
}
template <auto... members>
std::string letters(Members<members...> /*columns*/) {
  return {letter(members)...};
}

template <class Statement, size_t N>
void read_cell(Statement& statement, int column, char (&field)[N]) {
  statement.text(column, field, N);
}
template <class Statement, class Number>
void read_cell(Statement& statement, int column, Number& field) {
  field = static_cast<Number>(statement.number(column));
}
template <class Statement, class Record, auto... members>
void read_row(Statement& statement, Record& record, Members<members...> /*columns*/) {
  int column = 0;
  (read_cell(statement, column++, record.*members), ...);
}

std::string insert_sql();
std::string read_sql();
// A bit for each compared text that is empty: each such shape has an update statement of its own.
uint32_t shape_of(const PCISetting_info& record);
std::string update_sql(const PCISetting_info& record);

// Keeps a statement for each form of call.
template <class Client>
class HandReplayer : public Replayer {
 public:
  explicit HandReplayer(std::string where) : where_(std::move(where)) {}

  // In one transaction of each database, where that is known to be faster.
  void replay(const Calls& calls) override {
    for (const Call& call : calls.calls) replay(call, calls.statements[call.statement]);
    for (std::unique_ptr<Client>& client : clients_) {
      if (Client::kTuned && client != nullptr) client->run("COMMIT");
    }
    begun_ = {};
  }

 private:
  using Statement = typename Client::Statement;

  Client& client(bool properties) {
    std::unique_ptr<Client>& client = clients_[properties];
    if (client == nullptr) client = std::make_unique<Client>(where_, properties);
    if (Client::kTuned && !std::exchange(begun_[properties], true)) client->run("BEGIN");
    return *client;
  }

  void replay(const Call& call, const Template& form) {
    Client& database = client(call.properties);
    if (statements_.size() <= call.statement) statements_.resize(call.statement + 1);
    std::unique_ptr<Statement>& kept = statements_[call.statement];
    if (kept == nullptr) kept = std::make_unique<Statement>(database, form.sql, form.parameters, "");
    Statement& statement = *kept;
    for (int i = 0; const Value& value : call.values) {
      if (value.is_text) {
        statement.bind(++i, value.text.c_str());
      } else {
        statement.bind(++i, value.number);
      }
    }
    while (statement.step()) {
      for (int i = 0; i < statement.columns(); ++i) number_ = statement.cell(i, cell_, sizeof(cell_));
    }
    statement.reset();
  }

  std::string where_;
  std::array<std::unique_ptr<Client>, 2> clients_;
  std::array<bool, 2> begun_ = {};
  std::vector<std::unique_ptr<Statement>> statements_;
  char cell_[2048];
  volatile int64_t number_ = 0;
};

template <class Client>
class Hand : public Works {
 public:
  explicit Hand(const std::string& where) : where_(where), client_(where, false) {}

  void clear_settings() override { client_.run(Client::kClear); }

  void store(const PCISetting_info& record) override {
    if constexpr (Client::kTuned) key_filter(record, text_);
    find_.bind(1, text_at(record, kStored[0]));
    const int64_t id = find_.step() ? find_.number(0) : 0;
    find_.reset();
    if constexpr (Client::kTuned) change_filter(record, text_);
    write(record, id);
  }

  // Builds none of the texts of the conditions, which serve the writing statement alone.
  void store_compared(const PCISetting_info& record) override {
    read_.bind(1, text_at(record, kStored[0]));
    const int64_t id = read_.step() ? read_.number(std::size(kStored)) : 0;
    const bool same = id != 0 && is_same(record);
    read_.reset();
    if (!same) write(record, id);
  }

  unsigned list_settings() override { return list<ListRow>(settings_, kSettings, SettingMembers()); }
  unsigned list_drives() override { return list<D>(drives_, kSettings, DriveMembers()); }

  unsigned aim_supported(uint32_t function_key) override {
    if constexpr (Client::kTuned) function_filter(function_key, text_);
    key_.bind(1, int64_t{function_key});
    if (!key_.step()) give_up("no such function");
    const auto supported = static_cast<unsigned>(key_.number(0));
    source_ = static_cast<unsigned>(key_.number(1));
    key_.reset();
    return supported;
  }

  unsigned device_id(uint32_t function_key) override {
    F record;
    function_.bind(1, int64_t{function_key});
    if (!function_.step()) give_up("no such function");
    read_row(function_, record, FunctionMembers());
    function_.reset();
    return record.DeviceId;
  }

  unsigned property() override {
    Client client(where_, true);
    Statement statement(client, kPropertySql, "t", "t");
    statement.bind(1, kProperty);
    char value[1024];
    if (!statement.step()) give_up("no such property");
    statement.text(0, value, sizeof(value));
    return static_cast<unsigned char>(value[1]);
  }

  void replay(const Calls& calls) override {
    std::unique_ptr<HandReplayer<Client>>& replayer = replayers_[&calls];
    if (replayer == nullptr) replayer = std::make_unique<HandReplayer<Client>>(where_);
    replayer->replay(calls);
  }

 private:
  using Statement = typename Client::Statement;

  template <class Record, class Columns>
  unsigned list(Statement& statement, unsigned most, Columns columns) {
    const std::unique_ptr<Record[]> rows(new Record[most]);
    unsigned count = 0;
    while (statement.step()) {
      if (count == most) give_up("too many rows");
      read_row(statement, rows[count++], columns);
    }
    statement.reset();
    return count;
  }

  static int bind_columns(Statement& statement, const PCISetting_info& record,
                          std::span<const Column> columns, bool only_full, int place = 1) {
    for (const Column& column : columns) {
      const char* const text = text_at(record, column);
      if (!column.text) {
        statement.bind(place++, int64_t{number_at(record, column)});
      } else if (*text != '\0') {
        statement.bind(place++, text);
      } else if (!only_full) {
        statement.bind_null(place++);
      }
    }
    return place;
  }

  bool is_same(const PCISetting_info& record) {
    for (int i = 0; const Column& column : kStored) {
      if (!column.text) {
        if (read_.number(i++) != int64_t{number_at(record, column)}) return false;
        continue;
      }
      read_.text(i++, cell_, sizeof(cell_));
      if (std::strcmp(cell_, text_at(record, column)) != 0) return false;
    }
    return true;
  }

  void write(const PCISetting_info& record, int64_t id) {
    Statement& statement = id == 0 ? insert_ : update(record);
    int place = bind_columns(statement, record, kStored, false);
    if (id != 0) {
      statement.bind(place++, id);
      bind_columns(statement, record, kCompared, true, place);
    }
    statement.step();
    statement.reset();
  }

  Statement& update(const PCISetting_info& record) {
    const auto [place, fresh] = updates_.try_emplace(shape_of(record));
    if (fresh) {
      std::string in = kStoredLetters + "n";
      for (const Column& column : kCompared) {
        if (!column.text || *text_at(record, column) != '\0') in.push_back(column.text ? 't' : 'n');
      }
      place->second = std::make_unique<Statement>(client_, update_sql(record), in, "");
    }
    return *place->second;
  }

  inline static const std::string kStoredLetters = [] {
    std::string all;
    for (const Column& column : kStored) all.push_back(column.text ? 't' : 'n');
    return all;
  }();

  std::string where_;
  Client client_;
  std::string text_;
  Statement find_{client_, kFindSql, "t", "n"};
  Statement read_{client_, read_sql(), "t", kStoredLetters + "n"};
  Statement insert_{client_, insert_sql(), kStoredLetters, ""};
  Statement key_{client_, kKeySql, "n", "nn"};
  Statement function_{client_, kFunctionSql, "n", letters(FunctionMembers())};
  Statement settings_{client_, kSettingsSql, "", letters(SettingMembers())};
  Statement drives_{client_, kDrivesSql, "", letters(DriveMembers())};
  std::unordered_map<uint32_t, std::unique_ptr<Statement>> updates_;
  std::unordered_map<const Calls*, std::unique_ptr<HandReplayer<Client>>> replayers_;
  char cell_[2048];
  volatile unsigned source_ = 0;
};

}  // namespace bench

#endif
