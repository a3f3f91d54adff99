// SPDX-License-Identifier: Apache-2.0
#include "tests/support/mariadb_server.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace zeldb_test {
namespace {

namespace fs = std::filesystem;

pid_t start_program(std::vector<std::string> words, const std::string& log) {
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  const pid_t pid = _Fork();  // a fork would close the connections that the test looks at
  if (pid != 0) return pid;
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  unsetenv("LD_PRELOAD");
  const int out = open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
  dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
  dup2(out, STDOUT_FILENO);
  dup2(out, STDERR_FILENO);
  execvp(argv[0], argv.data());
  dprintf(STDERR_FILENO, "cannot run %s: %s\n", argv[0], std::strerror(errno));
  _exit(127);
}

[[noreturn]] void fail(const std::string& what, const std::string& log) {
  std::ostringstream text;
  text << std::ifstream(log).rdbuf();
  throw std::runtime_error(what + ":\n" + text.str());
}

bool answers(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool connected = connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
  close(fd);
  return connected;
}

}  // namespace

MariaDbServer::MariaDbServer(const fs::path& parent, const fs::path& pristine) {
  std::string name = (parent / "zXXXXXX").string();  // short: the path of a socket has 107 bytes
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
  folder_ = name;
  if (!pristine.empty()) {
    fs::copy(pristine, data(), fs::copy_options::recursive);
    return;
  }
  const std::string log = folder_ / "install.log";
  int status = -1;
  const pid_t installer = start_program(
      {"mariadb-install-db", "--no-defaults", "--force", "--user=root", "--datadir=" + data().string(),
       "--tmpdir=" + folder_.string(),  // see start
       "--auth-root-authentication-method=normal", "--skip-test-db", "--skip-name-resolve",
       "--innodb-log-file-size=4M"},
      log);
  waitpid(installer, &status, 0);
  if (status != 0) fail("no MariaDB data directory", log);
}

MariaDbServer::~MariaDbServer() {
  kill();
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

void MariaDbServer::start(const std::vector<std::string>& options) {
  const std::string log = folder_ / "log";
  std::vector<std::string> words = {
      "mariadbd", "--no-defaults", "--user=root", "--datadir=" + data().string(),
      // a starting server removes the temporary tables of its tmpdir, also those of other servers
      "--tmpdir=" + folder_.string(), "--socket=" + socket(), "--pid-file=" + (folder_ / "pid").string(),
      "--skip-name-resolve", "--innodb-buffer-pool-size=16M", "--innodb-log-file-size=4M", "--debug-no-sync"};
  words.insert(words.end(), options.begin(), options.end());
  pid_ = start_program(words, log);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!answers(socket())) {
    if (waitpid(pid_, nullptr, WNOHANG) != 0 || std::chrono::steady_clock::now() > deadline) {
      fail("the MariaDB server does not start", log);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
}

unsigned MariaDbServer::port() {
  if (port_ != 0) return port_;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (bind(fd, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
      getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    throw std::runtime_error("no free port");
  }
  close(fd);
  return port_ = ntohs(address.sin_port);
}

void MariaDbServer::kill() {
  if (pid_ <= 0) return;
  ::kill(pid_, SIGKILL);
  waitpid(pid_, nullptr, 0);
  pid_ = -1;
  unlink(socket().c_str());
}

}  // namespace zeldb_test
