// SPDX-License-Identifier: Apache-2.0
//
// How long "zeldb report" takes for the sample controller, and how many statements it and "zeldb slots" run:
// cold, as the first program that opens the databases, and warm. On SQLite, or on the server that
// with_mariadb starts.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/program.h"
#include "platform/zel_db_admin.h"

namespace {

namespace fs = std::filesystem;
using bench::run_program;

constexpr const char* kInventory[] = {"inventory", "adapters", "processors", "drives", "firmware"};

void load(const char* database, const std::string& table) {
  char error[512] = "";
  const std::string script = ZELDB_SAMPLES "/" + table + ".sql";
  if (zel_db_load(nullptr, database, script.c_str(), error, sizeof(error)) != 0)
    throw std::runtime_error(error);
}

void make_sample() {
  char error[512] = "";
  if (zel_db_create(nullptr, error, sizeof(error)) != 0) throw std::runtime_error(error);
  for (const char* table : kInventory) load("dmdb", table);
  load("propertiesdb", "properties");
}

// Milliseconds.
double report(const std::string& program, const std::string& page) {
  const auto start = std::chrono::steady_clock::now();
  run_program({program, "report", "--force", page});
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// The calls of the table access that a run of the command makes, a line each.
std::vector<std::string> calls_of(const std::vector<std::string>& words, const std::string& trace) {
  fs::remove(trace);
  setenv("ZEL_DB_TRACE", trace.c_str(), 1);
  run_program(words);
  unsetenv("ZEL_DB_TRACE");
  std::ifstream lines(trace);
  std::vector<std::string> calls;
  for (std::string line; std::getline(lines, line);) calls.push_back(line);
  return calls;
}

long beginning_with(const std::vector<std::string>& calls, const std::string& text) {
  return std::ranges::count_if(calls, [&](const std::string& call) { return call.starts_with(text); });
}

// Lists, ports and product data cost what the library's functions ask by themselves; the rest is what the
// command looks up one by one. For product data the library looks up the hardware's id, too.
void print_slots(const std::vector<std::string>& calls) {
  const long looked_up = beginning_with(calls, "query|PCIs|FunKey|") +
                         beginning_with(calls, "query|PCIs|HardwareId,") -
                         beginning_with(calls, "query|VPDs|") + beginning_with(calls, "query|Firmwares|") +
                         beginning_with(calls, "query|PCIAdapter|PCIKey|") +
                         beginning_with(calls, "query|PCIAdapter|HealthStatus|");
  std::printf(
      "slots of the sample controller: %zu calls of the table access, %ld beyond lists, ports and product "
      "data\n",
      calls.size(), looked_up);
}

void run(const std::string& folder) {
  const char* const server = std::getenv("ZELDB_TEST_MARIADB");
  setenv("ZEL_DB_URL", (server != nullptr ? server : "sqlite://" + folder).c_str(), 1);
  setenv("ZEL_PLATFORM_DIR", ZELDB_SAMPLES, 1);
  make_sample();
  const std::string program = fs::read_symlink("/proc/self/exe").parent_path() / "zeldb";
  const std::string page = folder + "/report.html";
  const double cold = report(program, page);
  double warm = cold;
  for (int i = 0; i < 10; ++i) warm = std::min(warm, report(program, page));
  const std::string trace = folder + "/trace";
  const size_t statements = calls_of({program, "report", "--force", page}, trace).size();
  std::printf("report of the sample controller: %.1f ms cold, %.1f ms warm, %zu statements, %ju bytes\n",
              cold, warm, statements, static_cast<uintmax_t>(fs::file_size(page)));
  print_slots(calls_of({program, "slots"}, trace));
}

}  // namespace

int main() {
  return bench::in_folder("report_bench", run);
}
