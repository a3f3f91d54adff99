// SPDX-License-Identifier: Apache-2.0
#include "scan/drives.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <map>

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
  const char* type = kSata;
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
  row.add("Warning", health ? Value(uint64_t{health->warning}) : Value(Kept()));
  row.cells.push_back(
      {"Temperature", health ? Value(Near{health->celsius, kToleratedDegrees}) : Value(Kept())});
  row.add("RemainLife", health ? Value(uint64_t{health->life_left}) : Value(Kept()));
  row.add("InfoMask", health ? Value(kTold) : Value(Kept()));
}

Value medium_value(const Drive& drive) {
  if (!drive.medium) return {};
  return std::to_string(*drive.medium);
}

Value capacity_value(const Drive& drive, bool has_all_blocks) {
  if (!has_all_blocks) return Kept();
  if (!drive.bytes) return {};
  return capacity_text(*drive.bytes);
}

Row row_of(const Drive& drive, const Functions* functions, bool has_all_blocks) {
  Row row(tables::kDisks, kDrives, drive.key, {"SerialNo", "Model"});
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
  row.add("PCIFuncKey", key);
  row.add("BayNo", number);
  row.add("LocationId", location);
  row.add("Location", place);
  row.add("DriveTypeId", std::string(drive.type));
  row.add("MediaTypeId", medium_value(drive));
  row.add("SerialNo", value_of(drive.serial));
  row.add("Model", value_of(drive.model));
  row.add("UUID", value_of(drive.unique_id));
  row.add("Manufacture", value_of(drive.maker));
  row.add("FwVersion", value_of(drive.firmware));
  row.add("Capacity", capacity_value(drive, has_all_blocks));
  row.add("Presence", uint64_t{1});
  add_health(drive, row);
  return row;
}

std::optional<uint64_t> size_of(const Machine& machine, const std::string& block) {
  constexpr uint64_t kSector = 512;
  const auto sectors = machine.number("sys/block/" + block + "/size");
  if (!sectors || *sectors == 0 || *sectors > UINT64_MAX / kSector) return std::nullopt;
  return *sectors * kSector;
}

// By controller, all of its name spaces together. The number in the name of one is not always the
// controller's: where a drive may have several paths, it is the subsystem's.
std::map<std::string, uint64_t> sizes_of_controllers(const Machine& machine,
                                                     const std::vector<std::string>& blocks) {
  std::map<std::string, uint64_t> sizes;
  for (const std::string& block : blocks) {
    const auto controller = machine.target("sys/block/" + block + "/device");
    const auto bytes = size_of(machine, block);
    if (controller && bytes) sizes[controller->substr(controller->rfind('/') + 1)] += *bytes;
  }
  return sizes;
}

// Reports the first trouble only: a user who may not ask one drive may not ask the others.
void add_nvme(const Machine& machine, const std::vector<std::string>& blocks, std::vector<Drive>& drives,
              Findings& findings) {
  bool is_told = false;
  const std::string folder = "sys/class/nvme/";
  const auto sizes = sizes_of_controllers(machine, blocks);
  for (const std::string& name : machine.names(folder)) {
    const std::string own = folder + name + "/";
    if (machine.text(own + "transport") != "pcie") continue;
    Drive drive;
    drive.type = kNvme;
    drive.model = machine.text(own + "model");
    drive.serial = machine.text(own + "serial");
    drive.firmware = machine.text(own + "firmware_rev");
    if (const auto size = sizes.find(name); size != sizes.end()) drive.bytes = size->second;
    drive.medium = 1;
    const auto address = machine.text(own + "address");
    if (address) drive.function = address_of(*address);
    drive.key = drive.serial.value_or(address.value_or(name));
    NvmeAnswer answer;
    if (machine.is_running_system()) answer = ask_nvme(name);
    drive.health = answer.health;
    if (answer.trouble) {
      if (!is_told) findings.troubles.push_back("health of drives: " + *answer.trouble);
      is_told = true;
    }
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
  const size_t length = drive.model ? drive.model->size() : 0;
  const Value model = value_of(answer.model);
  const auto* const text = std::get_if<std::string>(&model);
  if (text != nullptr && text->size() > length) drive.model = *text;
  if (!drive.serial) drive.serial = answer.serial;
  if (!drive.firmware) drive.firmware = answer.firmware;
  if (!drive.unique_id) drive.unique_id = answer.unique_id;
  uint64_t rate = 0;
  if (drive.medium || !answer.rotation_rate) return;
  const std::string& digits = *answer.rotation_rate;
  std::from_chars(digits.data(), digits.data() + digits.size(), rate);
  if (rate >= kSlowest && rate <= kFastest) drive.medium = rate;
}

void add_scsi(const Machine& machine, const std::vector<std::string>& blocks, std::vector<Drive>& drives) {
  constexpr uint64_t kDisk = 0;
  for (const std::string& block : blocks) {
    const std::string own = "sys/block/" + block + "/";
    const std::string device = own + "device/";
    const auto path = machine.target(own + "device");
    if (!path) continue;
    if (machine.number(device + "type") != kDisk) continue;
    if (machine.number(own + "removable") == uint64_t{1}) continue;
    const auto vendor = machine.text(device + "vendor");
    const char* const type = type_of(*path, vendor);
    if (type == nullptr) continue;
    Drive drive;
    drive.type = type;
    drive.model = machine.text(device + "model");
    drive.serial = page_of(machine, device + "vpd_pg80");
    if (vendor != "ATA") drive.maker = vendor;
    drive.firmware = machine.text(device + "rev");
    drive.unique_id = machine.text(device + "wwid");
    drive.bytes = size_of(machine, block);
    drive.medium = medium_of(machine, block);
    drive.function = function_on_path(*path);
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
  if (blocks_trouble) findings.troubles.push_back("drives: " + *blocks_trouble);
  if (controllers_trouble) findings.troubles.push_back("drives: " + *controllers_trouble);
  const bool has_all_blocks = !blocks_trouble;
  std::vector<Drive> drives;
  add_nvme(machine, blocks, drives, findings);
  add_scsi(machine, blocks, drives);
  std::set<std::string> keys;
  for (Drive& drive : drives) {
    // A drive with two paths is one drive; drives without a serial number that look alike are not.
    const Value clean = text_value(drive.key, 64);
    const auto* const text = std::get_if<std::string>(&clean);
    drive.key.clear();
    if (text != nullptr) drive.key = *text;
    if (keys.insert(drive.key).second) findings.rows.push_back(row_of(drive, functions, has_all_blocks));
  }
  if (blocks_trouble || controllers_trouble) return;
  findings.complete.insert(kDrives);
}

}  // namespace zeldb::scan
