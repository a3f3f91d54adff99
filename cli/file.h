// SPDX-License-Identifier: Apache-2.0
//
// Whole files. Everything throws a Failure that names the file.
#ifndef CLI_FILE_H
#define CLI_FILE_H

#include <string>
#include <string_view>

namespace zeldb::cli {

std::string read_file(const std::string& path);
void write_file(const std::string& path, std::string_view content);

enum class IfExists { Refuse, Replace };

// A file that comes into being whole or not at all: it is written under another name beside its own, private
// to the user.
class NewFile {
 public:
  NewFile(const std::string& path, IfExists if_exists);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  // What to write to; empty at first.
  const std::string& temporary_path() const { return temporary_; }
  // Gives the file its name.
  void commit();

 private:
  std::string path_;
  std::string temporary_;
};

}  // namespace zeldb::cli

#endif
