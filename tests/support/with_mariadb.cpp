// SPDX-License-Identifier: Apache-2.0
//
// with_mariadb COMMAND...: runs the command beside a MariaDB server of its own and ends as the command ends.
// The command finds in ZELDB_TEST_MARIADB the URL of the server, and in ZELDB_TEST_MARIADB_FOLDER a folder
// for further servers, with a pristine data directory for them.
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "tests/support/mariadb_server.h"

namespace {

namespace fs = std::filesystem;

volatile sig_atomic_t child = 0;

void pass_on(int signal) {
  if (child > 0) kill(child, signal);
}

// In memory where there is room: making a table is ten times as fast as on a disk.
fs::path temporary_folder() {
  constexpr const char* kMemory = "/dev/shm";
  struct statvfs found {};
  const bool roomy =
      statvfs(kMemory, &found) == 0 && found.f_bavail * found.f_frsize > (fsblkcnt_t{1} << 28U);
  return roomy && access(kMemory, W_OK) == 0 ? kMemory : fs::temp_directory_path();
}

int run(char** command) {
  zeldb_test::MariaDbServer server(temporary_folder());
  fs::copy(server.data(), server.folder() / "pristine", fs::copy_options::recursive);
  server.start({"--skip-networking", "--innodb-flush-log-at-trx-commit=0"});
  setenv("ZELDB_TEST_MARIADB", ("mariadb://root@localhost/?socket=" + server.socket()).c_str(), 1);
  setenv("ZELDB_TEST_MARIADB_FOLDER", server.folder().c_str(), 1);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) std::signal(signal, pass_on);
  child = fork();
  if (child == 0) {
    execvp(command[0], command);
    std::perror(command[0]);
    _exit(127);
  }
  int status = -1;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: with_mariadb COMMAND...\n");
    return 2;
  }
  try {
    return run(argv + 1);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "with_mariadb: %s\n", failure.what());
    return 127;
  }
}
