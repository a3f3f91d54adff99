// SPDX-License-Identifier: Apache-2.0
//
// The files in which a Linux system describes its machine: those of the running system, or of a folder that
// holds a recorded one. Nothing outside of that folder is read, wherever its links lead.
#ifndef SCAN_MACHINE_H
#define SCAN_MACHINE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zeldb::scan {

class Machine {
 public:
  // Throws std::runtime_error, "what: why", if there is no such folder.
  explicit Machine(const std::string& root);

  bool is_running_system() const { return root_.empty(); }

  // Paths are relative to the root: "sys/class/net".
  bool has(const std::string& path) const { return real(path).has_value(); }
  // The first limit bytes of a regular file; nothing if there is none or it cannot be read.
  std::optional<std::string> bytes(const std::string& path, size_t limit = kUsualLimit) const;
  // The same without white space at its end; nothing if it is empty then.
  std::optional<std::string> text(const std::string& path) const;
  // A decimal number, or a hexadecimal one after 0x, with nothing after it.
  std::optional<uint64_t> number(const std::string& path) const;
  // Sorted; none where there is no such folder.
  std::vector<std::string> names(const std::string& folder) const;
  // The target of a link, relative to the root.
  std::optional<std::string> target(const std::string& path) const;
  // For libraries that open files themselves.
  std::string path(const std::string& path) const { return root_ + "/" + path; }
  // The reason why the file could not be read; nothing if it could be, or is not there.
  std::optional<std::string> trouble(const std::string& path) const;
  // The first trouble with the folder or with what is in it, after the path.
  std::optional<std::string> trouble_in(const std::string& folder) const;
  // Whether something in the folder is a link that leads out of the root.
  bool leads_outside(const std::string& folder) const;

 private:
  static constexpr size_t kUsualLimit = 4096;

  std::optional<std::string> real(const std::string& path) const;

  std::string root_;  // without links; empty for the running system
};

}  // namespace zeldb::scan

#endif
