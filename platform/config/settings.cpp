// SPDX-License-Identifier: Apache-2.0
#include "config/settings.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace zel_platform {
namespace {

constexpr const char* kFile = "platform.json";

struct Failure {
  std::string function;
  uint32_t call;
  int rc;
};

Failure failure_of(const Json& entry) {
  std::optional<std::string> function = text_member(entry, "function");
  const std::optional<uint32_t> call = word_member(entry, "call");
  const std::optional<uint32_t> rc = word_member(entry, "rc");
  if (!function || !call || !rc) throw ConfigError("needs function, call and rc");
  return {std::move(*function), *call, static_cast<int>(*rc)};
}

std::vector<Failure> failures_of(const Json& settings) {
  std::vector<Failure> failures;
  const auto add = [&failures](const Json& entry) { failures.push_back(failure_of(entry)); };
  each_element(settings, "fail", IfMissing::Empty, add);
  return failures;
}

// Two versions of a file that differ in nothing of this are taken for the same.
using Version = std::pair<std::string, std::array<int64_t, 4>>;

Version version_of(const std::string& path) {
  struct stat status {};
  stat(path.c_str(), &status);
  return {
      path,
      {static_cast<int64_t>(status.st_ino), status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec}};
}

class Settings {
 public:
  std::shared_ptr<const Json> current() {
    const std::lock_guard lock(mutex_);
    refresh();
    return json_;
  }

  std::optional<int> count_call(const char* function) {
    const std::lock_guard lock(mutex_);
    refresh();
    const uint32_t call = ++calls_[function];
    const auto found = std::find_if(failures_.begin(), failures_.end(), [&](const Failure& failure) {
      return failure.function == function && failure.call == call;
    });
    return found == failures_.end() ? std::nullopt : std::optional(found->rc);
  }

 private:
  void refresh() {
    Version version = version_of(config_path(kFile));
    if (json_ && version == version_) return;
    auto content = std::make_shared<Json>(Json::Object());
    std::vector<Failure> failures;
    read_config(kFile, IfMissing::Empty, [&](const Json& json) {
      failures = failures_of(json);
      *content = json;
    });
    // Nothing is remembered of a version that there was not the memory to read.
    json_ = std::move(content);
    failures_ = std::move(failures);
    version_ = std::move(version);
  }

  std::mutex mutex_;
  Version version_;
  std::shared_ptr<const Json> json_;
  std::vector<Failure> failures_;
  std::map<std::string, uint32_t, std::less<>> calls_;
};

Settings& settings() {
  static Settings instance;
  return instance;
}

}  // namespace

std::shared_ptr<const Json> platform_settings() {
  return settings().current();
}

std::optional<int> injected_failure(const char* function) {
  return settings().count_call(function);
}

}  // namespace zel_platform
