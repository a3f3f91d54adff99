// SPDX-License-Identifier: Apache-2.0
//
// The running system: files that it does not give, and what drives and drivers answer. A recorded machine
// becomes the running one by chroot, its drivers by an ioctl of the test's own.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <linux/ethtool.h>
#include <linux/nvme_ioctl.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <string>

#include "scan/drive_answers.h"
#include "scan/scan.h"
#include "tests/scan/machine_file.h"
#include "tests/support/texts.h"

namespace {

// By the interface: the version of its firmware, and its permanent address.
const std::map<std::string, std::pair<std::string, std::string>> kDrivers = {
    {"up0", {"9.20 (F)", std::string("\x02\0\0\0\0\x01", 6)}},
    {"up1", {"N/A", std::string(6, '\0')}},
    {"up2", {"", std::string(33, '\x01')}},
};
int nvme_status = 0;

int answer_ethtool(const ifreq& request) {
  const auto driver = kDrivers.find(request.ifr_name);
  if (driver == kDrivers.end()) return -1;
  const auto& [version, address] = driver->second;
  auto* const info = reinterpret_cast<ethtool_drvinfo*>(request.ifr_data);
  auto* const permanent = reinterpret_cast<ethtool_perm_addr*>(request.ifr_data);
  if (info->cmd == ETHTOOL_GDRVINFO) std::memcpy(info->fw_version, version.data(), version.size());
  if (info->cmd != ETHTOOL_GPERMADDR) return 0;
  std::memcpy(permanent->data, address.data(), std::min<size_t>(address.size(), permanent->size));
  permanent->size = static_cast<uint32_t>(address.size());
  return 0;
}

}  // namespace

// Also for the libraries.
extern "C" __attribute__((visibility("default"))) int ioctl(int file, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (request == SIOCETHTOOL) return answer_ethtool(*static_cast<ifreq*>(argument));
  if (request == NVME_IOCTL_ADMIN_CMD) {
    errno = ENOTTY;
    if (nvme_status < 0) return nvme_status;
    const auto& command = *static_cast<nvme_passthru_cmd*>(argument);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): as the kernel has it
    std::memcpy(reinterpret_cast<void*>(static_cast<uintptr_t>(command.addr)), "\x04\x39\x01\x64\x0A\x03",
                6);  // 313 kelvin; 3 percent are used
    return nvme_status;
  }
  const auto real = reinterpret_cast<int (*)(int, unsigned long, ...)>(dlsym(RTLD_NEXT, "ioctl"));
  return real(file, request, argument);
}

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;
using zeldb::scan::Machine;

const std::string kRunning =
    R"(* A drive of each kind, and one that gives no answer; ports of three drivers and of none.
pci pci0000:00/0000:00:01.0 8086:1572 020000
net up0 address=02:00:00:00:00:09 type=1 addr_assign_type=3
pci pci0000:00/0000:00:01.3 8086:1572 020000
net up1 address=02:00:00:00:00:08 type=1 addr_assign_type=0
pci pci0000:00/0000:00:01.1 8086:1572 020000
net up2 address=02:00:00:00:00:07 type=1 addr_assign_type=0
pci pci0000:00/0000:00:01.2 8086:1572 020000
net a-name-that-is-too-long address=02:00:00:00:00:06 type=1 addr_assign_type=3
pci pci0000:00/0000:00:02.0 144d:a824 010802
files /nvme/nvme0 transport=pcie address=0000:00:02.0 serial=NV0
sys/class/nvme/nvme0 -> /nvme/nvme0
files /nvme/nvme1 transport=pcie serial=NV1
sys/class/nvme/nvme1 -> /nvme/nvme1
files /nvme/nvme2 transport=pcie serial=NV2
sys/class/nvme/nvme2 -> /nvme/nvme2
dev/nvme0: a drive
pci pci0000:00/0000:00:03.0 8086:a182 010601
scsi sda ata1/host0/target0:0:0/0:0:0:0 vendor=ATA model=SIXTEEN_LETTERS_ type=0
run/udev/data/b8:0: E:ID_MODEL_ENC=SIXTEEN_LETTERS_\x5cx20AND\x5cx20MORE\x5cx20\x5cx20
run/udev/data/b8:0: E:ID_SERIAL_SHORT=SER-1
run/udev/data/b8:0: E:ID_WWN=0x5000c500a1b2c3d4
run/udev/data/b8:0: E:ID_ATA_ROTATION_RATE_RPM=7200
at sys/devices/pci0000:00/0000:00:03.0
scsi sdb ata2/host1/target1:0:0/1:0:0:0 vendor=ATA model=SOLID rev=1 type=0 wwid=naa.1
/vpd_pg80 # 00800002 "S2"
run/udev/data/b8:1: E:ID_MODEL_ENC=SHORT
run/udev/data/b8:1: E:ID_SERIAL_SHORT=SER-2
run/udev/data/b8:1: E:ID_REVISION=2
run/udev/data/b8:1: E:ID_ATA_ROTATION_RATE_RPM=5
at sys/devices/pci0000:00/0000:00:03.0
scsi sdc ata3/host2/target2:0:0/2:0:0:0 vendor=ATA type=0
run/udev/data/b8:2: E:ID_ATA_ROTATION_RATE_RPM=99999
at sys/devices/pci0000:00/0000:00:03.0
scsi sdd ata3/host3/target3:0:0/3:0:0:0 vendor=ATA model=SOLID type=0
/block/sdd/queue/rotational: 0
at sys/devices/pci0000:00/0000:00:03.0
scsi sde ata3/host4/target4:0:0/4:0:0:0 vendor=ATA model=SILENT type=0
each N 0 2
sys/block/sd{N+10:1}/uevent: MAJOR=8
sys/block/sd{N+10:1}/uevent: MINOR={N}
sys/block/sd{N+10:1}/uevent: DEVNAME=sd{N+10:1}
sys/block/sd{N+10:1}/subsystem -> sys/class/block
sys/class/block/sd{N+10:1} -> sys/block/sd{N+10:1}
end
sys/devices/system/cpu/cpu0/topology/core_id: 0
)";

// The folder is the root of this process, as long as this lasts. Only root may.
class Inside {
 public:
  explicit Inside(const fs::path& folder) : is_there(chroot(folder.c_str()) == 0) {}
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;
  // The working directory is still outside.
  ~Inside() { EXPECT_EQ(is_there ? chroot(".") : 0, 0); }
  const bool is_there;
};

std::string shown(const zeldb::scan::Value& value) {
  if (const auto* const text = std::get_if<std::string>(&value)) return *text;
  if (const auto* const number = std::get_if<uint64_t>(&value)) return std::to_string(*number);
  if (const auto* const near = std::get_if<zeldb::scan::Near>(&value)) return std::to_string(near->number);
  return std::holds_alternative<zeldb::scan::Kept>(value) ? "kept" : "-";
}

TEST(ScanRunning, AsksDrivesAndDrivers) {
  if (!ZELDB_SCANS_PCI || !zeldb::scan::can_ask_udev() || !zeldb::scan::can_ask_nvme())
    GTEST_SKIP() << "not all libraries";
  const Scratch scratch;
  std::ofstream(scratch.folder / "running.txt") << kRunning;
  unpack(scratch.folder / "running.txt", scratch.folder / "machine");
  setenv("SYSTEMD_DEVICE_VERIFY_SYSFS", "0", 1);
  EXPECT_TRUE(zeldb::scan::ask_nvme("null-0").trouble);  // and loads the library
  fs::current_path("/");
  zeldb::scan::Findings findings;
  {
    const Inside inside(scratch.folder / "machine");
    if (!inside.is_there) GTEST_SKIP() << "needs root";
    findings = zeldb::scan::find({}, {});
  }
  EXPECT_EQ(testing::PrintToString(findings.troubles),
            "{ \"health of drives: /dev/nvme1: No such file or directory\" }");
  const std::set<std::string> kTables = {"AimDisks", "PCILogicalPort", "Firmwares"};
  const std::set<std::string> kColumns = {
      "Model",       "SerialNo",   "FwVersion",        "UUID",         "MediaTypeId", "Warning",
      "Temperature", "RemainLife", "PermanentAddress", "VersionString"};
  std::string told;
  for (const auto& row : findings.rows) {
    if (!kTables.contains(row.table)) continue;
    told += row.key + ":";
    for (const auto& cell : row.cells) {
      if (kColumns.contains(cell.column)) told += " " + shown(cell.value);
    }
    told += "\n";
  }
  EXPECT_EQ(told,
            "NV0: 1 NV0 - - - 4 40 97\n"
            "NV1: 1 NV1 - - - kept kept kept\n"
            "NV2: 1 NV2 - - - kept kept kept\n"
            "SER-1: 7200 SER-1 SIXTEEN_LETTERS_ AND MORE 0x5000c500a1b2c3d4 - kept kept kept\n"
            "S2: - S2 SOLID naa.1 1 kept kept kept\n"
            "2:0:0:0: - - - - - kept kept kept\n"
            "3:0:0:0: 1 - SOLID - - kept kept kept\n"
            "4:0:0:0: - - SILENT - - kept kept kept\n"
            "0000:00:01.0/0: 02:00:00:00:00:01\n"
            "0000:00:01.0: 9.20 (F)\n"
            "0000:00:01.1/0: 02:00:00:00:00:07\n"
            "0000:00:01.2/0: -\n"
            "0000:00:01.3/0: 02:00:00:00:00:08\n");
  nvme_status = 2;
  EXPECT_NE(zeldb::scan::ask_nvme("null").trouble->find("/dev/null: "), std::string::npos);
  nvme_status = -1;
  EXPECT_EQ(zeldb::scan::ask_nvme("null").trouble, "/dev/null: Inappropriate ioctl for device");
}

TEST(ScanRunning, TellsThatALibraryIsMissing) {
  const Scratch scratch;
  fs::current_path("/");
  const Inside inside(scratch.folder);
  const auto trouble = zeldb::scan::ask_nvme("none").trouble;
  if (!inside.is_there || trouble == "/dev/none: No such file or directory")
    GTEST_SKIP() << "not root, or already loaded";
  EXPECT_EQ(trouble.has_value(), zeldb::scan::can_ask_nvme());
}

TEST(ScanMachine, GivesNothingOfWhatItCannotRead) {
  const Scratch scratch;
  const fs::path root = scratch.folder / "machine";
  const fs::path sys = root / "sys";
  std::ofstream(scratch.folder / "machine.txt")
      << "pci pci0000:00/0000:00:01.0 8086:1572 020000\n/vpd # 00\n"
         "sys/folder/file: 1\nsys/firmware/dmi/entries/1-0/length: 1\n";
  unpack(scratch.folder / "machine.txt", root);
  std::ofstream(sys / "hex") << "0x1F\n";
  std::ofstream(sys / "long") << std::string(5000, '1');
  std::ofstream(sys / "blank") << " \n";
  fs::create_symlink("loop", sys / "loop");
  fs::create_symlink("..", sys / "up");
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, (sys / "socket").c_str(), sizeof(address.sun_path) - 1);
  const int file = socket(AF_UNIX, SOCK_STREAM, 0);
  EXPECT_EQ(bind(file, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  close(file);
  fs::create_symlink("../../machine.txt", sys / "outside");
  const Machine machine(root);
  EXPECT_EQ(machine.number("sys/hex"), 31U);
  EXPECT_EQ(machine.bytes("sys/long")->size(), 4096U);
  for (const char* path : {"sys/long", "sys/blank", "sys/socket", "sys/folder", "sys/none"})
    EXPECT_FALSE(machine.number(path)) << path;
  EXPECT_FALSE(Machine("/").bytes("proc/self/mem"));
  EXPECT_TRUE(machine.names("sys/hex").empty());
  EXPECT_FALSE(machine.target("sys/up"));
  EXPECT_FALSE(machine.trouble("sys/hex/inside"));
  EXPECT_EQ(machine.trouble_in("sys"), "sys/loop: Too many levels of symbolic links");
  EXPECT_EQ(machine.trouble("sys/outside"), "leads out of the folder");
  // Root reads files that their owner may not read; the kernel asks for the real user.
  fs::permissions(scratch.folder, fs::perms::all);
  const std::string vpd = "sys/bus/pci/devices/0000:00:01.0/vpd";
  fs::permissions(root / vpd, fs::perms::none);
  const uid_t user = getuid();
  const bool was_root = geteuid() == 0 && setreuid(65534, static_cast<uid_t>(-1)) == 0;
  const auto troubles = zeldb::scan::find({.root = root, .pci_dump = {}, .only = {}}, {}).troubles;
  EXPECT_EQ(testing::PrintToString(troubles),
            "{ \"processors, memory and slots: sys/firmware/dmi: cannot be read\"" +
                (ZELDB_SCANS_PCI ? ", \"vital product data: " + vpd + ": Permission denied\" }"
                                 : std::string(", \"PCI functions: this build has no libpci\" }")));
  EXPECT_EQ(was_root ? setreuid(user, static_cast<uid_t>(-1)) : 0, 0);
}

}  // namespace
}  // namespace zeldb_test
