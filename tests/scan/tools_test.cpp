// SPDX-License-Identifier: Apache-2.0
//
// Other tools, on this machine and on recorded ones: every field that they and a scan report agrees.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "scan/drives.h"
#include "scan/scan.h"
#include "tests/scan/machine_file.h"
#include "tests/support/run_program.h"
#include "tests/support/texts.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using Fields = std::map<std::string, std::string>;
using Parts = std::map<std::string, Fields>;

// Both sides show characters that are none in their own way.
std::string plain(const std::string& text) {
  std::string kept;
  for (const char one : text) {
    if (one > ' ' && one < 0x7F && one != '?' && one != '.') kept += one;
  }
  return kept;
}

// Blocks of lines "name: value" with a line between; of equal names the first counts.
std::vector<Fields> blocks_of(const std::string& text) {
  std::vector<Fields> blocks(1);
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty()) blocks.emplace_back();
    const size_t begin = line.find_first_not_of('\t');
    const size_t colon = line.find(':');
    const size_t value = line.find_first_not_of(" \t", colon + 1);
    if (line.starts_with("Handle ")) blocks.back()["type"] = line.substr(line.find("type ") + 5);
    if (colon == std::string::npos || value == std::string::npos) continue;
    blocks.back().emplace(line.substr(begin, colon - begin), line.substr(value));
  }
  return blocks;
}

// The number of a field of theirs in the scan's form; empty if it has none.
std::string number(const std::string& text) {
  const size_t end = text.find_first_not_of("0123456789");
  return text.substr(0, end);
}
std::string hex(const std::string& text) {
  return text.empty() ? "" : std::to_string(std::stoull(text, nullptr, 16));
}
std::string id(const std::string& text) {
  return hex(text.substr(text.rfind('[') + 1));
}
std::string name(const std::string& text) {
  const bool is_none = text == "Not Specified" || text == "Unknown" || text == "None" || text == "N/A";
  return is_none ? "" : plain(text);
}
std::string mebibytes(const std::string& text) {
  const std::string amount = number(text);
  const char unit = text.size() > amount.size() + 1 ? text[amount.size() + 1] : ' ';
  if (amount.empty() || unit == 'k') return "";
  return std::to_string(std::stoull(amount) << (unit == 'T' ? 20 : unit == 'G' ? 10 : 0));
}
std::string cpu_id(const std::string& text) {
  std::string digits;
  for (size_t at = 0; at + 1 < text.size(); at += 3) digits.insert(0, text.substr(at, 2));
  return hex(digits);
}
std::string date(const std::string& text) {
  const bool is_date = text.size() == 10 && text[2] == '/' && text[5] == '/';
  return plain(is_date ? text.substr(6) + "-" + text.substr(0, 2) + "-" + text.substr(3, 2) : text);
}

// A field of theirs, and the column of ours.
struct Meaning {
  const char* theirs;
  const char* column;
  std::string (*form)(const std::string&);
};
// clang-format off
const std::vector<Meaning> kFunctions = {
    {"Vendor", "VendorId", id}, {"Device", "DeviceId", id}, {"SVendor", "SubVendorId", id},
    {"SDevice", "SubDeviceId", id}, {"Rev", "RevId", hex}, {"NUMANode", "NodeIndex", number}};
const std::vector<Meaning> kProcessors = {
    {"Socket Designation", "Socket", name}, {"Manufacturer", "Manufacturer", name}, {"ID", "ProcId", cpu_id},
    {"Version", "Version", name}, {"External Clock", "ExtClock", number}, {"Max Speed", "MaxSpeed", number},
    {"Current Speed", "CurSpeed", number}, {"Serial Number", "SerialNo", name}, {"Asset Tag", "AssetTag", name},
    {"Part Number", "PartNo", name}, {"Core Count", "CoreCount", number}, {"Core Enabled", "CoreEnabled", number},
    {"Thread Count", "ThreadCount", number}};
const std::vector<Meaning> kModules = {
    {"Total Width", "TotalWidth", number}, {"Data Width", "DataWidth", number}, {"Size", "MemSize", mebibytes},
    {"Locator", "DevLocator", name}, {"Bank Locator", "BankLocator", name}, {"Speed", "MaxSpeed", number},
    {"Configured Memory Speed", "ClockSpeed", number}, {"Manufacturer", "Manufacturer", name},
    {"Serial Number", "SerialNo", name}, {"Asset Tag", "AssetTag", name}, {"Part Number", "PartNo", name}};
const std::vector<Meaning> kBios = {
    {"Vendor", "Manufacture", name}, {"Version", "VersionString", name}, {"Release Date", "ReleaseDate", date}};
const std::vector<Meaning> kSlots = {{"Designation", "SlotDesignation", name}, {"ID", "SlotNo", number}};
const std::vector<Meaning> kDrives = {
    {"model", "Model", name}, {"rev", "FwVersion", name}, {"rota", "MediaTypeId", name}, {"tran", "DriveTypeId", name},
    {"size", "Capacity", name}};
// clang-format on

Fields meant(const Fields& theirs, const std::vector<Meaning>& meanings) {
  Fields fields;
  for (const auto& [field, column, form] : meanings) {
    const auto found = theirs.find(field);
    const std::string value = found != theirs.end() ? form(found->second) : "";
    if (!value.empty()) fields[column] = value;
  }
  return fields;
}

// The columns that were compared. Parts of theirs alone are left out.
std::set<std::string> expect_agreement(const Parts& ours, const Parts& theirs) {
  std::set<std::string> compared;
  for (const auto& [part, fields] : theirs) {
    const auto own = ours.find(part);
    for (const auto& [column, value] : fields) {
      if (own == ours.end() || !own->second.contains(column)) continue;
      EXPECT_EQ(own->second.at(column), value) << part << " " << column;
      compared.insert(column);
    }
  }
  return compared;
}

// Of this machine, or of a recorded one.
class ScanTools : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    if (!ZELDB_SCANS_PCI) GTEST_SKIP() << "no libpci";
    if (is_recorded) unpack(fs::path(ZELDB_SCAN_TESTS) / "machines/rack.txt", root);
  }
  // Empty, with the reason in why, where the tool or its source is missing.
  std::string told_by(std::vector<std::string> words, const std::vector<std::string>& if_recorded = {}) {
    if (is_recorded) words.insert(words.end(), if_recorded.begin(), if_recorded.end());
    const Outcome outcome =
        run_program({.argv = words, .env = {"LC_ALL=C", "PATH=/usr/sbin:/usr/bin:/sbin:/bin"}});
    why = words[0] + " tells nothing: " + outcome.err + outcome.out;
    return outcome.exit_status == 0 ? outcome.out : "";
  }
  std::string lspci(const std::string& how) {
    return told_by({"lspci", "-D", "-nn", how}, {"-O", "sysfs.path=" + (root / "sys/bus/pci").string(), "-i",
                                                 (root / "usr/share/misc/pci.ids").string()});
  }
  Parts found(const std::string& table, const std::string& dump = {}) const {
    Parts parts;
    for (const auto& row : zeldb::scan::find({.root = root, .pci_dump = dump, .only = {}}, {}).rows) {
      if (row.table != table) continue;
      Fields& fields = parts[row.key];
      for (const auto& cell : row.cells) {
        if (const auto* text = std::get_if<std::string>(&cell.value)) fields[cell.column] = plain(*text);
        if (const auto* sum = std::get_if<uint64_t>(&cell.value)) fields[cell.column] = std::to_string(*sum);
      }
    }
    return parts;
  }

  Scratch scratch;
  const bool is_recorded = GetParam();
  const fs::path root = is_recorded ? scratch.folder / "machine" : "/";
  std::string why;
};

TEST_P(ScanTools, ListTheSameFunctions) {
  const std::string told = lspci("-vmm");
  if (told.empty()) GTEST_SKIP() << why;
  Parts functions, adapters;
  for (Fields one : blocks_of(told)) {
    Fields& fields = functions[one["Slot"]] = meant(one, kFunctions);
    const std::string& kind = one["Class"];
    const std::string maker = one["Vendor"].substr(0, one["Vendor"].rfind(" ["));
    const std::string device = one["Device"].substr(0, one["Device"].rfind(" ["));
    fields["ClsCode"] =
        hex(kind.substr(kind.rfind('[') + 1, 4) + (one.contains("ProgIf") ? one["ProgIf"] : "00"));
    if (maker != "Vendor" && device != "Device")
      adapters[one["Slot"]] = {{"CardName", plain(maker + device)}};
  }
  const Parts ours = found("PCIs");
  for (const auto& [address, fields] : ours) EXPECT_TRUE(functions.contains(address)) << address;
  // A key has no room for the domain.
  for (const auto& [address, fields] : functions)
    EXPECT_TRUE(ours.contains(address) || !address.starts_with("0000:")) << address;
  EXPECT_GE(expect_agreement(ours, functions).size(), is_recorded ? 7U : 3U);
  EXPECT_EQ(expect_agreement(found("PCIAdapter"), adapters).size(), adapters.empty() ? 0U : 1U);
}

TEST_P(ScanTools, DumpTheSameFunctions) {
  const std::string told = lspci("-xxxx");
  if (told.empty()) GTEST_SKIP() << why;
  std::ofstream(scratch.folder / "dump") << told;
  const Parts ours = found("PCIs");
  Parts dumped = found("PCIs", scratch.folder / "dump");
  EXPECT_EQ(ours.size(), dumped.size());
  // Virtual functions have no ids of their own there; slots that a folder names are unknown.
  std::erase_if(dumped, [&ours](const auto& one) {
    return one.second.at("DeviceId") == "65535" ||
           (ours.contains(one.first) && ours.at(one.first).at("FunKey") != one.second.at("FunKey"));
  });
  EXPECT_GE(expect_agreement(ours, dumped).size(), is_recorded ? 24U : 12U);
}

TEST_P(ScanTools, ListTheSameDrives) {
  const std::string told = told_by({"lsblk", "-J", "-b", "-d", "-o", "TYPE,SIZE,MODEL,SERIAL,REV,ROTA,TRAN"},
                                   {"--sysroot", root.string()});
  if (told.empty()) GTEST_SKIP() << why;
  const std::map<std::string, std::string> types = {{"sata", "1"}, {"sas", "2"}, {"nvme", "3"}};
  Parts theirs, ours;
  std::map<std::string, uint64_t> sizes;
  const json document = json::parse(plain(told));
  for (const json& one : document.at("blockdevices")) {
    Fields fields;
    for (const auto& [field, value] : one.items())
      if (value.is_string()) fields[field] = value.get<std::string>();
    const std::string serial = fields["serial"];
    if (fields["type"] != "disk" || !types.contains(fields["tran"]) || serial.empty()) continue;
    fields["size"] = zeldb::scan::capacity_text(sizes[serial] += one["size"].get<uint64_t>());
    fields["rota"] = one["rota"].get<bool>() ? "" : "1";
    fields["tran"] = types.at(fields["tran"]);
    theirs[serial] = meant(fields, kDrives);
  }
  for (const auto& [key, fields] : found("AimDisks"))
    if (fields.contains("SerialNo")) ours[fields.at("SerialNo")] = fields;
  for (const auto& [serial, fields] : theirs) EXPECT_TRUE(ours.contains(serial)) << serial;
  const auto compared = expect_agreement(ours, theirs);
  if (is_recorded) {
    EXPECT_EQ(compared.size(), 4U) << testing::PrintToString(compared);
  }
}

TEST_P(ScanTools, DecodeTheSameStructures) {
  if (is_recorded) {
    // An entry point, and the table after it.
    std::string entry = std::string("_SM3_\0\x18\x03\x07\0\x01\0\0\0\x10\0\x20", 17) + std::string(15, '\0');
    for (size_t at = 0; at < entry.size(); ++at)
      if (at != 5) entry[5] = static_cast<char>(entry[5] - entry[at]);
    std::ofstream(root / "dump", std::ios::binary)
        << entry << content_of(root / "sys/firmware/dmi/tables/DMI");
  }
  const std::string told = told_by({"dmidecode"}, {"--from-dump", (root / "dump").string()});
  std::map<std::string, int> counts;
  std::map<std::string, Parts> theirs;  // by the type of the structure
  for (Fields one : blocks_of(told)) {
    const std::string type = number(one["type"]);
    const std::string nth = std::to_string(++counts[type]);
    if (type == "0") theirs[type]["bios"] = meant(one, kBios);
    if (type == "4") theirs[type]["cpu/" + nth] = meant(one, kProcessors);
    if (type == "9") theirs[type][one["Bus Address"]] = meant(one, kSlots);
    if (type == "17") theirs[type]["dimm/" + nth] = meant(one, kModules);
  }
  if (theirs.empty()) GTEST_SKIP() << why;
  const struct {
    const char* type;
    const char* table;
    size_t columns;  // that a recorded machine has
  } kinds[] = {{"0", "Firmwares", 3}, {"4", "Processor", 12}, {"9", "PCIs", 2}, {"17", "Memory", 11}};
  for (const auto& [type, table, columns] : kinds) {
    const auto compared = expect_agreement(found(table), theirs[type]);
    if (is_recorded) {
      EXPECT_EQ(compared.size(), columns) << testing::PrintToString(compared);
    }
  }
}

TEST_P(ScanTools, ListTheSamePorts) {
  if (is_recorded) GTEST_SKIP() << "ip tells of the running system alone";
  const std::string told = told_by({"ip", "-d", "-j", "link"});
  if (told.empty()) GTEST_SKIP() << why;
  Parts theirs, ours = found("PCILogicalPort");
  std::set<std::string> unlisted;
  const json links = json::parse(told);
  for (const json& one : links) {
    std::string address = one.value("address", "");
    for (char& digit : address) digit = static_cast<char>(std::toupper(static_cast<unsigned char>(digit)));
    const auto flags = one.value("flags", json::array());
    const bool is_up = std::find(flags.begin(), flags.end(), "LOWER_UP") != flags.end();
    if (!theirs.contains(address) || one.contains("parentbus"))  // virtual ones may share an address
      theirs[address] = {{"MaxDataSize", std::to_string(one.value("mtu", 0))},
                         {"LinkStatus", is_up ? "1" : "0"}};
    if (one.value("parentbus", "") == "pci") unlisted.insert(address);
  }
  const Parts states = found("PCIPhysicalPortStat");
  for (auto& [key, fields] : ours) {
    const std::string address = fields["NetworkAddresses"];
    if (states.contains(key)) fields.insert(states.at(key).begin(), states.at(key).end());
    EXPECT_TRUE(theirs.contains(address)) << address;
    EXPECT_FALSE(expect_agreement({{address, fields}}, theirs).empty());
    unlisted.erase(address);
  }
  EXPECT_TRUE(unlisted.empty()) << testing::PrintToString(unlisted);
}

INSTANTIATE_TEST_SUITE_P(Machines, ScanTools, testing::Bool(),
                         [](const auto& one) { return one.param ? "recorded" : "this"; });

}  // namespace
}  // namespace zeldb_test
