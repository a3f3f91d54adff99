// SPDX-License-Identifier: Apache-2.0
#include "config/file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/vrel_log.h"

namespace zel_platform {
namespace {

constexpr size_t kLongest = size_t{64} << 20;

[[noreturn]] void fail(int error, const char* what) {
  throw std::system_error(error, std::generic_category(), what);
}

int checked(int result, const char* what) {
  if (result < 0) fail(errno, what);
  return result;
}

// In nanoseconds.
int64_t change_time(const struct stat& status) {
  return int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
}

std::string resolved(const std::string& path) {
  std::error_code error;
  const std::filesystem::path target = std::filesystem::canonical(path, error);
  return error ? path : target.string();
}

}  // namespace

FileDescriptor::~FileDescriptor() {
  if (fd_ >= 0) close(fd_);
}

FileReader::FileReader(const std::string& path)
    // Without O_NONBLOCK a named pipe in the file's place would hang the process here.
    : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)), left_(kLongest) {
  if (is_missing() && errno == ENOENT) return;
  checked(file_.get(), "cannot open");
  struct stat status {};
  checked(fstat(file_.get(), &status), "cannot read");
  if (!S_ISREG(status.st_mode)) throw std::runtime_error("not a regular file");
  if (static_cast<uint64_t>(status.st_size) > kLongest) throw std::runtime_error("longer than 64 MiB");
  changed_ = change_time(status);
}

std::string_view FileReader::next() {
  ssize_t size = 0;
  do {
    size = read(file_.get(), block_.data(), std::min(block_.size(), left_));
  } while (size < 0 && errno == EINTR);
  if (size < 0) fail(errno, "cannot read");
  left_ -= static_cast<size_t>(size);
  return {block_.data(), static_cast<size_t>(size)};
}

std::vector<char> FileReader::read_at(size_t place, size_t size) const {
  std::vector<char> bytes(size + 1);
  for (size_t done = 0; done < size;) {
    const ssize_t count =
        pread(file_.get(), bytes.data() + done, size - done, static_cast<off_t>(place + done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(errno, "cannot read");
    if (count == 0) throw std::runtime_error("has become shorter");
    done += static_cast<size_t>(count);
  }
  struct stat status {};
  checked(fstat(file_.get(), &status), "cannot read");
  if (change_time(status) != changed_) throw std::runtime_error("has been changed");
  return bytes;
}

Replacement::Replacement(const std::string& path)
    : path_(resolved(path)),
      folder_(open(std::filesystem::path(path_).parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  checked(folder_.get(), "cannot open the folder");
  while (flock(folder_.get(), LOCK_EX) != 0) {
    if (errno != EINTR) fail(errno, "cannot lock the folder");
  }
}

void Replacement::write(std::string_view content) {
  const std::string new_path = path_ + ".new";
  try {
    write_new(new_path, content);
    checked(rename(new_path.c_str(), path_.c_str()), "cannot replace");
  } catch (...) {
    unlink(new_path.c_str());
    throw;
  }
  // The new content stands already; what may be missing is only its survival of a power cut.
  if (fsync(folder_.get()) != 0) {
    vrel_log::logWarn("%s: cannot sync the folder: %s", path_.c_str(),
                      std::generic_category().message(errno).c_str());
  }
}

void Replacement::write_new(const std::string& new_path, std::string_view content) const {
  unlink(new_path.c_str());  // left behind by a process that was killed
  const FileDescriptor file(
      open(new_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  checked(file.get(), "cannot create the new file");
  struct stat old {};
  if (stat(path_.c_str(), &old) == 0) {
    // Only root may give a file away; without that right the owner changes and the mode still holds.
    [[maybe_unused]] const int given = fchown(file.get(), old.st_uid, old.st_gid);
    checked(fchmod(file.get(), old.st_mode & 07777), "cannot set the mode of the new file");
  }
  while (!content.empty()) {
    const ssize_t size = ::write(file.get(), content.data(), content.size());
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) fail(errno, "cannot write the new file");
    content.remove_prefix(static_cast<size_t>(size));
  }
  checked(fsync(file.get()), "cannot sync the new file");
}

}  // namespace zel_platform
