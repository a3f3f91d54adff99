// SPDX-License-Identifier: Apache-2.0
//
// Files, read and replaced. Failures are thrown as std::system_error.
#ifndef ZEL_PLATFORM_CONFIG_FILE_H
#define ZEL_PLATFORM_CONFIG_FILE_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zel_platform {

class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : fd_(fd) {}
  ~FileDescriptor();
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  int get() const { return fd_; }

 private:
  int fd_;
};

// A file from its start to its end.
class FileReader {
 public:
  explicit FileReader(const std::string& path);

  bool is_missing() const { return file_.get() < 0; }
  // What follows, until the next call; empty at the end.
  std::string_view next();
  // So many bytes from a place on, and a NUL. Fails if the file has been changed since it was opened.
  std::vector<char> read_at(size_t place, size_t size) const;

 private:
  FileDescriptor file_;
  size_t left_;  // a file that grows meanwhile is cut
  int64_t changed_ = 0;
  std::array<char, 16384> block_;
};

// A file about to be replaced. While it lives, other processes and threads that want to replace a file of the
// same folder wait.
class Replacement {
 public:
  // The path names its folder, also the current one: "./FILE".
  explicit Replacement(const std::string& path);

  // The file to read and replace: symbolic links in the path are followed, so that a link stays a link.
  const std::string& path() const { return path_; }
  // Readers see the old content or the new one, after a power cut too; mode and owner stay.
  void write(std::string_view content);

 private:
  void write_new(const std::string& new_path, std::string_view content) const;

  std::string path_;
  FileDescriptor folder_;
};

}  // namespace zel_platform

#endif
