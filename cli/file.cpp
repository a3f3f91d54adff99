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
#include <memory>
#include <new>

#include "cli/command.h"

namespace zeldb::cli {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& path) {
  throw Failure(path + ": " + std::strerror(errno));
}

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

// Refuses pipes and devices: opening a pipe would wait for a writer.
File open_regular(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) fail(path);
  File file(fdopen(fd, "r"), std::fclose);
  if (file == nullptr) {
    close(fd);
    throw std::bad_alloc();
  }
  struct stat found {};
  if (fstat(fd, &found) != 0) fail(path);
  if (!S_ISREG(found.st_mode)) throw Failure(path + ": is no regular file");
  return file;
}

std::string read_all(FILE* file, const std::string& path, size_t limit) {
  std::string content;
  char block[16384];
  size_t size = 0;
  while (content.size() < limit && (size = std::fread(block, 1, sizeof(block), file)) != 0)
    content.append(block, std::min(size, limit - content.size()));
  if (std::ferror(file) != 0) fail(path);
  return content;
}

}  // namespace

std::string read_input(const std::string& path, size_t limit) {
  return path == kStandard ? read_all(stdin, "standard input", limit) : read_file(path, limit);
}

std::string read_file(const std::string& path, size_t limit) {
  return read_all(open_regular(path).get(), path, limit);
}

namespace {

File written(const std::string& path, std::string_view content) {
  File file(std::fopen(path.c_str(), "we"), std::fclose);
  if (file == nullptr || std::fwrite(content.data(), 1, content.size(), file.get()) != content.size() ||
      std::fflush(file.get()) != 0) {
    fail(path);
  }
  return file;
}

}  // namespace

void write_file(const std::string& path, std::string_view content) {
  if (fsync(fileno(written(path, content).get())) != 0) fail(path);
}

void write_temporary(const std::string& path, std::string_view content) {
  written(path, content);
}

NewFile::NewFile(const std::string& path, IfExists if_exists) : path_(path) {
  std::error_code error;
  const fs::file_type type = fs::status(path, error).type();
  if (type != fs::file_type::not_found && type != fs::file_type::none) {
    if (type != fs::file_type::regular) throw Failure(path + ": is no regular file");
    if (if_exists == IfExists::Refuse) throw Failure(path + ": exists already (--force replaces it)");
    // A link stays a link.
    if (const fs::path target = fs::canonical(path, error); !error) path_ = target;
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
  return {database, database + "-wal", database + "-shm", database + "-journal"};
}

}  // namespace zeldb::cli
