// SPDX-License-Identifier: Apache-2.0
#include "db/shared_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zeldb {

namespace {

bool is_regular(const struct stat& file) {
  return S_ISREG(file.st_mode);
}

int open_regular(const char* path, Links links) {
  struct stat file = {};
  // A link may lead to a device, and opening one may already start something.
  if (links == Links::Follow && (stat(path, &file) != 0 || !is_regular(file))) return -1;
  const int no_link = links == Links::Refuse ? O_NOFOLLOW : 0;
  const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | no_link);
  if (descriptor < 0) return -1;
  if (fstat(descriptor, &file) == 0 && is_regular(file)) return descriptor;
  close(descriptor);
  return -1;
}

}  // namespace

SharedFile::SharedFile(const char* path, Links links) : descriptor_(open_regular(path, links)) {}

SharedFile::~SharedFile() {
  if (descriptor_ >= 0) close(descriptor_);
}

bool SharedFile::read(void* to, size_t size) const {
  return ::read(descriptor_, to, size) == static_cast<ssize_t>(size);
}

}  // namespace zeldb
