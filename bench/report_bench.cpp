// SPDX-License-Identifier: Apache-2.0
//
// How long "zeldb report" takes for the sample controller, and how many statements: cold, as the first
// program that opens the databases, and warm. On SQLite, or on the server that with_mariadb starts.
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/zel_db_admin.h"

namespace {

namespace fs = std::filesystem;

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
  std::vector<std::string> words = {program, "report", "--force", page};
  char* const arguments[] = {words[0].data(), words[1].data(), words[2].data(), words[3].data(), nullptr};
  const auto start = std::chrono::steady_clock::now();
  pid_t child = 0;
  int status = -1;
  if (posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ) != 0 ||
      waitpid(child, &status, 0) != child || status != 0) {
    throw std::runtime_error("zeldb report failed");
  }
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

long statements(const std::string& program, const std::string& page, const std::string& trace) {
  setenv("ZEL_DB_TRACE", trace.c_str(), 1);
  report(program, page);
  unsetenv("ZEL_DB_TRACE");
  std::ifstream lines(trace);
  return std::count(std::istreambuf_iterator<char>(lines), {}, '\n');
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
  std::printf("report of the sample controller: %.1f ms cold, %.1f ms warm, %ld statements, %ju bytes\n",
              cold, warm, statements(program, page, folder + "/trace"),
              static_cast<uintmax_t>(fs::file_size(page)));
}

}  // namespace

int main() {
  std::string folder = fs::temp_directory_path() / "report_bench.XXXXXX";
  if (mkdtemp(folder.data()) == nullptr) return 1;
  int status = 0;
  try {
    run(folder);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "report_bench: %s\n", failure.what());
    status = 1;
  }
  fs::remove_all(folder);
  return status;
}
