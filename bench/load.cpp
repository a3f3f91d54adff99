// SPDX-License-Identifier: Apache-2.0
//
// Readers and writers at once, each a process of its own: inventory_load [SECONDS [READERS [WRITERS]]], on
// SQLite, or on the server that with_mariadb starts. Prints how long calls took, how large the log of the
// database became, and by how much each process grew after the first quarter of the time; exit status 1 when
// a call failed, or when a process has more descriptors or 1 MiB more memory at the end.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <numeric>
#include <string>
#include <thread>
#include <vector>

#include "bench/records.h"
#include "platform/zel_db.h"
#include "platform/zel_db_admin.h"
#include "zeldb/firmware.h"
#include "zeldb/pci.h"
#include "zeldb/storage.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

struct Work {
  const char* name;
  bool writes;
  std::function<int(unsigned)> call;  // 0: it went well
};

template <auto function, typename List>
int list(unsigned /*turn*/) {
  List all = {};
  const int status = function(&all);
  std::free(all.Items);
  return status;
}

int store(unsigned turn) {
  PCISetting_info record = bench::setting(turn % 500);
  std::snprintf(reinterpret_cast<char*>(record.CurrentValue), sizeof(record.CurrentValue), "%u", turn);
  return static_cast<int>(extract_PCISetting_info(&record));
}

int health(unsigned turn) {
  return zeldb_set_adapter_health_status(1, static_cast<int>(turn % 12), turn);
}

int aim(unsigned turn) {
  unsigned supported = 0;
  return zeldb_get_pci_function_oob_type(turn % 2 == 0 ? 17301504 : 26738688, &supported, nullptr);
}

const Work kWorks[] = {
    {"keyed read", false, aim},
    {"list of adapters", false, list<zeldb_get_pci_adapter_list, _ZELDB_PCI_Adapter_List>},
    {"list of drives", false, list<zeldb_get_disk_list, aim_disk_list_t>},
    {"list of firmware", false, list<zeldb_get_pldm_firmware_list, _ZELDB_PldmFirmware_List>},
    {"store of a setting", true, store},
    {"health of an adapter", true, health}};
constexpr size_t kCount = std::size(kWorks);

struct Size {
  long kib = 0;
  long descriptors = 0;
};

Size own_size() {
  Size size;
  std::ifstream status("/proc/self/statm");
  status >> size.kib >> size.kib;
  size.kib *= sysconf(_SC_PAGESIZE) / 1024;
  size.descriptors = std::distance(fs::directory_iterator("/proc/self/fd"), {});
  return size;
}

// How often a call took so long: each place is a twentieth of a power of ten, from 0.1 us on. Of fixed size,
// so that what a process grows by is not its own notes.
struct Times {
  static constexpr double kPlaces = 20;
  uint32_t count[180] = {};

  void add(double microseconds) {
    const double place = kPlaces * std::log10(std::max(microseconds, 0.1) * 10);
    ++count[std::min(static_cast<size_t>(place), std::size(count) - 1)];
  }
  uint64_t calls() const { return std::accumulate(std::begin(count), std::end(count), uint64_t{0}); }
  double part(double share) const {
    double left = share * static_cast<double>(calls());
    size_t place = 0;
    while (place + 1 < std::size(count) && (left -= count[place]) > 0) ++place;
    return std::pow(10, static_cast<double>(place + 1) / kPlaces) / 10;
  }
};

struct Measured {
  Times times[kCount];
  Size early, late;
  uint32_t failures = 0;
};

Measured work(bool writes, Clock::duration time, unsigned turn) {
  Measured measured;
  const auto start = Clock::now();
  for (auto now = start; now - start < time; ++turn) {
    if (measured.early.kib == 0 && now - start > time / 4) measured.early = own_size();
    for (size_t i = 0; i < kCount; ++i) {
      if (kWorks[i].writes != writes) continue;
      const auto before = Clock::now();
      const int status = kWorks[i].call(turn);
      now = Clock::now();
      measured.times[i].add(std::chrono::duration<double, std::micro>(now - before).count());
      if (status != 0 && measured.failures++ == 0) std::printf("%s: status %d\n", kWorks[i].name, status);
    }
  }
  measured.late = own_size();
  return measured;
}

int start(bool writes, Clock::duration time, unsigned turn) {
  int ends[2];
  if (pipe(ends) != 0) bench::give_up("pipe");
  if (fork() == 0) {
    const Measured measured = work(writes, time, turn);
    std::fflush(stdout);
    _exit(write(ends[1], &measured, sizeof(measured)) == sizeof(measured) ? 0 : 1);
  }
  close(ends[1]);
  return ends[0];
}

void fill(const std::string& url) {
  char error[512] = "";
  if (zel_db_create(url.c_str(), error, sizeof(error)) != 0) bench::give_up(error);
  for (const char* name : {"inventory", "adapters", "drives", "firmware"}) {
    const std::string path = std::string(ZELDB_SAMPLES "/") + name + ".sql";
    if (zel_db_load(url.c_str(), "dmdb", path.c_str(), error, sizeof(error)) != 0) bench::give_up(error);
  }
}

uintmax_t size_of(const fs::path& file) {
  std::error_code none;
  const uintmax_t size = fs::file_size(file, none);
  return none ? 0 : size;
}

unsigned argument(int argc, char** argv, int place, unsigned otherwise) {
  return argc > place ? static_cast<unsigned>(std::stoul(argv[place])) : otherwise;
}

int run(unsigned seconds, unsigned readers, unsigned writers) {
  std::string folder = (fs::temp_directory_path() / "inventory_load.XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) bench::give_up("no temporary folder");
  const char* const server = std::getenv("ZELDB_TEST_MARIADB");
  const std::string url = server != nullptr ? server + std::string("&prefix=load_") : "sqlite://" + folder;
  setenv("ZEL_DB_URL", url.c_str(), 1);
  fill(url);

  std::vector<int> ends;
  const auto begin = Clock::now();
  for (unsigned i = 0; i < readers + writers; ++i)
    ends.push_back(start(i >= readers, std::chrono::seconds(seconds), i * 100));
  uintmax_t log = 0;
  while (Clock::now() - begin < std::chrono::seconds(seconds)) {
    log = std::max(log, size_of(folder + "/dmdb.sqlite-wal"));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }

  Times all[kCount];
  uint32_t failures = 0;
  Size growth;
  for (const int end : ends) {
    Measured measured;
    size_t size = 0;
    auto* const bytes = reinterpret_cast<char*>(&measured);
    for (ssize_t part = 1; part > 0; size += static_cast<size_t>(part))
      part = read(end, bytes + size, sizeof(measured) - size);
    if (size != sizeof(measured)) bench::give_up("a process came to its end");
    for (size_t i = 0; i < kCount; ++i) {
      for (size_t place = 0; place < std::size(all[i].count); ++place)
        all[i].count[place] += measured.times[i].count[place];
    }
    failures += measured.failures;
    growth.kib = std::max(growth.kib, measured.late.kib - measured.early.kib);
    growth.descriptors = std::max(growth.descriptors, measured.late.descriptors - measured.early.descriptors);
  }
  while (wait(nullptr) > 0) {
  }

  std::printf("%-22s %10s %10s %10s\n", "work", "calls/s", "p50 us", "p99 us");
  for (size_t i = 0; i < kCount; ++i) {
    std::printf("%-22s %10.0f %10.0f %10.0f\n", kWorks[i].name, static_cast<double>(all[i].calls()) / seconds,
                all[i].part(0.5), all[i].part(0.99));
  }
  std::printf(
      "%u readers, %u writers, %u s on %s: %u calls failed; a process grew by %ld KiB and %ld descriptors\n",
      readers, writers, seconds, server != nullptr ? "MariaDB" : "SQLite", failures, growth.kib,
      growth.descriptors);
  if (server == nullptr) {
    std::printf("log: at most %ju KiB, %ju at the end, beside a database of %ju KiB\n", log / 1024,
                size_of(folder + "/dmdb.sqlite-wal") / 1024, size_of(folder + "/dmdb.sqlite") / 1024);
  }
  fs::remove_all(folder);
  return failures > 0 || growth.kib > 1024 || growth.descriptors > 0 ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  return run(argument(argc, argv, 1, 60), argument(argc, argv, 2, 4), argument(argc, argv, 3, 2));
}
