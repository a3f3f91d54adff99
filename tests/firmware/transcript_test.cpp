// SPDX-License-Identifier: Apache-2.0
//
// Plays transcripts: in each file of transcripts/ the lines that begin with "$ " are commands, the others
// what they gave. ZELDB_UPDATE_TRANSCRIPTS=1 writes the files anew; read the difference before you keep it.
//   sql STATEMENT, property STATEMENT (of the property database), show SELECT
//   set FIELD VALUE: of every record that has it; fill: with x, so that no text ends
//   fail RULE: a fault (zel_db_shim.h) for the call that follows, as JSON
//   repeat N COMMAND: shows the last time
//   FUNCTION ARGUMENT...: its status, its calls of database and log, and what it could write to
// Numbers, texts and null stand for themselves, "-" for a record, list or buffer. <200 x> is a run of 200 x.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <iterator>
#include <map>
#include <regex>
#include <sstream>

#include "db/field.h"
#include "db/product.h"
#include "db/read.h"
#include "firmware/classification.h"
#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"

namespace zeldb_test {

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE_WITH_DEFAULT(Rule, op, table, nth, status, with_result, after, fewer,
                                                column)

namespace {

using zeldb::Field;
using Pldm = _ZELDB_PldmFirmware;
using Image = _ZELDB_AdapterFirmware;
using Device = _ZELDB_EmbeddedFirmware;
using Vpd = _ZELDB_PCIVpdInfo;
using Event = _ZELDB_DpuLog;

// The fields of each record, and the record, list or buffer that calls are given.
template <typename T>
T given = {};
std::vector<Field> fields_of(...) {
  return {{"Key", zeldb::Kind::Unsigned, sizeof(uint32_t), 0, 0}};
}
std::vector<Field> listed(auto... fields) {
  return {fields...};
}
#define R(Member) ZELDB_FIELD(std::remove_pointer_t<decltype(record)>, Member)
std::vector<Field> fields_of(const Pldm* record) {
  return listed(R(DeviceName), R(DeviceType), R(PCIKey), R(PCIFuncKey), R(Location), R(SlotNo),
                R(Manufacture), R(SoftwareID), R(VersionString), R(PendingVersionString), R(PkgVersionString),
                R(ReleaseDate), R(PendingReleaseDate), R(UpdateSupport), R(Updated), R(UpdateMethod),
                R(UpdateAuxInfo), R(UpdateErrCode), R(UpdateErrString), R(Status));
}
std::vector<Field> fields_of(const Image* record) {
  return listed(R(FirmwareName), R(VersionString), R(Description), R(ReleaseDate), R(Classification),
                R(ClassificationText), R(Manufacture), R(SoftwareID));
}
std::vector<Field> fields_of(const Device* record) {
  return listed(R(DeviceName), R(DeviceIndex), R(StructRev), R(Version), R(SoftwareID), R(Class), R(Category),
                R(SubCategory), R(Checksum));
}
std::vector<Field> fields_of(const Vpd* record) {
  return listed(R(UUID), R(ProductName), R(Manufacture), R(SerialNo), R(PartNo), R(Model), R(FRUNo));
}
std::vector<Field> fields_of(const Event* record) {
  return listed(R(_id), R(Timestamp), R(GenID), R(Message));
}

void for_each_record(const std::function<void(const Field&, void*)>& act) {
  const auto visit = [&act](auto& record) {
    for (const Field& field : fields_of(&record)) act(field, &record);
  };
  visit(given<Pldm>), visit(given<Image>), visit(given<Device>), visit(given<Vpd>), visit(given<Event>);
}

template <typename T>
concept List = requires(T list) {
  list.Items;
};

// The argument of a type that a word stands for.
template <typename T>
struct Argument {
  static T take(const std::string& word) { return static_cast<T>(std::stoll(word, nullptr, 0)); }
  static void show(std::ostream& /*out*/, T /*value*/) {}
};
template <typename T>
struct Argument<T*> {
  static T* take(const std::string& word) {
    auto& target = given<std::remove_const_t<T>>;
    if constexpr (std::is_same_v<T, const char>) {
      static std::deque<std::string> texts;
      return word == "null" ? nullptr : texts.emplace_back(word).c_str();
    } else if constexpr (std::is_same_v<T, _ZELDB_AdapterFirmware_List>) {
      target = {1, word == "no-array" ? nullptr : &given<Image>};
    } else if constexpr (List<T>) {
      target = {7, &given<std::remove_pointer_t<decltype(target.Items)>>};  // rubbish
    } else if constexpr (std::is_integral_v<T>) {
      if (word != "null") target = std::stoi(word);
    }
    return word == "null" ? nullptr : &target;
  }

  static void show(std::ostream& out, T* target) {
    if (target == nullptr) return;
    if constexpr (std::is_same_v<T, _ZELDB_AdapterFirmware_List>) {
      Argument<Image*>::show(out, &given<Image>);
    } else if constexpr (List<T>) {
      auto* items = std::exchange(target->Items, nullptr);
      auto* const rubbish = &given<std::remove_pointer_t<decltype(items)>>;
      out << "   " << target->Count
          << (items == rubbish   ? " untouched\n"
              : items != nullptr ? " at\n"
                                 : "\n");
      if (items == rubbish) return;
      for (auto i = target->Count; i > 0; --i)
        Argument<decltype(items)>::show(out, items + target->Count - i);
      std::free(items);
    } else if constexpr (std::is_array_v<T> || std::is_same_v<T, int>) {
      out << "   " << *target << "\n";
    } else if constexpr (!std::is_const_v<T>) {
      std::string all;
      for (const Field& field : fields_of(target)) {
        const auto* const text = reinterpret_cast<const char*>(bytes_of(field, target));
        const bool is_text = field.kind == zeldb::Kind::Text;
        const auto value =
            is_text ? std::string(text, strnlen(text, field.size)) : std::to_string(number_of(field, target));
        if (!value.empty() && value != "0") all += std::string(" ") + field.column + "=" + value;
      }
      out << "  " << (all.empty() ? " nothing" : all) << "\n";
    }
  }
};

// Functions whose arguments are not of the common kinds.
int classification(Image* image) {
  const char* const kColumn[] = {"Classification"};
  return zeldb::read_one(zeldb::inventory(), {.table = "Firmwares", .columns = kColumn},
                         [=](const zeldb::Row& row) { zeldb::read_classification(row, 0, *image); });
}
int firmware_version(int id, char (*text)[40], int size) {
  if (text == nullptr) return zeldb_get_firmware_version(id, nullptr, size);
  std::memset(text, '.', sizeof(*text));
  const int status = zeldb_get_firmware_version(id, *text, size);
  std::replace(*text, *text + sizeof(*text) - 1, '\0', '0');
  (*text)[39] = '\0';
  return status;
}
int downstream_ids(int location, int slot, char (*text)[400], int* count) {
  char ids[8][32] = {"untouched"};
  const int status =
      zeldb_get_pldm_downstream_software_ids(location, slot, text != nullptr ? ids : nullptr, count);
  std::string all;
  for (const char* id : ids) all += std::string(id) + ",";
  if (text != nullptr) std::strcpy(*text, all.c_str());
  return status;
}

std::string next(std::istream& in) {
  std::string word;
  in >> std::quoted(word);
  return word;
}

using Player = std::function<int(std::istream&, std::ostream&)>;

template <typename... A>
std::pair<const std::string, Player> player(const char* name, int (*function)(A...)) {
  return {name, [function](std::istream& in, std::ostream& out) {
            const std::tuple<A...> arguments{Argument<A>::take(next(in))...};
            const int status = std::apply(function, arguments);
            std::apply([&out](auto... argument) { (Argument<A>::show(out, argument), ...); }, arguments);
            return status;
          }};
}
std::map<std::string, Player> players(auto... list) {
  return {list...};
}
#define F(function) player(#function, function)
const std::map<std::string, Player> kFunctions = players(
    F(zeldb_get_pldm_firmware_list), F(zeldb_get_filtered_pldm_firmware_list),
    F(zeldb_get_pldm_firmware_pending_list), F(zeldb_get_pldm_firmware_updated_list),
    F(zeldb_get_pldm_firmware_update_failure_list), F(zeldb_get_pldm_firmware_update_success_list),
    F(zeldb_get_pldm_firmware_marvell_ctrl_list), F(zeldb_get_pldm_firmware), F(zeldb_update_pldm_firmware),
    F(zeldb_clear_all_pldm_firmware_pending_status), F(zeldb_clear_pldm_firmware_by_type),
    F(zeldb_insert_or_update_pldm_firmware), F(zeldb_update_firmware), F(zeldb_update_firmware_release_date),
    F(firmware_version), F(zeldb_update_adapter_firmware_list), F(zeldb_insert_or_update_firmware_info),
    F(downstream_ids), F(zeldb_insert_or_update_vpd_info), F(zeldb_get_embedded_firmware_list),
    F(zeldb_insert_or_update_embedded_firmware_info), F(zeldb_clear_all_embedded_firmware_info),
    F(zeldb_get_dpu_keys), F(zeldb_update_dpu_uefi_version), F(dpu_clear_logs_by_slot), F(dpu_insert_log),
    F(dpu_get_log_by_slot), F(classification));

// <200 x> stands for a run of 200 x.
std::string without_runs(std::string text) {
  for (size_t at = 0; (at = text.find("xxxxxxxxx", at)) != std::string::npos;) {
    const size_t length = text.find_first_not_of('x', at) - at;
    text.replace(at, length, "<" + std::to_string(length) + " x>");
  }
  return text;
}

class Transcript : public testing::TestWithParam<std::tuple<std::string, Engine>> {
 protected:
  void play(const std::string& command) {
    std::istringstream in(command);
    const std::string verb = next(in);
    const std::string rest = command.substr(std::min(command.size(), verb.size() + 1));
    if (verb == "sql") {
      database_.run(rest);
    } else if (verb == "show") {
      seen_ += without_runs("   " + database_.text(rest) + "\n");
    } else if (verb == "property") {
      database_.run(rest, "propertiesdb");
    } else if (verb == "fail") {
      nlohmann::json::parse(rest).get_to(fault_);
    } else if (verb == "repeat") {
      const std::string before = seen_;
      for (int left = std::stoi(next(in)); left > 0; --left, seen_ = left > 0 ? before : seen_)
        play(rest.substr(rest.find(' ') + 1));
    } else if (verb == "set") {
      const std::string name = next(in);
      const std::string value = next(in);
      for_each_record([&](const Field& field, void* record) {
        auto* const bytes = bytes_of(field, record);
        if (name != field.column) return;
        if (field.kind != zeldb::Kind::Text) set_number(field, record, std::stoull(value, nullptr, 0));
        if (field.kind == zeldb::Kind::Text)
          std::snprintf(reinterpret_cast<char*>(bytes), field.size, "%s", value.c_str());
      });
    } else if (verb == "fill") {
      for_each_record(
          [](const Field& field, void* record) { std::memset(bytes_of(field, record), 'x', field.size); });
    } else {
      call(kFunctions.at(verb), in);
    }
  }

  std::string seen_;

 private:
  void call(const Player& function, std::istream& in) {
    shim().reset();
    if (!fault_.op.empty()) shim().fail(std::exchange(fault_, {}));
    std::ostringstream written;
    std::string given_back = "= " + std::to_string(function(in, written)) + "\n";
    const std::regex maker("SubVendorId=" + std::to_string(zeldb::kMakerSubVendorId));
    for (const Call& made : shim().calls()) {
      const bool others = made.table.starts_with("PCI") || made.table == "propertiesDCTbl";
      if (made.op == "open" || (made.op == "query" && others)) continue;
      if (made.table.empty() && made.op != "raw_query") continue;
      given_back += "  " + made.op + " " + made.table + made.text;
      if (!made.where.empty())
        given_back += " where " + std::regex_replace(made.where, maker, "SubVendorId=MAKER");
      for (const std::string& put : made.puts) given_back += ", " + put;
      given_back += "\n";
    }
    for (auto* lines : {&libc().syslogs, &libc().logs, &libc().debug_logs}) {
      for (const std::string& text : std::exchange(*lines, {})) {
        if (text.starts_with("debug zel_db:")) continue;
        given_back += "  log " + std::regex_replace(text, std::regex("\n"), "\\n") + "\n";
      }
    }
    seen_ += without_runs(given_back + written.str());
  }

  Database database_{std::get<Engine>(GetParam())};
  Rule fault_;
};

std::vector<std::string> transcripts() {
  std::vector<std::string> names;
  for (const auto& file : std::filesystem::directory_iterator(ZELDB_TRANSCRIPTS))
    names.push_back(file.path().stem());
  std::sort(names.begin(), names.end());
  return names;
}
INSTANTIATE_TEST_SUITE_P(Firmware, Transcript,
                         testing::Combine(testing::ValuesIn(transcripts()), testing::ValuesIn(engines())),
                         [](const auto& test) {
                           return std::get<0>(test.param) + "_" + name_of(std::get<1>(test.param));
                         });

TEST_P(Transcript, IsRepeated) {
  const std::string name = ZELDB_TRANSCRIPTS "/" + std::get<0>(GetParam()) + ".txt";
  std::ifstream file(name);
  std::string expected;
  for (std::string line; std::getline(file, line); expected += line + "\n") {
    if (line.empty() || line[0] == '$' || line[0] == '#') seen_ += line + "\n";
    if (line[0] == '$') play(line.substr(2));
  }
  if (std::getenv("ZELDB_UPDATE_TRANSCRIPTS") != nullptr) std::ofstream(name) << (expected = seen_);
  std::istringstream got(seen_);
  std::istringstream wanted(expected);
  for (std::string line, other; std::getline(wanted, other);) {
    ASSERT_EQ(std::getline(got, line) ? line : "nothing", other) << name;
  }
  EXPECT_EQ(seen_.size(), expected.size()) << name;
}

}  // namespace
}  // namespace zeldb_test
