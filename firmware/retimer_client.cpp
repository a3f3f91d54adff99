// SPDX-License-Identifier: Apache-2.0
#include "firmware/retimer_client.h"

#include <poll.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>

#include "db/shared_file.h"
#include "db/syslog_info.h"

namespace zeldb {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr const char* kUpdate = "retimer_update_fw";
constexpr const char* kProgress = "retimer_get_fw_update_progress";
constexpr const char* kExchange = "retimer_hal_proxy";  // the name in the log

constexpr size_t kHeaderSize = 19;  // of both directions: the payload's length comes first
constexpr size_t kResultOffset = 7;
constexpr size_t kPiece = 512;
using Message = std::array<unsigned char, kHeaderSize + sizeof(retimer_fw_req_t)>;
static_assert(sizeof(Message) == 160);

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (descriptor_ >= 0) close(descriptor_);
  }

  bool is_open() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }

 private:
  int descriptor_;
};

uint32_t little_endian(const unsigned char* bytes, size_t size) {
  uint32_t value = 0;
  for (size_t i = size; i > 0; --i) value = value << 8 | bytes[i - 1];
  return value;
}

Message message_of(const retimer_fw_req_t& request) {
  Message message = {};
  message[0] = sizeof(request);
  std::memcpy(&message[kHeaderSize], &request, sizeof(request));
  message.back() = 0;
  return message;
}

milliseconds left_until(steady_clock::time_point deadline) {
  return std::max(std::chrono::ceil<milliseconds>(deadline - steady_clock::now()), milliseconds(0));
}

timeval timeval_of(milliseconds duration) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(duration);
  timeval time = {};
  time.tv_sec = static_cast<time_t>(seconds.count());
  time.tv_usec = static_cast<suseconds_t>(std::chrono::microseconds(duration - seconds).count());
  return time;
}

// SO_RCVTIMEO bounds each read, SO_SNDTIMEO a connect to a proxy whose queue is full. A limit of 0 is none.
void bound(const Descriptor& client, int option, milliseconds timeout) {
  const timeval time = timeval_of(timeout);
  setsockopt(client.get(), SOL_SOCKET, option, &time, sizeof(time));
}

// The system does not restart a connect with a limit after a signal.
bool connect_to(const Descriptor& client, const char* path, milliseconds timeout) {
  const auto deadline = steady_clock::now() + timeout;
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, path, strnlen(path, sizeof(address.sun_path) - 1));
  int status = 0;
  milliseconds left = timeout;
  do {
    bound(client, SO_SNDTIMEO, left);
    status = connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    if (status == 0) return true;
    left = left_until(deadline);
  } while (errno == EINTR && left.count() > 0);
  syslog_info("%s, connect error, rc=%d(%s)\n\n", kExchange, status, strerrordesc_np(errno));
  return false;
}

enum class Waited { Ready, Failed, TimedOut };

// 1 if there is something to read, 0 after the timeout, or -1. select does not take every descriptor.
int wait_once(int descriptor, milliseconds timeout) {
  if (descriptor < FD_SETSIZE) {
    fd_set wanted;
    FD_ZERO(&wanted);
    FD_SET(descriptor, &wanted);
    timeval time = timeval_of(timeout);
    return select(descriptor + 1, &wanted, nullptr, nullptr, &time);
  }
  pollfd wanted = {descriptor, POLLIN, 0};
  return poll(&wanted, 1, static_cast<int>(timeout.count()));
}

// Signals do not prolong the wait.
Waited wait_for_reply(const Descriptor& client, milliseconds timeout) {
  const auto deadline = steady_clock::now() + timeout;
  int ready = 0;
  do {
    ready = wait_once(client.get(), left_until(deadline));
  } while (ready < 0 && errno == EINTR);
  if (ready == 0) return Waited::TimedOut;
  return ready > 0 ? Waited::Ready : Waited::Failed;
}

// A read that a signal interrupts has failed. If it were repeated it would get its whole time again, and a
// process with regular signals would wait for a silent proxy for ever.
bool skip(const Descriptor& client, size_t length) {
  unsigned char piece[kPiece];
  while (length > 0) {
    const ssize_t count = read(client.get(), piece, std::min(length, sizeof(piece)));
    if (count <= 0) return false;
    length -= static_cast<size_t>(count);
  }
  return true;
}

bool read_reply(const Descriptor& client, int32_t& result) {
  unsigned char header[kHeaderSize];
  // The header has to come in one piece.
  if (read(client.get(), header, sizeof(header)) != static_cast<ssize_t>(sizeof(header))) return false;
  if (!skip(client, little_endian(header, 2))) return false;
  result = static_cast<int32_t>(little_endian(header + kResultOffset, 4));
  return true;
}

bool read_state(const SharedFile& file, const char* name, void* value, size_t size) {
  if (file.read(value, size)) return true;
  syslog_info("%s, read %s from retimer update progress file failed\n\n", kProgress, name);
  return false;
}

}  // namespace

RetimerClient::Step RetimerClient::exchange(const retimer_fw_req_t& request, int32_t& result) const {
  const Message message = message_of(request);
  std::signal(SIGPIPE, SIG_IGN);  // a proxy that closes early must not end the host program
  const Descriptor client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!client.is_open()) return Step::Socket;
  if (!connect_to(client, endpoint_.socket_path, endpoint_.reply_timeout)) return Step::Connect;
  if (write(client.get(), message.data(), message.size()) != static_cast<ssize_t>(message.size())) {
    syslog_info("%s, write error\n\n", kExchange);
    return Step::Write;
  }
  const Waited waited = wait_for_reply(client, endpoint_.reply_timeout);
  if (waited == Waited::Failed) return Step::Wait;
  if (waited == Waited::TimedOut) return Step::Timeout;
  bound(client, SO_RCVTIMEO, endpoint_.receive_timeout);
  return read_reply(client, result) ? Step::Done : Step::Reply;
}

int RetimerClient::update(const retimer_fw_req_t& request) const {
  int32_t result = 0;
  const Step step = exchange(request, result);
  if (step == Step::Done) return result;
  const int status = ~static_cast<int>(step);
  syslog_info("%s, retimer_hal_proxy fails, rc = 0x%x\n\n", kUpdate, static_cast<unsigned>(status));
  return status;
}

int RetimerClient::progress(uint32_t slot, retimer_fw_progress_t& progress) const {
  const SharedFile file(endpoint_.state_path, Links::Refuse);
  if (!file.is_open()) {
    // The word "raid" is part of the message.
    syslog_info("%s, open raid update progress file failed\n\n", kProgress);
    return -1;
  }
  uint16_t running_slot = 0;
  uint8_t stage = 0;
  uint8_t done = 0;
  if (!read_state(file, "slot", &running_slot, sizeof(running_slot)) ||
      !read_state(file, "stage", &stage, sizeof(stage)) ||
      !read_state(file, "progress", &done, sizeof(done)) || running_slot != slot) {
    return -1;
  }
  progress = {stage, done};
  return 0;
}

}  // namespace zeldb
