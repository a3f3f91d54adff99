// SPDX-License-Identifier: Apache-2.0
//
// What the functions over the databases ask, write, log and return. golden/NAME.script is played,
// NAME.expected is what comes of it; ZELDB_UPDATE_GOLDEN=1 writes the latter anew, to be read before it is
// committed. In a script:
//   > CALL ARGUMENTS            one of the tables below: its result, the records it delivers, its statements,
//   its log lines;
//                               with "palomir" before CALL, on such a machine
//   ! FUNCTION TABLE STATUS N M a fault of the next call's Nth such access (0: each; TABLE "*": any), see
//                               zel_db_shim.h; STATUS 5+ comes with a result; after M rows, or with M rows
//                               less
//   -- TEXT                     a remark, repeated
//   SQL;                        run at once; {MAKER} is the maker's subsystem vendor id
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "db/product.h"
#include "tests/support/database.h"
#include "tests/support/libc_shim.h"
#include "tests/support/zel_db_shim.h"
#include "zeldb/storage.h"

namespace {
bool palomir;
}  // namespace

// In place of the platform's.
extern "C" __attribute__((visibility("default"))) int is_palomir_platform(void) {
  return palomir ? 5 : 0;
}

namespace zeldb_test {
namespace {

using Disk = aim_disk_info_t;
using List = aim_disk_list_t;

template <typename... Values>
std::string joined(const Values&... values) {
  std::ostringstream text;
  ((text << '|' << values), ...);
  return text.str().substr(1);
}

std::string shown(const Disk& d) {
  return joined(d.SerialNo, d.PCIFuncKey, d.SlotNo, +d.CtrlType, d.BayNo, +d.LocationId, +d.DriveTypeId,
                d.FormFactor, +d.HealthStatus, d.Location, d.DriveType, d.MediaType, d.RotationRate, d.FruNo,
                d.PartNo, d.Model, d.UUID, d.Manufacture, d.FwVersion, d.Capacity, +d.SFlags, +d.Warning,
                +d.Temperature, +d.RemainLife, d.InfoMask);
}

// The arguments of a call; a word "-" is empty.
struct Arguments {
  std::istringstream stream;

  template <typename Number = uint32_t>
  Number number() {
    int64_t value = 0;
    stream >> value;
    return static_cast<Number>(value);
  }
  std::string word() {
    std::string text;
    stream >> text;
    return text != "-" ? text : "";
  }
  std::string rest() {
    std::string text;
    std::getline(stream >> std::ws, text);
    return text;
  }
  // Location, bay, temperature, medium, rotation rate, length of the model.
  Disk disk() {
    Disk disk = {};
    std::strcpy(disk.Location, std::regex_replace(word(), std::regex("_"), " ").c_str());
    disk.BayNo = number<uint16_t>();
    disk.Temperature = number<uint8_t>();
    std::strcpy(disk.MediaType, word().c_str());
    disk.RotationRate = number<uint16_t>();
    std::memset(disk.Model, 'x', number<uint8_t>());
    disk.LocationId = 2;
    disk.DriveTypeId = 3;
    disk.SFlags = 1;
    disk.Warning = 2;
    disk.RemainLife = 90;
    disk.InfoMask = 300;
    return disk;
  }
};

// By what they deliver besides a status.
using A = Arguments;
const std::map<std::string, int (*)(List*, A&)> kLists = {
    {"disks", [](List* to, A& a) { return zeldb_get_disk_list_with_filter(to, a.rest().c_str()); }},
    {"all_disks", [](List* to, A&) { return zeldb_get_disk_list_with_filter(to, nullptr); }},
    {"drives", [](List* to, A& a) { return zeldb_get_nvme_disk_list_from_mi_filter(to, a.rest().c_str()); }},
    {"present", [](List* to, A&) { return zeldb_get_disk_list(to); }},
    {"sata", [](List* to, A&) { return zeldb_get_onboard_sata_disk_list(to); }},
    {"mv", [](List* to, A& a) { return zeldb_get_mv_disk_list(a.number<int>(), to); }},
    {"7mm", [](List* to, A& a) { return zeldb_get_7mm_disk_list(to, a.number()); }},
    {"m2", [](List* to, A& a) { return zeldb_get_m2_disk_list(to, a.number()); }},
    {"u2", [](List* to, A&) { return zeldb_get_u2_aic_nvme_disk_list(to); }},
    {"merged", [](List* to, A&) { return zeldb_get_merged_disk_list(to), 0; }},
    {"of_key", [](List* to, A& a) { return zeldb_get_disk_list_funkey(a.number(), to); }}};
const std::map<std::string, int (*)(uint32_t*, A&)> kNumbers = {
    {"vroc", [](uint32_t* out, A& a) { return zeldb_vroc_enabled(a.number(), out); }},
    {"vmd", [](uint32_t* out, A&) { return zeldb_get_vmd_count(nullptr, out); }},
    {"key", [](uint32_t* out, A& a) { return zeldb_get_nvme_drv_funkey(1, a.number(), out); }}};
const std::map<std::string, int (*)(uint8_t*, A&)> kBytes = {
    {"slot_7", [](uint8_t* out, A& a) { return zeldb_get_ctrl_slot(a.number(), 7, out); }},
    {"slot_8", [](uint8_t* out, A& a) { return zeldb_get_ctrl_slot(a.number(), 8, out); }},
    {"type", [](uint8_t* out, A& a) { return zeldb_get_mvl_ctrl_type(out, a.number()); }},
    {"backplanes", [](uint8_t* out, A&) { return zeldb_get_bp_drive_count(&out[0], &out[1]); }}};
const std::map<std::string, int (*)(const Disk*, A&)> kWrites = {
    {"version",
     [](const Disk*, A& a) { return zeldb_update_nvme_disk_firmware_version(2, 4, a.word().c_str()); }},
    {"presence",
     [](const Disk*, A& a) { return zeldb_update_aim_disk_presence(2, 4, a.number<uint16_t>()); }},
    {"identity",
     [](const Disk*, A&) { return zeldb_update_aim_disk_vpd_info(2, 4, "M", "S", "", "F", "MF", "V"); }},
    {"controller",
     [](const Disk*, A& a) { return zeldb_update_aim_disk_ctrl_type(2, 4, a.number<uint8_t>()); }},
    {"smart", [](const Disk* disk, A&) { return zeldb_update_aim_disk_smart_info(disk); }},
    {"add", [](const Disk* disk, A&) { return zeldb_add_update_nvme_aim_disk(disk); }}};

std::string one_disk(A& a) {
  Disk disk = {};
  const int kind = a.number<int>();
  const int status = zeldb_get_nvme_aim_disk(kind, a.number(), &disk);
  return joined(status, shown(disk));
}

std::string onboard(A& a) {
  uint8_t slots[3] = {};
  uint32_t keys[3] = {9, 9, 9};
  uint32_t count = a.number();
  const int status = zeldb_get_marvell_ctrl_slots(slots, keys, &count);
  return joined(status, count, +slots[0], keys[0], +slots[1], keys[1], +slots[2], keys[2]);
}

// Outputs are 9 before.
std::string result_of(const std::string& name, A& a) {
  if (name == "one") return one_disk(a);
  if (name == "onboard") return onboard(a);
  if (kNumbers.contains(name)) {
    uint32_t number = 9;
    const int status = kNumbers.at(name)(&number, a);
    return joined(status, number);
  }
  if (kBytes.contains(name)) {
    uint8_t bytes[2] = {9, 9};
    const int status = kBytes.at(name)(bytes, a);
    return joined(status, +bytes[0], +bytes[1]);
  }
  if (kWrites.contains(name)) {
    const Disk disk = name == "smart" || name == "add" ? a.disk() : Disk();
    return joined(kWrites.at(name)(&disk, a));
  }
  List list = {9, nullptr};
  const int status = kLists.at(name)(&list, a);
  std::string text = joined(status, list.Count);
  for (uint32_t i = 0; list.Items != nullptr && i < list.Count; ++i) text += "\n" + shown(list.Items[i]);
  std::free(list.Items);
  return text;
}

std::string content(const std::string& path) {
  std::ifstream stream(path);
  return {std::istreambuf_iterator<char>(stream), {}};
}

class StorageGolden : public DatabaseTest {
 protected:
  void run(const std::string& sql) const {
    const bool properties = sql.find("propertiesDCTbl") != std::string::npos;
    database.run(std::regex_replace(sql, std::regex("\\{MAKER\\}"), std::to_string(zeldb::kMakerSubVendorId)),
                 properties ? "propertiesdb" : "dmdb");
  }

  static void fail(Arguments fault) {
    Rule rule = {.op = fault.word(), .table = fault.word()};
    if (rule.table == "*") rule.table.clear();
    const std::string status = fault.word();
    rule.status = std::stoi(status);
    rule.with_result = status.back() == '+';
    rule.nth = fault.number<int>();
    rule.after = rule.fewer = fault.number();
    shim().fail(rule);
  }

  std::string call(const std::string& line) {
    Arguments arguments{std::istringstream(line)};
    std::string name = arguments.word();
    palomir = name == "palomir";
    if (palomir) name = arguments.word();
    libc().reset();
    std::string text = "> " + line + "\n" + result_of(name, arguments) + "\n";
    for (const Call& made : shim().calls()) {
      // The platform's own lookups belong to the form factors of bays, which are asked for once per process.
      const bool statement =
          made.op == "query" || made.op == "raw_query" || made.op == "update" || made.op == "insert";
      if (!statement || made.columns == "propValue") continue;
      Call shortened = made;
      if (!columns_.insert(made.table + made.columns).second && !made.columns.empty())
        shortened.columns = "...";
      text += "  " + to_text(shortened);
      if (made.op == "raw_query") text += "|" + std::to_string(made.capacity);
      if (made.op == "update") text += "|" + std::to_string(made.rows);
      for (const std::string& put : made.puts) text += "|" + put;
      text += "\n";
    }
    for (const auto& lines : {libc().syslogs, libc().logs}) {
      for (const std::string& logged : lines)
        text += "  " + std::regex_replace(logged, std::regex("\n"), "\\n") + "\n";
    }
    shim().reset();
    return text;
  }

  void play(const std::string& name) {
    std::ifstream script(ZELDB_GOLDEN "/" + name + ".script");
    std::string story, sql;
    for (std::string line; std::getline(script, line);) {
      if (line.starts_with("> ")) {
        story += call(line.substr(2));
      } else if (line.starts_with("! ")) {
        fail({std::istringstream(line.substr(2))});
        story += line + "\n";
      } else if (line.starts_with("-- ")) {
        story += line + "\n";
      } else if (sql += line + "\n"; line.ends_with(';')) {
        run(std::exchange(sql, ""));
      }
    }
    const std::string path = ZELDB_GOLDEN "/" + name + ".expected";
    if (std::getenv("ZELDB_UPDATE_GOLDEN") != nullptr) std::ofstream(path) << story;
    EXPECT_EQ(story, content(path));
  }

 private:
  std::set<std::string> columns_;  // shown before
};

TEST_P(StorageGolden, Rows) {
  play("rows");
}
TEST_P(StorageGolden, Bays) {
  play("bays");
}
TEST_P(StorageGolden, Board) {
  play("board");
}
TEST_P(StorageGolden, Updates) {
  play("updates");
}
ZELDB_ON_EVERY_ENGINE(StorageGolden);

}  // namespace
}  // namespace zeldb_test
