// SPDX-License-Identifier: Apache-2.0
#include "scan/machine.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace zeldb::scan {

namespace {

std::optional<std::string> resolved(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> text(realpath(path.c_str(), nullptr), std::free);
  if (text == nullptr) return std::nullopt;
  return std::string(text.get());
}

struct File {
  explicit File(const std::string& path)
      : descriptor(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)) {}
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { close(descriptor); }
  bool is_regular() const {
    struct stat status = {};  // as it stays where there is none
    fstat(descriptor, &status);
    return S_ISREG(status.st_mode);
  }

  int descriptor;
};

}  // namespace

Machine::Machine(const std::string& root) {
  const auto real_root = resolved(root);
  if (!real_root) throw std::runtime_error(root + ": " + std::strerror(errno));
  if (*real_root != "/") root_ = *real_root;
  if (!has("sys")) throw std::runtime_error(root + ": has no folder sys");
}

std::optional<std::string> Machine::real(const std::string& path) const {
  auto found = resolved(this->path(path));
  if (!found || !found->starts_with(root_)) return std::nullopt;
  if (found->size() > root_.size() && (*found)[root_.size()] != '/') return std::nullopt;
  return found;
}

std::optional<std::string> Machine::bytes(const std::string& path, size_t limit) const {
  const auto found = real(path);
  if (!found) return std::nullopt;
  const File file(*found);
  if (!file.is_regular()) return std::nullopt;
  std::string content;
  char block[4096];
  while (content.size() < limit) {
    const ssize_t count = read(file.descriptor, block, std::min(sizeof(block), limit - content.size()));
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    content.append(block, static_cast<size_t>(count));
  }
  return content;
}

std::optional<std::string> Machine::text(const std::string& path) const {
  auto content = bytes(path);
  if (!content) return std::nullopt;
  content->erase(content->find_last_not_of(std::string(" \t\r\n\0", 5)) + 1);
  if (content->empty()) content.reset();
  return content;
}

std::optional<uint64_t> Machine::number(const std::string& path) const {
  const auto content = text(path);
  if (!content) return std::nullopt;
  const bool is_hex = content->starts_with("0x");
  const char* const end = content->data() + content->size();
  uint64_t value = 0;
  const auto [stop, error] =
      std::from_chars(content->data() + (is_hex ? 2 : 0), end, value, is_hex ? 16 : 10);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

std::vector<std::string> Machine::names(const std::string& folder) const {
  std::vector<std::string> found;
  const auto real_folder = real(folder);
  if (!real_folder) return found;
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(real_folder->c_str()), closedir);
  if (stream == nullptr) return found;
  while (const dirent* const entry = readdir(stream.get())) {
    if (entry->d_name[0] != '.') found.emplace_back(entry->d_name);
  }
  std::sort(found.begin(), found.end());
  return found;
}

std::optional<std::string> Machine::target(const std::string& path) const {
  const auto found = real(path);
  if (!found || found->size() <= root_.size()) return std::nullopt;
  return found->substr(root_.size() + 1);
}

std::optional<std::string> Machine::trouble(const std::string& path) const {
  if (!resolved(this->path(path))) {
    if (errno == ENOENT || errno == ENOTDIR) return std::nullopt;
    return std::strerror(errno);
  }
  const auto found = real(path);
  if (!found) return "leads out of the folder";
  if (access(found->c_str(), R_OK) != 0) return std::strerror(errno);
  return std::nullopt;
}

std::optional<std::string> Machine::trouble_in(const std::string& folder) const {
  if (const auto why = trouble(folder)) return folder + ": " + *why;
  for (const std::string& name : names(folder)) {
    const std::string one = folder + "/" + name;
    if (const auto why = trouble(one)) return one + ": " + *why;
  }
  return std::nullopt;
}

bool Machine::leads_outside(const std::string& folder) const {
  if (is_running_system()) return false;
  const auto is_outside = [this](const std::string& path) {
    const bool is_there = resolved(this->path(path)).has_value();
    return is_there && !has(path);
  };
  if (is_outside(folder)) return true;
  const std::vector<std::string> entries = names(folder);
  return std::any_of(entries.begin(), entries.end(),
                     [&](const std::string& name) { return is_outside(folder + "/" + name); });
}

}  // namespace zeldb::scan
