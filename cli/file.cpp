// SPDX-License-Identifier: Apache-2.0
#include "cli/file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

#include "cli/command.h"

namespace zeldb::cli {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void fail(const std::string& path) {
  throw Failure(path + ": " + std::strerror(errno));
}

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

}  // namespace

std::string read_file(const std::string& path) {
  const File file(std::fopen(path.c_str(), "re"), std::fclose);
  if (file == nullptr) fail(path);
  std::string content;
  char block[16384];
  while (const size_t size = std::fread(block, 1, sizeof(block), file.get())) content.append(block, size);
  if (std::ferror(file.get()) != 0) fail(path);
  return content;
}

void write_file(const std::string& path, std::string_view content) {
  const File file(std::fopen(path.c_str(), "we"), std::fclose);
  if (file == nullptr || std::fwrite(content.data(), 1, content.size(), file.get()) != content.size() ||
      std::fflush(file.get()) != 0 || fsync(fileno(file.get())) != 0) {
    fail(path);
  }
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
  const int fd = mkstemp(temporary_.data());
  if (fd < 0) fail(path_);
  close(fd);
}

NewFile::~NewFile() {
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void NewFile::commit() {
  if (std::rename(temporary_.c_str(), path_.c_str()) != 0) fail(path_);
  temporary_.clear();
}

}  // namespace zeldb::cli
