// SPDX-License-Identifier: Apache-2.0
#include "cli/apart.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "cli/at_signal.h"
#include "cli/command.h"

namespace zeldb::cli {

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

bool send(int to, const std::string& text) {
  for (size_t sent = 0; sent < text.size();) {
    const ssize_t size = write(to, text.data() + sent, text.size() - sent);
    if (size < 0) return false;
    sent += static_cast<size_t>(size);
  }
  return true;
}

std::string made_apart(const std::function<std::string()>& make) {
  const Apart apart = start_apart([&make](int to) {
    std::string text;
    try {
      text = "A" + make();
    } catch (const std::exception& error) {
      text = std::string("F") + error.what();
    }
    send(to, text);
  });
  std::string text;
  char block[65536];
  ssize_t size = 0;
  while ((size = read(apart.pipe, block, sizeof(block))) > 0 || (size < 0 && errno == EINTR)) {
    if (size > 0) text.append(block, static_cast<size_t>(size));
  }
  close(apart.pipe);
  int status = 0;
  while (waitpid(apart.child, &status, 0) < 0 && errno == EINTR) continue;
  if (status != 0 || text.empty()) throw Failure("the process that reads the inventory has ended");
  if (text.front() == 'F') throw Failure(text.substr(1));
  return text.substr(1);
}

}  // namespace zeldb::cli
