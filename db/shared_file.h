// SPDX-License-Identifier: Apache-2.0
//
// Files in folders that everybody may write to: another program may have put anything in their place.
#ifndef DB_SHARED_FILE_H
#define DB_SHARED_FILE_H

#include <cstddef>

namespace zeldb {

enum class Links { Follow, Refuse };

// Open for reading if it is a regular file; nothing else is opened or waited for.
class SharedFile {
 public:
  SharedFile(const char* path, Links links);
  SharedFile(const SharedFile&) = delete;
  SharedFile& operator=(const SharedFile&) = delete;
  ~SharedFile();

  bool is_open() const { return descriptor_ >= 0; }
  // The next size bytes in one piece, or false.
  bool read(void* to, size_t size) const;

 private:
  int descriptor_;
};

}  // namespace zeldb

#endif
