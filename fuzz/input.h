// SPDX-License-Identifier: Apache-2.0
//
// Helpers of the programs in this folder: pieces of an input, a folder of their own, and the end of a run
// that found something.
#ifndef FUZZ_INPUT_H
#define FUZZ_INPUT_H

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace zeldb_fuzz {

// Ends the process if the condition does not hold; libFuzzer keeps the input.
inline void expect(bool holds, const std::string& what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what.c_str());
  std::abort();
}

class Input {
 public:
  Input(const uint8_t* data, size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  bool empty() const { return rest_.empty(); }
  std::string_view all() const { return rest_; }
  std::string_view take(size_t size) {
    const std::string_view taken = rest_.substr(0, size);
    rest_.remove_prefix(taken.size());
    return taken;
  }
  // One of the first count numbers; 0 at the end.
  unsigned pick(unsigned count) {
    const std::string_view taken = take(1);
    return taken.empty() ? 0 : static_cast<unsigned char>(taken[0]) % count;
  }

 private:
  std::string_view rest_;
};

// Goes with the process.
class Folder {
 public:
  Folder() {
    expect(mkdtemp(path_.data()) != nullptr, "a folder for files");
    setenv("VREL_LOG", "/dev/null", 1);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  ~Folder() { std::filesystem::remove_all(path_); }

  std::string path(const std::string& file = "") const { return path_ + "/" + file; }
  // Makes another file each time: a reader that knows files by number and time must not take it for the last.
  void write(const std::string& file, std::string_view content) const {
    std::ofstream(path("new"), std::ios::binary) << content;
    std::filesystem::rename(path("new"), path(file));
  }

 private:
  std::string path_ = std::filesystem::temp_directory_path() / "zeldb-fuzz-XXXXXX";
};

}  // namespace zeldb_fuzz

#endif
