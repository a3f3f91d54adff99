// SPDX-License-Identifier: Apache-2.0
//
// bench_ratios [-j FILE] [-r ROUNDS] [-w WORK]: CPU time of the works as the library does them against
// code tuned by hand, and against other libraries. All in one process, in rounds that take turns, every other
// one in reverse; of each round the ratio is taken, and the median of these. On SQLite, or on the server that
// with_mariadb starts, whose CPU time counts, too.
#include <nlohmann/json.hpp>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>

#include "bench/fixture.h"
#include "bench/one_work.h"
#include "bench/program.h"
#include "bench/records.h"
#include "bench/works.h"

namespace bench {

namespace {

namespace fs = std::filesystem;

enum { kOurs, kTuned, kByColumns, kSqliteCpp, kSoci, kContenders };
constexpr const char* kNames[] = {"ours", "tuned", "columns", "SQLiteCpp", "SOCI"};

double seconds_of(clockid_t clock) {
  timespec time = {};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// CPU time of this process, of its children and of the server.
class CpuTime {
 public:
  void add_server(pid_t server) { clock_getcpuclockid(server, &server_.emplace()); }
  double now() const {
    rusage children = {};
    getrusage(RUSAGE_CHILDREN, &children);
    const auto seconds = [](const timeval& time) {
      return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds_of(CLOCK_PROCESS_CPUTIME_ID) + (server_ ? seconds_of(*server_) : 0) +
           seconds(children.ru_utime) + seconds(children.ru_stime);
  }

 private:
  std::optional<clockid_t> server_;
};

pid_t server_behind(const std::string& path) {
  const int end = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  ucred peer = {};
  socklen_t size = sizeof(peer);
  if (connect(end, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
      getsockopt(end, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
    give_up("no server behind " + path);
  }
  close(end);
  return peer.pid;
}

std::string socket_of(const std::string& url) {
  constexpr std::string_view kOption = "socket=";
  const size_t option = url.find(kOption);
  if (option == std::string::npos) give_up("no socket in " + url);
  return url.substr(option + kOption.size());
}

using Runs = std::array<std::function<void()>, kContenders>;

struct Work {
  std::string name;
  Runs run;
  Runs prepare = {};  // before each run, not timed
};

// The databases that the library and the programs use meanwhile.
class InPlace {
 public:
  explicit InPlace(const std::string& url) {
    if (const char* const before = std::getenv("ZEL_DB_URL")) before_ = before;
    setenv("ZEL_DB_URL", url.c_str(), 1);
  }
  InPlace(const InPlace&) = delete;
  InPlace& operator=(const InPlace&) = delete;
  ~InPlace() { setenv("ZEL_DB_URL", before_.c_str(), 1); }

 private:
  std::string before_;
};

// Databases and input of the works. On SQLite each contender has files of its own: writes of another one
// would make its cache stale.
class Scene {
 public:
  explicit Scene(std::string folder);
  std::vector<std::function<Work()>> works();

  CpuTime cpu;

 private:
  bool is_server() const { return !server_.empty(); }
  static std::string prefix_of(const std::string& place);
  std::string url_of(const std::string& place) const;
  std::string place(size_t contender) const {
    return is_server() ? socket_ : folder_ + "/" + kNames[contender];
  }
  void load_everywhere(const std::vector<std::string>& rows);
  Runs each(const std::function<void(Works&)>& run) const;
  Work store(const char* name, bool fresh, void (Works::*run)(const PCISetting_info&) = &Works::store);
  Work list(const char* name, const char* work, const std::vector<std::string>& rows);
  Work program(const char* name, const std::string& place, std::vector<std::string> words);
  Work parser();

  std::string folder_;
  std::string server_;
  std::string socket_;
  std::array<std::unique_ptr<Works>, kContenders> works_;
  std::deque<Calls> calls_;
  Settings settings_;
};

Scene::Scene(std::string folder) : folder_(std::move(folder)) {
  static constexpr Factory* kSqlite[] = {library, tuned_sqlite, columns_sqlite, sqlitecpp, soci_sqlite};
  static constexpr Factory* kMariadb[] = {library, tuned_mariadb, nullptr, nullptr, soci_mariadb};
  if (const char* const server = std::getenv("ZELDB_TEST_MARIADB")) {
    server_ = server;
    socket_ = socket_of(server_);
    cpu.add_server(server_behind(socket_));
    make_databases(server_, adapter_rows(kKeys));
  }
  for (size_t i = 0; i < kContenders; ++i) {
    if (!is_server()) make_databases(url_of(kNames[i]), adapter_rows(kKeys));
    if (Factory* const factory = is_server() ? kMariadb[i] : kSqlite[i]) works_[i] = factory(place(i));
  }
  setenv("ZEL_DB_URL", url_of(kNames[kOurs]).c_str(), 1);
}

// On the server the contenders share their tables; other databases have a prefix.
std::string Scene::prefix_of(const std::string& place) {
  return std::find(std::begin(kNames), std::end(kNames), place) != std::end(kNames) ? "" : place + "_";
}

std::string Scene::url_of(const std::string& place) const {
  if (is_server()) return server_ + "&prefix=" + prefix_of(place);
  fs::create_directories(folder_ + "/" + place);
  return "sqlite://" + folder_ + "/" + place;
}

void Scene::load_everywhere(const std::vector<std::string>& rows) {
  for (size_t i = 0; i < (is_server() ? 1 : kContenders); ++i) load_rows(url_of(kNames[i]), rows);
}

Runs Scene::each(const std::function<void(Works&)>& run) const {
  Runs all;
  for (size_t i = 0; i < kContenders; ++i) {
    if (Works* const works = works_[i].get()) all[i] = [run, works] { run(*works); };
  }
  return all;
}

Work Scene::store(const char* name, bool fresh, void (Works::*run)(const PCISetting_info&)) {
  Work work = {name, each([this, run](Works& works) {
                 for (unsigned i = 0; i < kSettings; ++i) (works.*run)(settings_[i]);
               })};
  if (fresh) {
    work.prepare = each([](Works& works) { works.clear_settings(); });
    if (is_server()) work.prepare[kOurs] = work.prepare[kTuned];
  } else {
    for (const auto& once : work.run) {
      if (once) once();
    }
  }
  return work;
}

// By hand: the statements that the library runs for it, in one transaction where tuned.
Work Scene::list(const char* name, const char* work, const std::vector<std::string>& rows) {
  load_everywhere(rows);
  const std::string trace = folder_ + "/trace." + work;
  trace_program(trace, {built_program("bench_work"), work, "0"});
  calls_.push_back(read_calls(trace));
  Work all = {name, each([&calls = calls_.back()](Works& works) { works.replay(calls); })};
  all.run[kOurs] = [work] { run_work(work, 0); };
  all.run[kByColumns] = all.run[kSoci] = nullptr;
  return all;
}

// By hand: a process that opens the databases and runs the same statements in one transaction.
Work Scene::program(const char* name, const std::string& place, std::vector<std::string> words) {
  words[0] = built_program(words[0]);
  const std::string trace = folder_ + "/trace." + name;
  const InPlace there(url_of(place));
  trace_program(trace, words);
  const std::string where = is_server() ? socket_ + "#" + prefix_of(place) : folder_ + "/" + place;
  const std::vector<std::string> limit = {built_program(is_server() ? "replay_mariadb" : "replay_sqlite"),
                                          where, trace};
  return {name,
          {[words, url = url_of(place)] {
             const InPlace here(url);
             run_program(words);
           },
           [limit] { run_program(limit); }}};
}

// Against storing as many settings one by one.
Work Scene::parser() {
  const std::string url = url_of("parser");
  make_databases(url, adapter_rows(kSettings));
  make_bios(folder_, kSettings);
  Work work = store("parser's run, 10,000 functions", true);
  work.run[kOurs] = [this, url] {
    const InPlace here(url);
    setenv("ZEL_PLATFORM_DIR", folder_.c_str(), 1);
    run_program({built_program("ucm_parser"), "-c"});
    setenv("ZEL_PLATFORM_DIR", ZELDB_SAMPLES, 1);
  };
  work.run[kByColumns] = work.run[kSqliteCpp] = work.run[kSoci] = nullptr;
  return work;
}

template <class Run>
void times(unsigned count, Run run) {
  for (unsigned i = 0; i < count; ++i) run(i);
}

std::vector<std::function<Work()>> Scene::works() {
  const auto keyed = [this](const char* name, unsigned (Works::*read)(uint32_t)) {
    return Work{name, each([read](Works& works) {
                  times(kKeys, [&](unsigned i) {
                    if ((works.*read)(function_key(i)) > 3) give_up("a wrong value");
                  });
                })};
  };
  // Against reads that each stand alone.
  const auto within_list = [this](const char* name, unsigned (Works::*read)(uint32_t)) {
    return Work{
        name, each([read](Works& works) {
          works.hold_reads([&] { times(kKeys, [&](unsigned i) { (works.*read)(function_key(i)); }); });
        })};
  };
  const auto rows = [this](const char* name, unsigned (Works::*read)()) {
    return Work{name, each([read](Works& works) {
                  if ((works.*read)() != kSettings) give_up("the list is not complete");
                })};
  };
  return {
      [this] { return store("store 10,000 settings, fresh", true); },
      [this] { return store("store 10,000 settings, again", false); },
      [this] { return store("again, by hand read and compared", false, &Works::store_compared); },
      [=] { return rows("list 10,000 rows of 2.9 KB", &Works::list_settings); },
      [=, this] {
        load_everywhere(drive_rows(kSettings * 10 / 8));
        return rows("list 10,000 rows of 0.36 KB", &Works::list_drives);
      },
      [=] { return keyed("1,000 keyed reads, 2 columns", &Works::aim_supported); },
      [=] { return keyed("1,000 keyed reads, 27 columns", &Works::device_id); },
      [=] { return within_list("in a list's call, 2 columns", &Works::aim_supported); },
      [=] { return within_list("in a list's call, 27 columns", &Works::device_id); },
      [this] {
        return Work{"property: open, read, close",
                    each([](Works& works) { times(50, [&](unsigned) { works.property(); }); })};
      },
      [this] { return list("list of 1,000 adapters", "adapters", {}); },
      [this] {
        std::vector<std::string> drives = drive_rows(500);
        drives.insert(drives.begin(), {"DELETE FROM AimDisks", "DELETE FROM NVMeDrives"});
        return list("merged list of 500 drives", "merged", drives);
      },
      [this] { return list("list of 1,000 components", "components", component_rows(1'000)); },
      [this] { return parser(); },
      [this] {
        return program("load the library, first call", kNames[kOurs], {"bench_work", "keyed", "1"});
      },
      [this] {
        make_sample(url_of("sample"));
        return program("zeldb slots", "sample", {"zeldb", "slots"});
      },
      [this] {
        return program("zeldb report", "sample", {"zeldb", "report", "--force", folder_ + "/report.html"});
      },
  };
}

struct Measured {
  std::string work;
  std::array<std::vector<double>, kContenders> milliseconds;

  double part(size_t contender, double share, bool ratio) const {
    std::vector<double> values = milliseconds[contender];
    for (size_t i = 0; ratio && i < values.size(); ++i) values[i] /= milliseconds[kTuned][i];
    std::sort(values.begin(), values.end());
    const double last = static_cast<double>(values.size()) - 1;
    return values.empty() ? NAN : values[static_cast<size_t>(std::lround(share * last))];
  }
};

// The first round is not counted: it prepares statements and fills caches.
Measured measure(const Work& work, const CpuTime& cpu, unsigned rounds) {
  Measured measured = {work.name, {}};
  for (unsigned round = 0; round <= rounds; ++round) {
    for (size_t turn = 0; turn < kContenders; ++turn) {
      const size_t who = round % 2 == 0 ? turn : kContenders - 1 - turn;
      if (!work.run[who]) continue;
      if (work.prepare[who]) work.prepare[who]();
      const double start = cpu.now();
      work.run[who]();
      if (round > 0) measured.milliseconds[who].push_back((cpu.now() - start) * 1e3);
    }
  }
  return measured;
}

void print(const Measured& measured) {
  std::printf("%-32s", measured.work.c_str());
  for (const size_t who : {kOurs, kTuned}) std::printf(" %9.2f", measured.part(who, 0.5, false));
  for (const size_t who : {kOurs, kByColumns, kSqliteCpp, kSoci}) {
    if (measured.milliseconds[who].empty()) {
      std::printf(" %10s", "-");
    } else {
      std::printf(" %10.2f", measured.part(who, 0.5, true));
    }
  }
  std::printf("   %.2f to %.2f\n", measured.part(kOurs, 0.25, true), measured.part(kOurs, 0.75, true));
  std::fflush(stdout);
}

nlohmann::json described(const Measured& measured) {
  nlohmann::json all = {{"work", measured.work}};
  for (size_t who = 0; who < kContenders; ++who) {
    if (measured.milliseconds[who].empty()) continue;
    all[kNames[who]] = {{"milliseconds", measured.part(who, 0.5, false)},
                        {"ratio", measured.part(who, 0.5, true)},
                        {"lower_quartile", measured.part(who, 0.25, true)},
                        {"upper_quartile", measured.part(who, 0.75, true)}};
  }
  return all;
}

struct Options {
  std::string json;
  unsigned rounds = 15;
  std::string only;
};

Options options;

void run(const std::string& folder) {
  setenv("VREL_LOG", "/dev/null", 1);
  setenv("ZEL_PLATFORM_DIR", ZELDB_SAMPLES, 1);
  Scene scene(folder);
  nlohmann::json all = nlohmann::json::array();
  std::printf("%-32s %9s %9s %10s %10s %10s %10s   %s\n", "CPU time", "ours, ms", "tuned, ms", "ratio",
              kNames[kByColumns], "SQLiteCpp", "SOCI", "ours, quartiles");
  for (const auto& make : scene.works()) {
    const Work work = make();
    if (work.name.find(options.only) == std::string::npos) continue;
    const Measured measured = measure(work, scene.cpu, options.rounds);
    print(measured);
    all.push_back(described(measured));
  }
  if (!options.json.empty()) std::ofstream(options.json) << all.dump(2) << "\n";
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  for (int option = 0; (option = getopt(argc, argv, "j:r:w:")) != -1;) {
    if (option == 'j') {
      bench::options.json = optarg;
    } else if (option == 'r') {
      bench::options.rounds = static_cast<unsigned>(std::strtoul(optarg, nullptr, 10));
    } else if (option == 'w') {
      bench::options.only = optarg;
    } else {
      return 2;
    }
  }
  return bench::in_folder("bench", bench::run);
}
