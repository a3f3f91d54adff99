// SPDX-License-Identifier: Apache-2.0
//
// Whole files. Everything throws a Failure that names the file.
#ifndef CLI_FILE_H
#define CLI_FILE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/at_signal.h"

namespace zeldb::cli {

// The first limit bytes of a regular file.
std::string read_file(const std::string& path, size_t limit = SIZE_MAX);
void write_file(const std::string& path, std::string_view content);
// Writes a temporary file, without waiting for the disk.
void write_temporary(const std::string& path, std::string_view content);

// The path that means standard input or standard output.
constexpr const char* kStandard = "-";
// As read_file, but also reads standard input, which may be a pipe.
std::string read_input(const std::string& path, size_t limit);

enum class IfExists { Refuse, Replace };

// A file that comes into being whole or not at all: it is written under another name beside its own, private
// to the user, and removed when the command fails or a signal ends it.
class NewFile {
 public:
  NewFile(const std::string& path, IfExists if_exists);

  // The file to write to; empty at first.
  const std::string& temporary_path() const { return temporary_; }
  // Gives the file its name.
  void commit();

 private:
  std::string path_;
  std::string temporary_;
  std::optional<Removal> removal_;
};

// Writes the result of make to a file or to standard output. A file that cannot be written is refused before
// make is called.
void write_output(const std::string& path, IfExists if_exists, const std::function<std::string()>& make);

// The file of a SQLite database, and those that SQLite keeps beside it for a while.
std::vector<std::string> with_logs(const std::string& database);

}  // namespace zeldb::cli

#endif
