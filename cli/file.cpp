// SPDX-License-Identifier: Apache-2.0
#include "cli/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "cli/apart.h"
#include "cli/command.h"

namespace zeldb::cli {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& path) {
  throw Failure(path + ": " + std::strerror(errno));
}

class Descriptor {
 public:
  Descriptor(const std::string& path, int flags) : file_(open(path.c_str(), flags | O_CLOEXEC, 0666)) {
    if (file_ < 0) fail(path);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { close(file_); }
  int get() const { return file_; }

 private:
  int file_;
};

std::string read_all(int file, const std::string& path, size_t limit) {
  std::string content;
  char block[16384];
  ssize_t size = 0;
  while (content.size() < limit && (size = read(file, block, sizeof(block))) > 0)
    content.append(block, std::min(static_cast<size_t>(size), limit - content.size()));
  if (size < 0) fail(path);
  return content;
}

enum class Sync { No, Yes };

void write_all(const std::string& path, std::string_view content, Sync sync) {
  const Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC);
  int status = send(file.get(), content) ? 0 : -1;
  if (sync == Sync::Yes) status |= fsync(file.get());
  if (status != 0) fail(path);
}

}  // namespace

std::string read_input(const std::string& path, size_t limit) {
  if (path == kStandard) return read_all(STDIN_FILENO, "standard input", limit);
  return read_file(path, limit);
}

// Refuses pipes and devices: opening a pipe would wait for a writer.
std::string read_file(const std::string& path, size_t limit) {
  const Descriptor file(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  struct stat found {};
  fstat(file.get(), &found);
  if (!S_ISREG(found.st_mode)) throw Failure(path + ": is no regular file");
  return read_all(file.get(), path, limit);
}

void write_file(const std::string& path, std::string_view content) {
  write_all(path, content, Sync::Yes);
}

void write_temporary(const std::string& path, std::string_view content) {
  write_all(path, content, Sync::No);
}

NewFile::NewFile(const std::string& path, IfExists if_exists) : path_(path) {
  std::error_code error;
  const fs::file_status found = fs::status(path, error);
  if (fs::exists(found)) {
    if (!fs::is_regular_file(found)) throw Failure(path + ": is no regular file");
    if (if_exists == IfExists::Refuse) throw Failure(path + ": exists already (--force replaces it)");
    path_ = fs::canonical(path);  // a link stays a link
  }
  temporary_ = path_ + ".XXXXXX";
  const SignalsBlocked blocked;
  const int fd = mkstemp(temporary_.data());
  if (fd < 0) fail(path_);
  close(fd);
  removal_.emplace(with_logs(temporary_));
}

void NewFile::commit() {
  const SignalsBlocked blocked;
  if (std::rename(temporary_.c_str(), path_.c_str()) != 0) fail(path_);
  removal_.reset();
}

void write_output(const std::string& path, IfExists if_exists, const std::function<std::string()>& make) {
  if (path == kStandard) {
    const std::string content = make();
    std::fwrite(content.data(), 1, content.size(), stdout);
    return;
  }
  NewFile file(path, if_exists);
  write_file(file.temporary_path(), make());
  file.commit();
}

std::vector<std::string> with_logs(const std::string& database) {
  std::vector<std::string> files;
  for (const char* const end : {"", "-wal", "-shm", "-journal"}) files.push_back(database + end);
  return files;
}

}  // namespace zeldb::cli
