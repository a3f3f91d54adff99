// SPDX-License-Identifier: Apache-2.0
//
// Recorded machines, and what a scan makes of them. A file in machines/ is one machine, as machine_file.h has
// it; golden/NAME.txt is a transcript; ZELDB_UPDATE_GOLDEN=1 writes it anew.
#include "scan/scan.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/cli/sample.h"
#include "tests/scan/machine_file.h"
#include "tests/support/run_program.h"

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;

fs::path machine_file(const std::string& name) {
  return fs::path(ZELDB_SCAN_TESTS) / "machines" / (name + ".txt");
}

const std::vector<std::string> kCommands = {
    "scan --dry-run",
    "scan",
    "scan",
    "functions --wide",
    "functions --output "
    "FunKey,SlotDesignation,SlotType,BridgeId,NodeIndex,FunType,LanesInUse,MaxLanes,PCIeType,"
    "MaxPCIeType",
    "functions --packaging",
    "slots --wide",
    "processors --wide",
    "processors --output "
    "Socket,ProcId,Family,SerialNo,Status,L1CacheInstalled,L2CacheInstalled,L3CacheInstalled,L3CacheType",
    "memory --output "
    "SlotNo,DevLocator,MemSize,ClockSpeed,MaxSpeed,TotalWidth,Manufacturer,PartNo,SerialNo",
    "disks --wide",
    "ports --wide",
    "ports --logical --wide",
};

class Scan : public DatabaseTest {
 protected:
  void SetUp() override {
    if (!ZELDB_SCANS_PCI) GTEST_SKIP() << "no libpci";
  }
  fs::path root() const { return scratch_.folder / "machine"; }
  Outcome scan(std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments{"scan", "--root", root().string()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run_zeldb(arguments, {"ZEL_DB_TRACE=" + trace()});
  }
  // Of a long list the head and the tail; of a scan also how many rows it wrote.
  std::string transcript(const std::vector<std::string>& commands) const {
    std::string text;
    for (const std::string& command : commands) {
      std::istringstream stream(command);
      std::vector<std::string> words{std::istream_iterator<std::string>(stream), {}};
      const bool is_scan = words.front() == "scan";
      const Outcome outcome = is_scan ? scan({words.begin() + 1, words.end()}) : run_zeldb(words);
      text += "$ zeldb " + command + "\n" + shortened(outcome.out);
      if (is_scan) text += "(" + std::to_string(writes()) + " rows written)\n";
      if (outcome.exit_status != 0) text += "! " + std::to_string(outcome.exit_status) + " " + outcome.err;
    }
    return replaced(text, root().string(), "MACHINE");
  }
  static std::string shortened(const std::string& text) {
    constexpr size_t kLongest = 16, kHead = 9, kTail = 5;
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line + "\n");
    if (lines.size() <= kLongest) return text;
    const auto joined = [&lines](size_t from, size_t to) {
      return std::accumulate(lines.begin() + from, lines.begin() + to, std::string());
    };
    return joined(0, kHead) + "... " + std::to_string(lines.size() - kHead - kTail) + " lines\n" +
           joined(lines.size() - kTail, lines.size());
  }
  std::string trace() const { return database.folder() + "/trace"; }
  // By the scans since the last time.
  int writes() const {
    std::istringstream lines(content_of(trace()));
    int count = 0;
    for (std::string line; std::getline(lines, line);)
      count += line.starts_with("insert|") || line.starts_with("update|") || line.starts_with("delete|") ||
               line.starts_with("raw|");
    fs::remove(trace());
    return count;
  }
  void expect_transcript(const std::string& name) const {
    unpack(machine_file(name), root());
    const fs::path file = fs::path(ZELDB_SCAN_TESTS) / "golden" / (name + ".txt");
    const std::string actual = transcript(kCommands);
    if (std::getenv("ZELDB_UPDATE_GOLDEN") != nullptr) std::ofstream(file) << actual;
    EXPECT_EQ(actual, content_of(file));
  }
  // Everything, row numbers included.
  std::string dump() const {
    std::string text;
    for (const char* table :
         {"ScannedRows", "PCIs", "PCIAdapter", "PCINetwork", "PCILogicalPort", "PCIPhysicalPort",
          "PCIPhysicalPortStat", "VPDs", "Processor", "Memory", "AimDisks", "Firmwares", "PCIMisc", "PCIGPU"})
      text += std::string(table) + ": " +
              database.text(std::string("SELECT * FROM ") + table + " ORDER BY _id") + "\n";
    return text;
  }

 private:
  Scratch scratch_;
};

TEST_P(Scan, ShowsAServer) {
  expect_transcript("server");
}

// Of more than 200 functions in five domains, and of much that is hostile.
TEST_P(Scan, ShowsARack) {
  expect_transcript("rack");
}

TEST_P(Scan, ShowsAnOldServer) {
  expect_transcript("old");
}

TEST_P(Scan, ShowsABoardWithoutFirmwareTablesAndPci) {
  expect_transcript("board");
}

// Both ways: "table column" of what a scan of the server finds, and of the document.
TEST_P(Scan, WritesTheColumnsOfItsDocument) {
  unpack(machine_file("server"), root());
  std::set<std::string> written;
  for (const auto& row : zeldb::scan::find({.root = root().string(), .pci_dump = {}, .only = {}}, {}).rows) {
    for (const auto& cell : row.cells) written.insert(std::string(row.table) + " " + cell.column);
  }
  // Of the running system alone.
  written.insert({"Firmwares HardwareId", "Firmwares HardwareTypeId"});
  std::set<std::string> documented;
  std::istringstream lines(content_of(fs::path(ZELDB_SCAN_TESTS) / "../../docs/scan.md"));
  for (std::string line; std::getline(lines, line);) {
    const size_t columns = line.find('|', 1);
    const size_t end = line.find('|', columns + 1);
    if (!line.starts_with("| `") || end == std::string::npos) continue;
    const std::string table = line.substr(3, line.find('`', 3) - 3);
    for (size_t at = line.find('`', columns); at < end; at = line.find('`', line.find('`', at + 1) + 1))
      documented.insert(table + " " + line.substr(at + 1, line.find('`', at + 1) - at - 1));
  }
  EXPECT_EQ(written, documented);
}

TEST_P(Scan, TouchesItsOwnRowsAlone) {
  unpack(machine_file("server"), root());
  // The function, a processor and a drive are known already; a module sits where the machine has none.
  database.run_all({"INSERT INTO PCIs (FunKey, VendorId) VALUES (16842752, 7)",
                    "INSERT INTO Processor (Socket) VALUES ('CPU0')",
                    "INSERT INTO AimDisks (SerialNo, Model) VALUES ('S1NVME', 'FAST DRIVE 4T')",
                    "INSERT INTO Memory (SlotNo, PartNo) VALUES (90, 'P-90')"});
  scan();
  EXPECT_EQ(database.text("SELECT VendorId FROM PCIs WHERE FunKey=16842752"), "7");
  EXPECT_EQ(database.text("SELECT count(*) FROM Processor WHERE Socket='CPU0'"), "1");
  EXPECT_EQ(database.text("SELECT count(*) FROM AimDisks WHERE SerialNo='S1NVME'"), "1");
  EXPECT_EQ(database.text("SELECT FirmwareName, Classification, VersionString, ReleaseDate FROM Firmwares"),
            "System BIOS,11,V1,2024-05-06;Embedded controller,10,5.3,NULL");
  EXPECT_EQ(database.text("SELECT VideoMemorySize FROM PCIGPU"), "16 GB");
  // A merge takes an adapter over; another service notes its health.
  database.run("UPDATE PCIAdapter SET AIMSupported=3, CardName='Mine' WHERE BusNo=2");
  database.run("UPDATE AimDisks SET Temperature=41, InfoMask=3 WHERE SerialNo='WD-S1234'");
  fs::remove_all(root() / "sys/class/nvme");
  fs::remove(root() / "sys/bus/pci/devices/0000:02:00.0");
  std::ofstream(root() / "sys/devices/pci0000:00/0000:00:01.0/0000:01:00.0/net/ens3/mtu") << "9000\n";
  const std::string changes = scan().out;
  EXPECT_NE(changes.find("0000:02:00.0"), std::string::npos) << changes;
  EXPECT_NE(changes.find("MaxDataSize 1500 -> 9000"), std::string::npos) << changes;
  EXPECT_EQ(database.text("SELECT CardName FROM PCIAdapter WHERE BusNo=2"), "Mine");
  EXPECT_EQ(database.text("SELECT Temperature, InfoMask FROM AimDisks WHERE SerialNo='WD-S1234'"), "41,3");
  EXPECT_EQ(database.text("SELECT PartNo FROM Memory WHERE SlotNo=90"), "P-90");
  EXPECT_EQ(database.text("SELECT count(*) FROM AimDisks WHERE SerialNo='S1NVME'"), "1");
}

TEST_P(Scan, TakesFaultsBackAndKeepsSlotsThatAreHidden) {
  unpack(machine_file("server"), root());
  scan();
  const std::string health = "SELECT HealthStatus FROM PCIAdapter WHERE BusNo<3 ORDER BY BusNo, DeviceNo";
  EXPECT_EQ(database.text(health), "0;6;0;0");
  // Another service has noted the health of a function that has counted nothing.
  database.run("UPDATE PCIAdapter SET HealthStatus=5 WHERE BusNo=2");
  const fs::path devices = root() / "sys/bus/pci/devices";
  for (const char* function : {"0000:01:00.0", "0000:02:00.0"})
    std::ofstream(devices / function / "aer_dev_fatal") << "TOTAL_ERR_FATAL 0\n";
  EXPECT_EQ(
      scan({"--dry-run", "--json"}).out,
      "{\"format_version\":1,\"rows\":[\n"
      "{\"Change\":\"changed\",\"Table\":\"PCIAdapter\",\"Key\":\"0000:01:00.0\",\"Detail\":\"HealthStatus "
      "6 -> 0\"}\n]}\n");
  scan();
  EXPECT_EQ(database.text(health), "0;0;0;5");
  const std::string keys = "SELECT FunKey, SlotNo FROM PCIs ORDER BY _id";
  const std::string before = database.text(keys);
  for (const auto& device : fs::directory_iterator(devices)) fs::resize_file(device.path() / "config", 64);
  const Outcome hidden = scan();
  EXPECT_EQ(hidden.exit_status, 1);
  EXPECT_NE(hidden.err.find("slots: the capabilities of port 0000:00:02.0 cannot be read\n"),
            std::string::npos)
      << hidden.err;
  EXPECT_EQ(database.text(keys), before);
  // The earlier places of functions are unknown if no scan has noted them.
  database.run("DELETE FROM ScannedRows");
  fs::remove(root() / "sys/firmware/dmi/tables/DMI");
  fs::create_symlink("/dev/null", root() / "sys/firmware/dmi/tables/DMI");
  EXPECT_EQ(scan({"--only", "pci"}).exit_status, 1);
  EXPECT_EQ(database.text("SELECT count(*) FROM PCIs WHERE BusNo>0 AND Location=0"), "4");
}

TEST_P(Scan, KeepsWhatCannotBeRead) {
  unpack(machine_file("server"), root());
  scan();
  const std::string before = dump();
  const fs::path outside = fs::path(database.folder()) / "outside";
  std::ofstream(outside) << "secret";
  fs::remove(root() / "sys/firmware/dmi/tables/DMI");
  fs::create_symlink(outside, root() / "sys/firmware/dmi/tables/DMI");
  const Outcome no_table = scan();
  EXPECT_EQ(no_table.exit_status, 1);
  EXPECT_NE(no_table.err.find("sys/firmware/dmi: leads out of the folder\n"), std::string::npos)
      << no_table.err;
  EXPECT_EQ(dump(), before);
  fs::create_symlink(outside, root() / "sys/bus/pci/devices/0000:01:00.0/label");
  const Outcome no_functions = scan();
  EXPECT_NE(no_functions.err.find("0000:01:00.0: leads out of the folder\n"), std::string::npos)
      << no_functions.err;
  EXPECT_EQ(dump(), before);
  fs::remove(root() / "sys/bus/pci/devices/0000:01:00.0/label");
  // A device that is listed twice ends the list of names.
  std::ofstream(root() / "usr/share/misc/pci.ids", std::ios::app) << "\ta80a  Fast Drive\n";
  const Outcome no_names = scan({"--only", "pci"});
  EXPECT_NE(no_names.err.find("zeldb: names of functions: Duplicate entry"), std::string::npos)
      << no_names.err;
  EXPECT_EQ(dump(), before);
  // A function without an id of its maker.
  fs::rename(root() / "sys/bus/pci/devices/0000:02:00.0/vendor", root() / "vendor");
  const Outcome no_id = scan({"--only", "pci"});
  EXPECT_NE(no_id.err.find("zeldb: function 0000:02:00.0: "), std::string::npos) << no_id.err;
  fs::rename(root() / "vendor", root() / "sys/bus/pci/devices/0000:02:00.0/vendor");
  EXPECT_EQ(dump(), before);
  // A file that is there and gives nothing, and folders with a part that is out of reach.
  fs::remove(root() / "sys/devices/pci0000:00/0000:00:01.0/0000:01:00.0/vpd");
  fs::create_directory(root() / "sys/devices/pci0000:00/0000:00:01.0/0000:01:00.0/vpd");
  const struct {
    const char* part;
    const char* told;
  } parts[] = {{"sys/class/net/ens3", "network ports: "},
               {"sys/class/nvme/nvme9", "drives: "},
               {"sys/block/sda", "drives: "},
               {"sys/block", "drives: "},
               {"sys/class/nvme", "drives: "},
               {"sys/bus/pci/devices/0000:02:00.0", "PCI functions: "},
               {"sys/bus/pci/devices", "PCI functions: "}};
  for (const auto& [part, told] : parts) {
    fs::remove_all(root() / part);
    fs::create_symlink(outside, root() / part);
    const std::string line = std::string(told) + part + ": leads out of the folder\n";
    const Outcome outcome = scan();
    EXPECT_EQ(outcome.exit_status, 1);
    EXPECT_NE(outcome.err.find(line), std::string::npos) << outcome.err;
  }
  EXPECT_EQ(scan({"--only", "pci"}).err.find("drives: "), std::string::npos);
  EXPECT_EQ(dump(), before);
}

TEST_P(Scan, IsWholeOrNothing) {
  unpack(machine_file("server"), root());
  // The function has two ports.
  database.run("CREATE UNIQUE INDEX one ON PCIPhysicalPortStat (PCIFuncKey)");
  const Outcome refused = scan();
  EXPECT_EQ(refused.exit_status, 1);
  EXPECT_NE(refused.err.find("table PCIPhysicalPortStat"), std::string::npos) << refused.err;
  EXPECT_EQ(database.text("SELECT count(*) FROM Processor"), "0");
  EXPECT_EQ(database.text("SELECT count(*) FROM ScannedRows"), "0");
  database.run(std::string("DROP INDEX one") +
               (GetParam() == Engine::MariaDb ? " ON PCIPhysicalPortStat" : ""));
  scan();
  EXPECT_NE(database.text("SELECT count(*) FROM Processor"), "0");
}

TEST_P(Scan, MayBeKilledAtAnyMoment) {
  unpack(machine_file("server"), root());
  const std::string count = "SELECT count(*) FROM ScannedRows";
  std::set<std::string> left;
  int kills = 0;
  // At the end of a call of the table access, and of one further on each time.
  for (int nth = 1; nth < 1000; nth += 9) {
    const std::string kill = "--inject=write:signal=SIGKILL:when=" + std::to_string(nth);
    const Outcome outcome = run_program({.argv = {"strace", "-qq", "-o", "/dev/null", "-P", trace(), kill,
                                                  ZELDB_COMMAND, "scan", "--root", root().string()},
                                         .env = {"ZEL_DB_TRACE=" + trace(), "VREL_LOG=/dev/null"}});
    if (outcome.signal != SIGKILL) {
      if (outcome.err.find("zeldb: ") == std::string::npos)
        GTEST_SKIP() << "no strace that may trace: " << outcome.err;
      break;
    }
    ++kills;
    left.insert(database.text(count));
  }
  EXPECT_GT(kills, 5);
  EXPECT_EQ(scan().out, "");
  EXPECT_NE(database.text("SELECT count(*) FROM Processor"), "0");
  left.erase("0");
  left.erase(database.text(count));  // killed after its last write
  EXPECT_TRUE(left.empty()) << testing::PrintToString(left);
}

TEST_P(Scan, TakesADumpAndTheSourcesThatAreAskedFor) {
  unpack(machine_file("server"), root());
  fs::remove(root() / "usr/share/misc/pci.ids");  // the names are those of this system then
  const std::string dump_file = database.folder() + "/dump";
  std::ofstream(dump_file) << "0003:05:00.1 Something\n00: 86 80 01 70 00 00 00 00 02 01 00 01 00 00 00 00\n"
                              "10: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n"
                              "20: 00 00 00 00 00 00 00 00 00 00 00 00 86 80 99 00\n"
                              "30: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00\n";
  const Outcome outcome = scan({"--only", "pci", "--pci-dump", dump_file, "--json"});
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out,
            "{\"format_version\":1,\"rows\":[\n"
            "{\"Change\":\"added\",\"Table\":\"PCIs\",\"Key\":\"0003:05:00.1\",\"Detail\":null},\n"
            "{\"Change\":\"added\",\"Table\":\"PCIAdapter\",\"Key\":\"0003:05:00.1\",\"Detail\":null},\n"
            "{\"Change\":\"added\",\"Table\":\"PCIMisc\",\"Key\":\"0003:05:00.1\",\"Detail\":null}\n]}\n");
  EXPECT_EQ(database.text("SELECT SegNo, FunKey, DeviceId, SubDeviceId, SlotNo, LanesInUse FROM PCIs"),
            "3,327681,28673,153,NULL,NULL");
  std::ofstream(dump_file) << "no dump\n00: zz\n";
  EXPECT_EQ(scan({"--only", "pci", "--pci-dump", dump_file}).exit_status, 1);
  fs::remove_all(root() / "sys/bus/pci/devices");
  std::ofstream(root() / "sys/bus/pci/devices") << "no folder";
  expect_failure(scan({"--only", "pci"}), 1, "PCI functions: Cannot open ");
  EXPECT_EQ(database.text("SELECT count(*) FROM PCIs"), "1");
  expect_failure(run_zeldb({"scan", "--root", dump_file}), 1, "dump: has no folder sys");
  expect_failure(run_zeldb({"scan", "--root", dump_file + "s"}), 1, "dumps: No such file");
  expect_failure(scan({"--only", "pci,usb"}), 2, "usb");
}

ZELDB_ON_EVERY_ENGINE(Scan);

}  // namespace
}  // namespace zeldb_test
