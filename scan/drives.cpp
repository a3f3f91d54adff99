// SPDX-License-Identifier: Apache-2.0
#include "scan/drives.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "db/tables.h"
#include "scan/drive_answers.h"

namespace zeldb::scan {

namespace {

// Revolutions per minute.
constexpr uint64_t kSlowest = 0x401;
constexpr uint64_t kFastest = 0xFFFE;

// Values of AimDisks.DriveTypeId.
constexpr const char* kSata = "1";
constexpr const char* kSas = "2";
constexpr const char* kNvme = "3";

struct Drive {
  std::string key;
  const char* type;
  std::optional<std::string> model, serial, maker, firmware, unique_id;
  std::optional<uint64_t> bytes;
  std::optional<uint64_t> medium;  // 1: solid state; else revolutions per minute
  std::optional<Address> function;
  std::optional<NvmeHealth> health{};
};

// Adds the state that the drive itself reports; without an answer the columns stay as they are.
void add_health(const Drive& drive, Row& row) {
  constexpr uint64_t kTold = 31;  // the value of drives that report all of these
  constexpr uint64_t kToleratedDegrees = 2;
  const auto& health = drive.health;
  row.cells.push_back({"Warning", health ? Value(uint64_t{health->warning}) : Value(Kept())});
  row.cells.push_back(
      {"Temperature", health ? Value(Near{health->celsius, kToleratedDegrees}) : Value(Kept())});
  row.cells.push_back({"RemainLife", health ? Value(uint64_t{health->life_left}) : Value(Kept())});
  row.cells.push_back({"InfoMask", health ? Value(kTold) : Value(Kept())});
}

Row row_of(const Drive& drive, const Functions* functions, bool has_all_blocks) {
  Row row{tables::kDisks, kDrives, drive.key, {"SerialNo", "Model"}, {}};
  Value key = functions != nullptr ? Value() : Value(Kept());
  Value number = key;
  Value location = key;
  Value place = key;
  if (functions != nullptr && drive.function && functions->contains(*drive.function)) {
    const Function& function = functions->at(*drive.function);
    // The type of a controller is not that of its drives.
    if (drive.type == kNvme) key = uint64_t{function.key};
    if (drive.type == kNvme && function.placement.slot) {
      location = uint64_t{function.placement.location};
      number = uint64_t{*function.placement.slot};
      place = "Slot " + std::to_string(*function.placement.slot);
    }
  }
  row.cells = {
      {"PCIFuncKey", key},
      {"BayNo", number},
      {"LocationId", location},
      {"Location", place},
      {"DriveTypeId", std::string(drive.type)},
      {"MediaTypeId", drive.medium ? Value(std::to_string(*drive.medium)) : Value()},
      {"SerialNo", value_of(drive.serial)},
      {"Model", value_of(drive.model)},
      {"UUID", value_of(drive.unique_id)},
      {"Manufacture", value_of(drive.maker)},
      {"FwVersion", value_of(drive.firmware)},
      {"Capacity", !has_all_blocks ? Value(Kept())
                   : drive.bytes   ? Value(capacity_text(*drive.bytes))
                                   : Value()},
      {"Presence", uint64_t{1}},
  };
  add_health(drive, row);
  return row;
}

std::optional<uint64_t> size_of(const Machine& machine, const std::string& block) {
  constexpr uint64_t kSector = 512;
  const auto sectors = machine.number("sys/block/" + block + "/size");
  if (!sectors || *sectors == 0 || *sectors > UINT64_MAX / kSector) return std::nullopt;
  return *sectors * kSector;
}

// All name spaces of a controller together.
std::optional<uint64_t> size_of_controller(const Machine& machine, const std::string& controller,
                                           const std::vector<std::string>& blocks) {
  std::optional<uint64_t> total;
  for (const std::string& block : blocks) {
    if (!block.starts_with(controller + "n")) continue;
    if (const auto bytes = size_of(machine, block)) total = total.value_or(0) + *bytes;
  }
  return total;
}

// Reports the first trouble only: a user who may not ask one drive may not ask the others.
void add_nvme(const Machine& machine, const std::vector<std::string>& blocks, std::vector<Drive>& drives,
              Findings& findings) {
  bool is_told = false;
  const std::string folder = "sys/class/nvme/";
  for (const std::string& name : machine.names(folder)) {
    const std::string own = folder + name + "/";
    if (machine.text(own + "transport") != "pcie") continue;
    Drive drive{.key = {},
                .type = kNvme,
                .model = machine.text(own + "model"),
                .serial = machine.text(own + "serial"),
                .maker = {},
                .firmware = machine.text(own + "firmware_rev"),
                .unique_id = {},
                .bytes = size_of_controller(machine, name, blocks),
                .medium = 1,
                .function = {}};
    const auto address = machine.text(own + "address");
    if (address) drive.function = address_of(*address);
    drive.key = drive.serial.value_or(address.value_or(name));
    const NvmeAnswer answer = machine.is_running_system() ? ask_nvme(name) : NvmeAnswer();
    drive.health = answer.health;
    if (answer.trouble && !is_told) findings.troubles.push_back("health of drives: " + *answer.trouble);
    is_told = is_told || answer.trouble;
    drives.push_back(std::move(drive));
  }
}

// The content of a SCSI page: it follows a header of four bytes, which has the length.
std::optional<std::string> page_of(const Machine& machine, const std::string& path) {
  constexpr size_t kHead = 4;
  const auto bytes = machine.bytes(path);
  if (!bytes || bytes->size() < kHead) return std::nullopt;
  const size_t length =
      static_cast<unsigned char>((*bytes)[2]) << 8U | static_cast<unsigned char>((*bytes)[3]);
  return bytes->substr(kHead, length);
}

std::optional<uint64_t> medium_of(const Machine& machine, const std::string& block) {
  constexpr uint64_t kSolidState = 1;
  if (machine.number("sys/block/" + block + "/queue/rotational") == uint64_t{0}) return kSolidState;
  const auto page = page_of(machine, "sys/block/" + block + "/device/vpd_pgb1");
  if (!page || page->size() < 2) return std::nullopt;
  const uint64_t rate = static_cast<unsigned char>((*page)[0]) << 8U | static_cast<unsigned char>((*page)[1]);
  return rate >= kSlowest && rate <= kFastest ? std::optional(rate) : std::nullopt;
}

const char* type_of(const std::string& path, const std::optional<std::string>& vendor) {
  if (path.find("/usb") != std::string::npos) return nullptr;
  if (path.find("/ata") != std::string::npos) return kSata;
  if (path.find("/end_device-") == std::string::npos) return nullptr;
  return vendor == "ATA" ? kSata : kSas;
}

// The whole of a model that SCSI cut, and values that sys lacks.
void complete(Drive& drive, const UdevAnswer& answer) {
  if (answer.model) {
    const Value model = text_value(*answer.model);
    const auto* const text = std::get_if<std::string>(&model);
    if (text != nullptr && text->size() > drive.model.value_or("").size()) drive.model = *text;
  }
  if (!drive.serial) drive.serial = answer.serial;
  if (!drive.firmware) drive.firmware = answer.firmware;
  if (!drive.unique_id) drive.unique_id = answer.unique_id;
  uint64_t rate = 0;
  if (drive.medium || !answer.rotation_rate) return;
  const std::string& text = *answer.rotation_rate;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), rate);
  if (read.ec == std::errc() && rate >= kSlowest && rate <= kFastest) drive.medium = rate;
}

void add_scsi(const Machine& machine, const std::vector<std::string>& blocks, std::vector<Drive>& drives) {
  constexpr uint64_t kDisk = 0;
  for (const std::string& block : blocks) {
    const std::string own = "sys/block/" + block + "/";
    const std::string device = own + "device/";
    const auto path = machine.target(own + "device");
    if (!path || machine.number(device + "type") != kDisk) continue;
    if (machine.number(own + "removable") == uint64_t{1}) continue;
    const auto vendor = machine.text(device + "vendor");
    const char* const type = type_of(*path, vendor);
    if (type == nullptr) continue;
    Drive drive{.key = {},
                .type = type,
                .model = machine.text(device + "model"),
                .serial = page_of(machine, device + "vpd_pg80"),
                .maker = vendor == "ATA" ? std::nullopt : vendor,
                .firmware = machine.text(device + "rev"),
                .unique_id = machine.text(device + "wwid"),
                .bytes = size_of(machine, block),
                .medium = medium_of(machine, block),
                .function = function_on_path(*path)};
    if (machine.is_running_system()) complete(drive, ask_udev(block));
    drive.key = drive.serial.value_or(drive.unique_id.value_or(path->substr(path->rfind('/') + 1)));
    drives.push_back(std::move(drive));
  }
}

}  // namespace

// In the form that the lists of drives use.
std::string capacity_text(uint64_t bytes) {
  constexpr double kGigabyte = 1e9;
  constexpr double kFirstTerabytes = 1001;
  const double gigabytes = static_cast<double>(bytes) / kGigabyte;
  if (gigabytes < kFirstTerabytes) return std::to_string(static_cast<uint64_t>(gigabytes)) + "GB";
  char text[32];
  char* const end = std::to_chars(text, std::end(text), gigabytes / 1000.0, std::chars_format::fixed, 2).ptr;
  return std::string(text, end) + "TB";
}

void read_drives(const Machine& machine, const Functions* functions, Findings& findings) {
  const std::vector<std::string> blocks = machine.names("sys/block");
  const auto blocks_trouble = machine.trouble_in("sys/block");
  const auto controllers_trouble = machine.trouble_in("sys/class/nvme");
  for (const auto& trouble : {blocks_trouble, controllers_trouble}) {
    if (trouble) findings.troubles.push_back("drives: " + *trouble);
  }
  const bool has_all_blocks = !blocks_trouble;
  std::vector<Drive> drives;
  add_nvme(machine, blocks, drives, findings);
  add_scsi(machine, blocks, drives);
  std::set<std::string> keys;
  for (Drive& drive : drives) {
    // A drive with two paths is one drive; drives without a serial number that look alike are not.
    const Value clean = text_value(drive.key, 64);
    drive.key = std::holds_alternative<std::string>(clean) ? std::get<std::string>(clean) : "";
    if (keys.insert(drive.key).second) findings.rows.push_back(row_of(drive, functions, has_all_blocks));
  }
  if (has_all_blocks && !controllers_trouble) findings.complete.insert(kDrives);
}

}  // namespace zeldb::scan
