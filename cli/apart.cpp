// SPDX-License-Identifier: Apache-2.0
#include "cli/apart.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

#include "cli/at_signal.h"
#include "cli/command.h"

namespace zeldb::cli {

namespace {

constexpr char kReturned = 'R';
constexpr char kThrown = 'T';

}  // namespace

Apart start_apart(const std::function<void(int to)>& run) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw Failure(std::string("pipe: ") + std::strerror(errno));
  std::fflush(nullptr);
  const SignalsBlocked blocked;
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    run(ends[1]);
    _exit(0);  // without the destructors of the parent, whose copy this process is
  }
  close(ends[1]);
  if (child > 0) return {.child = child, .pipe = ends[0]};
  close(ends[0]);
  throw Failure(std::string("fork: ") + std::strerror(errno));
}

bool send(int to, std::string_view text) {
  for (size_t sent = 0; sent < text.size();) {
    const ssize_t size = write(to, text.data() + sent, text.size() - sent);
    if (size < 0) return false;
    sent += static_cast<size_t>(size);
  }
  return true;
}

// The last character says which it is.
std::string reply_of(const std::function<std::string()>& make) {
  try {
    return make() + kReturned;
  } catch (const std::exception& error) {
    return std::string(error.what()) + kThrown;
  }
}

std::string made_of(std::string reply) {
  const char kind = reply.empty() ? '\0' : reply.back();
  if (kind != kReturned && kind != kThrown) throw Failure("the process that reads the inventory has ended");
  reply.pop_back();
  if (kind == kThrown) throw Failure(reply);
  return reply;
}

std::string made_apart(const std::function<std::string()>& make) {
  const Apart apart = start_apart([&make](int to) { send(to, reply_of(make)); });
  std::string text;
  char block[65536];
  ssize_t size = 0;
  while ((size = read(apart.pipe, block, sizeof(block))) > 0 || (size < 0 && errno == EINTR)) {
    if (size > 0) text.append(block, static_cast<size_t>(size));
  }
  close(apart.pipe);
  int status = 0;
  while (waitpid(apart.child, &status, 0) < 0 && errno == EINTR) continue;
  return made_of(status == 0 ? std::move(text) : "");
}

}  // namespace zeldb::cli
