// SPDX-License-Identifier: Apache-2.0
//
// Files in folders that everybody may write to: another program may have put anything in their place.
#ifndef DB_SHARED_FILE_H
#define DB_SHARED_FILE_H

#include <cstddef>

namespace zeldb {

enum class Links { Follow, Refuse };

// Opens the file for reading if it is a regular one, without waiting. Anything else counts as absent.
class SharedFile {
 public:
  SharedFile(const char* path, Links links);
  SharedFile(const SharedFile&) = delete;
  SharedFile& operator=(const SharedFile&) = delete;
  ~SharedFile();

  bool is_open() const { return descriptor_ >= 0; }
  // Reads the next size bytes; false if there are fewer.
  bool read(void* to, size_t size) const;

 private:
  int descriptor_;
};

}  // namespace zeldb

#endif
