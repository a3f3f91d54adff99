// SPDX-License-Identifier: Apache-2.0
//
// Runs each work in turn as the library and as code written by hand does it, and prints the ratios of their
// times in one run: on SQLite, or on the server that with_mariadb starts. The latter stays on one CPU with
// the client, "taskset -c 0 with_mariadb inventory_bench", for else the times tell where the scheduler put
// the two.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>

#include "bench/works.h"
#include "platform/zel_db.h"
#include "platform/zel_db_admin.h"

namespace bench {

namespace {

struct Work {
  const char* name;
  double aim;
  std::function<void(Works&)> prepare;  // not timed
  std::function<void(Works&)> run;
};

void run_sql(const std::string& sql) {
  if (zel_db_raw_query(get_dmdb_handle(0, nullptr, 0), sql.c_str(), static_cast<int>(sql.size()), nullptr) !=
      0) {
    give_up(sql);
  }
}

void store_all(Works& works) {
  for (unsigned i = 0; i < kSettings; ++i) works.store(setting(i));
}

void fill(Works& works) {
  run_sql("DELETE FROM PCISetting");
  store_all(works);
}

const Work kWorks[] = {
    {"fresh stores", 1.1, [](Works&) { run_sql("DELETE FROM PCISetting"); }, store_all},
    {"unchanged stores", 1.25, fill, store_all},
    {"list", 1.15, fill,
     [](Works& works) {
       if (works.list() != kSettings) give_up("the list is not complete");
     }},
    {"keyed reads", 1.15, [](Works&) {},
     [](Works& works) {
       for (unsigned i = 0; i < kKeys; ++i) {
         if (works.aim_supported(function_key(i)) != i % 4) give_up("a wrong value");
       }
     }},
};

// The fastest repetition of each work, which the machine disturbed least.
class Ratios : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      const auto [best, fresh] = best_.try_emplace(run.run_name.function_name, run.GetAdjustedRealTime());
      if (!fresh) best->second = std::min(best->second, run.GetAdjustedRealTime());
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void print() const {
    std::printf("\n%-20s %12s %12s %7s %6s\n", "work", "library ms", "by hand ms", "ratio", "aim");
    for (const Work& work : kWorks) {
      const auto library = best_.find(std::string(work.name) + ", library");
      const auto hand = best_.find(std::string(work.name) + ", by hand");
      if (library == best_.end() || hand == best_.end()) continue;
      std::printf("%-20s %12.2f %12.2f %7.2f %6.2f\n", work.name, library->second, hand->second,
                  library->second / hand->second, work.aim);
    }
  }

 private:
  std::map<std::string, double> best_;
};

void add(const Work& work, Works& works, const char* who, int iterations) {
  const std::string name = std::string(work.name) + ", " + who;
  benchmark::RegisterBenchmark(name.c_str(),
                               [&work, &works](benchmark::State& state) {
                                 for ([[maybe_unused]] const auto& iteration : state) {
                                   state.PauseTiming();
                                   work.prepare(works);
                                   state.ResumeTiming();
                                   work.run(works);
                                 }
                               })
      ->Unit(benchmark::kMillisecond)
      ->Iterations(iterations)
      ->Repetitions(5)
      ->ReportAggregatesOnly(false);
}

class Folder {
 public:
  Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "inventory_bench.XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) give_up("no temporary folder");
    path_ = name;
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { std::filesystem::remove_all(path_); }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
};

void make_database(const std::string& url) {
  setenv("ZEL_DB_URL", url.c_str(), 1);
  char error[512] = "";
  if (zel_db_create(nullptr, error, sizeof(error)) != 0) give_up(error);
  for (unsigned i = 0; i < kKeys; ++i) {
    run_sql("INSERT INTO PCIAdapter (PCIFuncKey, AIMSupported, OOBSrc) VALUES (" +
            std::to_string(function_key(i)) + ", " + std::to_string(i % 4) + ", 0)");
  }
}

std::string socket_of(const std::string& url) {
  constexpr const char* kOption = "socket=";
  const size_t option = url.find(kOption);
  return option == std::string::npos ? "" : url.substr(option + std::strlen(kOption));
}

int run(int argc, char** argv) {
  const Folder folder;
  const char* const server = std::getenv("ZELDB_TEST_MARIADB");
  make_database(server != nullptr ? server : "sqlite://" + folder.path());
  const std::unique_ptr<Works> ours = library();
  const std::unique_ptr<Works> hand =
      server != nullptr ? hand_mariadb(socket_of(server)) : hand_sqlite(folder.path() + "/dmdb.sqlite");
  for (const Work& work : kWorks) {
    const int iterations = work.prepare && std::string(work.name) == "keyed reads" ? 50 : 1;
    add(work, *ours, "library", iterations);
    add(work, *hand, "by hand", iterations);
  }
  benchmark::Initialize(&argc, argv);
  Ratios ratios;
  benchmark::RunSpecifiedBenchmarks(&ratios);
  ratios.print();
  return 0;
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
  return bench::run(argc, argv);
}
