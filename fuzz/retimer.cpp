// SPDX-License-Identifier: Apache-2.0
//
// The proxy's reply, and the file that tells how far it is.
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cstring>
#include <thread>

#include "firmware/retimer_client.h"
#include "fuzz/input.h"

using namespace zeldb_fuzz;
using namespace std::chrono_literals;

extern "C" __attribute__((visibility("default"))) void syslog(int, const char*, ...) {}

namespace {

uint32_t number(std::string_view bytes, size_t at, size_t size) {
  uint32_t value = 0;
  while (size-- > 0) value = value << 8 | static_cast<unsigned char>(bytes[at + size]);
  return value;
}

// Takes one request and answers with the bytes given.
void serve(int listener, std::string_view reply) {
  const int client = accept(listener, nullptr, nullptr);
  char request[512];
  expect(read(client, request, sizeof(request)) == 160, "a request");
  if (write(client, reply.data(), reply.size()) < 0) expect(false, "the reply is sent");
  close(client);
}

int listen_at(const std::string& path) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  expect(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0, "a socket");
  expect(listen(listener, 1) == 0, "a socket that listens");
  return listener;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Folder folder;
  static const std::string socket_path = folder.path("s"), state_path = folder.path("state");
  static const int listener = listen_at(socket_path);
  const zeldb::RetimerClient client({socket_path.c_str(), 10s, 10s, state_path.c_str()});
  const std::string_view bytes = Input(data, size).all();

  folder.write("state", bytes);
  retimer_fw_progress_t progress = {};
  const bool complete = size >= 4;
  const uint32_t slot = complete ? number(bytes, 0, 2) : 0;
  expect(client.progress(slot, progress) == (complete ? 0 : -1), "a state of four bytes or none");
  expect(client.progress(slot + 1, progress) == -1, "no progress of another slot");

  std::thread proxy(serve, listener, bytes);
  const int status = client.update({});
  proxy.join();
  constexpr size_t kHeader = 19;
  const bool whole = size >= kHeader && size - kHeader >= number(bytes, 0, 2);
  expect(status == (whole ? static_cast<int>(number(bytes, 7, 4)) : -1), "the result of a whole reply");
  return 0;
}
