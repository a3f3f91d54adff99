// SPDX-License-Identifier: Apache-2.0
#include "firmware/retimer_client.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include "tests/support/libc_shim.h"

using namespace std::chrono_literals;
using std::chrono::steady_clock;
using std::this_thread::sleep_for;
using Texts = std::vector<std::string>;
namespace fs = std::filesystem;

namespace {

std::function<void()> connected;  // called after a connect
bool select_fails = false;
std::string folder;  // takes the place of /tmp; calls are then noted
Texts calls;

// Notes a call. Returns its path in the test's folder.
std::string noted(const std::string& call, const std::string& path = {}) {
  if (!folder.empty()) calls.push_back(call + path);
  return folder.empty() || path.empty() ? path : folder + path.substr(4);
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {
#define NEXT(function) reinterpret_cast<decltype(&(function))>(dlsym(RTLD_NEXT, #function))

int connect(int descriptor, const sockaddr* address, socklen_t length) {
  sockaddr_un target = {};
  std::memcpy(&target, address, std::min<size_t>(length, sizeof(target)));
  std::strcpy(target.sun_path, noted(std::to_string(length), target.sun_path).c_str());
  const int status = NEXT(connect)(descriptor, reinterpret_cast<sockaddr*>(&target), length);
  if (connected) connected();
  return status;
}
int select(int count, fd_set* reads, fd_set* writes, fd_set* errors, timeval* timeout) {
  noted("select " + std::to_string(timeout->tv_sec + (timeout->tv_usec != 0 ? 1 : 0)));
  if (select_fails) errno = ENOMEM;
  return select_fails ? -1 : NEXT(select)(count, reads, writes, errors, timeout);
}
int setsockopt(int descriptor, int level, int option, const void* value, socklen_t length) noexcept {
  if (option == SO_RCVTIMEO) noted("receive " + std::to_string(static_cast<const timeval*>(value)->tv_sec));
  return NEXT(setsockopt)(descriptor, level, option, value, length);
}
}  // extern "C"
#pragma GCC visibility pop

namespace zeldb_test {
namespace {

std::string header(int32_t code, uint16_t payload = 0) {
  std::string text(19, 'h');
  std::memcpy(&text[0], &payload, sizeof(payload));
  std::memcpy(&text[7], &code, sizeof(code));
  return text;
}

enum End { Close, Hold, CloseUnread };

class Retimer : public testing::Test {
 protected:
  void TearDown() override {
    folder.clear();
    fs::remove_all(folder_);
    EXPECT_EQ(open_descriptors(), descriptors_);
  }

  static long open_descriptors() { return std::distance(fs::directory_iterator("/proc/self/fd"), {}); }

  int update(uint32_t value = 0) {
    retimer_fw_req_t request = request_;
    request.FirstValue32 = value;
    return zeldb::RetimerClient({socket_.c_str(), wait_, 1s, ""}).update(request);
  }

  // The proxy's socket, bound, or one that is connected to it.
  int open_socket(decltype(&connect) attach) const {
    sockaddr_un address = {AF_UNIX, {}};
    socket_.copy(address.sun_path, sizeof(address.sun_path) - 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    EXPECT_EQ(attach(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
    return descriptor;
  }

  // While a proxy sends each client these pieces, or the first value of its request.
  void act(const Texts& pieces, End end, const std::function<void()>& client_acts, int clients = 1) {
    fs::remove(socket_);
    const int listener = open_socket(bind);
    ASSERT_EQ(listen(listener, clients), 0);
    std::atomic<bool> closed = false;
    std::atomic<bool> done = false;
    const auto serve = [&](int client) {
      if (end != CloseUnread) recv(client, seen_, sizeof(seen_), MSG_WAITALL);
      for (const std::string& piece : pieces.empty() ? Texts{header(seen_[19 + 128])} : pieces) {
        send(client, piece.data(), piece.size(), MSG_NOSIGNAL);
        if (pieces.size() > 1) sleep_for(200ms);
      }
      while (end == Hold && !done) sleep_for(1ms);
      close(client);
      closed = true;
    };
    std::thread proxy([&] {
      for (int i = 0; i < clients; ++i) serve(accept(listener, nullptr, nullptr));
    });
    if (end == CloseUnread)
      connected = [&] {
        while (!closed) sleep_for(1ms);
      };
    client_acts();
    done = true;
    proxy.join();
    close(listener);
  }

  std::string folder_ = fs::temp_directory_path() / "zeldb-XXXXXX";
  const std::string socket_ = std::string(mkdtemp(folder_.data())) + "/rtcfgproxy.sock";
  const long descriptors_ = open_descriptors();
  std::chrono::milliseconds wait_ = 10s;
  retimer_fw_req_t request_ = {{1, 2, 3}, 0, 0x04030201, 0x0605, 0x0807, 0xEE};
  char seen_[160] = {};
};

TEST_F(Retimer, Replies) {
  std::vector<std::tuple<Texts, End, int, bool>> cases = {
      {{header(5)}, Hold, 5, true},
      {{header(-3)}, Close, -3, true},
      {{header(8, 4), "pa", "yl"}, Hold, 8, true},
      {{header(9, 2) + "more"}, Hold, 9, true},
      {{header(9, 513) + std::string(512, 'p')}, Close, -1, false},
      {{header(9, 1)}, Hold, -1, false},
      {{header(9).substr(9)}, Close, -1, false},
      {{header(9).substr(0, 10), header(9).substr(10)}, Hold, -1, false},
      {{""}, Close, -1, false},
      {{""}, CloseUnread, -4, false},
      {{""}, Hold, -6, false}};
  for (const uint16_t size : std::initializer_list<uint16_t>{237, 238, 512, 513, 65535}) {
    cases.push_back({{header(size, size) + std::string(size, 'p')}, Hold, size, true});
  }
  const std::string kFails = "14 retimer_update_fw, retimer_hal_proxy fails, rc = 0xfffffff";
  for (const auto& [pieces, end, expected, is_code] : cases) {
    libc().syslogs.clear();
    wait_ = expected == -6 ? 100ms : 10s;
    act(pieces, end, [&, code = expected] { EXPECT_EQ(update(), code); });
    connected = nullptr;
    Texts logs;
    if (expected == -4) logs.emplace_back("14 retimer_hal_proxy, write error\n\n");
    if (!is_code) logs.push_back(kFails + "0123456789abcdef"[16 + expected] + "\n\n");
    EXPECT_EQ(libc().syslogs, logs) << expected;
  }
  libc().syslogs.clear();
  fs::remove(socket_);
  EXPECT_EQ(update(), -3);
  const char* const kAbsent = "14 retimer_hal_proxy, connect error, rc=-1(No such file or directory)\n\n";
  EXPECT_EQ(libc().syslogs, (Texts{kAbsent, kFails + "d\n\n"}));
}

TEST_F(Retimer, ASystemWithoutResources) {
  select_fails = true;
  act({header(5)}, Close, [&] { EXPECT_EQ(update(), -5); });
  select_fails = false;
  rlimit limit = {};
  getrlimit(RLIMIT_NOFILE, &limit);
  const rlimit none = {0, limit.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  EXPECT_EQ(update(), -2);
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_EQ(libc().syslogs, (Texts{"14 retimer_update_fw, retimer_hal_proxy fails, rc = 0xfffffffb\n\n",
                                   "14 retimer_update_fw, retimer_hal_proxy fails, rc = 0xfffffffe\n\n"}));
}

TEST_F(Retimer, SignalsProlongNoWait) {
  struct sigaction action = {};
  action.sa_handler = [](int /*signal*/) {};
  action.sa_flags = SA_RESTART;
  sigaction(SIGUSR1, &action, nullptr);
  std::atomic<bool> stop = false;
  std::thread sender([&stop, target = pthread_self()] {
    for (; !stop; sleep_for(15ms)) pthread_kill(target, SIGUSR1);
  });
  wait_ = 300ms;
  const auto start = steady_clock::now();
  act({""}, Hold, [&] { EXPECT_EQ(update(), -6); });
  EXPECT_TRUE(steady_clock::now() - start >= 300ms && steady_clock::now() - start < 5s);
  wait_ = 10s;
  act({header(11, 2) + "pp"}, Hold, [&] { EXPECT_EQ(update(), 11); });
  act({header(11, 2) + "p"}, Hold, [&] { EXPECT_EQ(update(), -1); });  // silent from here on
  fs::remove(socket_);
  wait_ = 300ms;
  const int listener = open_socket(bind);
  ASSERT_EQ(listen(listener, 0), 0);
  const int queued = open_socket(connect);
  connected = [] { errno = EINTR; };
  EXPECT_EQ(update(), -3);
  connected = nullptr;
  std::thread proxy([listener] {
    sleep_for(100ms);
    close(accept(listener, nullptr, nullptr));
  });
  EXPECT_EQ(update(), -6);
  proxy.join();
  close(queued);
  close(listener);
  stop = true;
  sender.join();
}

TEST_F(Retimer, ManyDescriptorsAndThreads) {
  const rlimit limit = {2048, 2048};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  std::vector<int> taken;
  while (taken.size() < 1500) taken.push_back(dup(0));
  std::vector<std::jthread> threads;
  const auto start = [&] {
    for (uint32_t i = 1; i <= 16; ++i) threads.emplace_back([this, i] { EXPECT_EQ(update(i), i); });
    threads.clear();
  };
  act({}, Close, start, 16);
  for (const int descriptor : taken) close(descriptor);
}

// Through the library: where its functions look, what they send and how long they wait.
TEST_F(Retimer, ExportedFunctions) {
  std::signal(SIGPIPE, SIG_DFL);
  EXPECT_EQ(retimer_update_fw(nullptr), -1);
  EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL);
  EXPECT_EQ(retimer_get_fw_update_progress(1, nullptr), -1);
  EXPECT_EQ(libc().syslogs, Texts());
  libc().tmp = folder = folder_;
  act({header(13)}, Close, [&] { EXPECT_EQ(retimer_update_fw(&request_), 13); });
  EXPECT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_IGN);
  const std::string request(reinterpret_cast<const char*>(&request_), sizeof(request_) - 1);
  EXPECT_EQ(std::string(seen_, sizeof(seen_)), "\x8d" + std::string(18, '\0') + request + '\0');
  EXPECT_EQ(request_.Reserved, 0xEE);

  const std::tuple<std::string, uint32_t, int, std::string> kCases[] = {
      {"", 3, -1, "open raid"},
      {"\3", 3, -1, "read slot from retimer"},
      {{"\3\0", 2}, 3, -1, "read stage from retimer"},
      {{"\3\0\xC8", 3}, 4, -1, "read progress from retimer"},
      {{"\3\0\xC8\xFF", 4}, 4, -1, ""},
      {{"\3\0\xC8\xFF", 4}, 65539, -1, ""},
      {{"\3\0\xC8\xFFmore", 8}, 3, 0, ""}};
  for (const auto& [content, slot, expected, failed] : kCases) {
    libc().syslogs.clear();
    if (!content.empty()) std::ofstream(folder_ + "/.rt_upd_state") << content;
    retimer_fw_progress_t progress = {7, 8};
    EXPECT_EQ(retimer_get_fw_update_progress(slot, &progress), expected) << failed << slot;
    EXPECT_EQ(progress.Stage * 1000 + progress.Progress, expected == 0 ? 200255U : 7008U);
    const std::string line =
        "14 retimer_get_fw_update_progress, " + failed + " update progress file failed\n\n";
    EXPECT_EQ(libc().syslogs, failed.empty() ? Texts() : Texts{line});
  }
  // Anything else in the file's place is not opened: a pipe would hang, a link may lead anywhere.
  const std::string state = folder_ + "/.rt_upd_state";
  const std::string moved = folder_ + "/moved";
  fs::rename(state, moved);
  const std::function<int()> kPlanted[] = {[&] { return mkfifo(state.c_str(), 0666); },
                                           [&] { return mkdir(state.c_str(), 0777); },
                                           [&] { return symlink(moved.c_str(), state.c_str()); },
                                           [&] { return symlink("/dev/zero", state.c_str()); }};
  for (const auto& plant : kPlanted) {
    libc().syslogs.clear();
    ASSERT_EQ(plant(), 0);
    retimer_fw_progress_t progress = {};
    EXPECT_EQ(retimer_get_fw_update_progress(3, &progress), -1);
    EXPECT_NE(libc().syslogs.at(0).find("open raid"), std::string::npos);
    fs::remove(state);
  }
  EXPECT_EQ(calls, (Texts{"110/tmp/rtcfgproxy.sock", "select 3600", "receive 5"}));
}

}  // namespace
}  // namespace zeldb_test
