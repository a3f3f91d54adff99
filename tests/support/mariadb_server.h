// SPDX-License-Identifier: Apache-2.0
//
// A MariaDB server of one's own, in a folder of its own: started as a child, ended by SIGKILL.
#ifndef TESTS_SUPPORT_MARIADB_SERVER_H
#define TESTS_SUPPORT_MARIADB_SERVER_H

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace zeldb_test {

class MariaDbServer {
 public:
  // Not started yet. The data directory is a copy of pristine, or made afresh when that is empty.
  explicit MariaDbServer(const std::filesystem::path& parent, const std::filesystem::path& pristine = {});
  MariaDbServer(const MariaDbServer&) = delete;
  MariaDbServer& operator=(const MariaDbServer&) = delete;
  ~MariaDbServer();

  // Returns when it takes connections; throws with the end of its log when it does not.
  void start(const std::vector<std::string>& options = {});
  // Kept across restarts; taken from what is free when it is first asked for.
  unsigned port();
  void kill();

  const std::filesystem::path& folder() const { return folder_; }
  std::filesystem::path data() const { return folder_ / "data"; }
  std::string socket() const { return folder_ / "s"; }

 private:
  std::filesystem::path folder_;
  unsigned port_ = 0;
  pid_t pid_ = -1;
};

}  // namespace zeldb_test

#endif
