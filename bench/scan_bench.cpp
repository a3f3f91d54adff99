// SPDX-License-Identifier: Apache-2.0
//
// The cost of "zeldb scan" for a recorded machine of 500 functions and 100 NVMe drives: CPU of the command,
// memory and calls of the table access, into empty tables and once more. On SQLite, or on the server that
// with_mariadb starts.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/program.h"

namespace {

namespace fs = std::filesystem;
using bench::run_program;

constexpr int kFunctions = 500;
constexpr int kDrives = 100;

void write(const fs::path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

std::string address_of(int nth) {
  char text[16];
  std::snprintf(text, sizeof(text), "0000:%02x:%02x.0", static_cast<unsigned>(nth / 32),
                static_cast<unsigned>(nth % 32));
  return text;
}

// The first functions are those of the drives.
void add_function(const fs::path& sys, int nth) {
  const std::string address = address_of(nth);
  const fs::path folder = sys / "devices/pci0000:00" / address;
  fs::create_directories(folder);
  std::string config(64, '\0');
  config.replace(0, 4, std::string("\x86\x80\x01\x10", 4));
  config[10] = static_cast<char>(nth < kDrives ? 0x08 : 0x00);
  config[11] = static_cast<char>(nth < kDrives ? 0x01 : 0x02);
  write(folder / "config", config);
  write(folder / "vendor", "0x8086\n");
  write(folder / "device", "0x1001\n");
  write(folder / "class", nth < kDrives ? "0x010800\n" : "0x020000\n");
  fs::create_directory_symlink(folder, sys / "bus/pci/devices" / address);
  if (nth >= kDrives) return;
  const std::string name = "nvme" + std::to_string(nth);
  fs::create_directories(sys / "class/nvme" / name);
  for (const auto& [file, text] : {std::pair("transport", std::string("pcie")), std::pair("address", address),
                                   std::pair("model", std::string("MODEL")), std::pair("serial", "S" + name)})
    write(sys / "class/nvme" / name / file, text + "\n");
  fs::create_directories(sys / "block" / (name + "n1"));
  write(sys / "block" / (name + "n1") / "size", "7501476528\n");
  fs::create_directory_symlink(sys / "class/nvme" / name, sys / "block" / (name + "n1") / "device");
}

void make_machine(const fs::path& root) {
  fs::create_directories(root / "sys/bus/pci/devices");
  for (int nth = 0; nth < kFunctions; ++nth) add_function(root / "sys", nth);
}

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

long lines_of(const fs::path& file) {
  std::ifstream lines(file);
  long count = 0;
  for (std::string line; std::getline(lines, line);) ++count;
  fs::remove(file);
  return count;
}

void run(const std::string& folder) {
  const char* const server = std::getenv("ZELDB_TEST_MARIADB");
  setenv("ZEL_DB_URL", (server != nullptr ? server : "sqlite://" + folder).c_str(), 1);
  const std::string program = fs::read_symlink("/proc/self/exe").parent_path() / "zeldb";
  const std::string root = folder + "/machine";
  const std::string trace = folder + "/trace";
  make_machine(root);
  run_program({program, "init"});
  setenv("ZEL_DB_TRACE", trace.c_str(), 1);
  for (const char* when : {"first", "second"}) {
    const rusage used = run_program({program, "scan", "--root", root});
    std::printf(
        "%s scan of %d functions and %d drives: %.2f s of CPU, %ld KiB, %ld calls of the table access\n",
        when, kFunctions, kDrives, seconds(used.ru_utime) + seconds(used.ru_stime), used.ru_maxrss,
        lines_of(trace));
  }
}

}  // namespace

int main() {
  return bench::in_folder("scan_bench", run);
}
