// SPDX-License-Identifier: Apache-2.0
//
// A recorded machine of a test, in a file of lines that are for one thing each:
//   path: text          a line of the file; \t and \xNN stand for bytes
//   path # bytes        bytes of the file: 8680, 00*12, "text"; ~ makes the sum of the file 0
//   path -> path        a link; from ".." on, its target is as it stands
//   at FOLDER           the folder of paths that begin with / in the lines below
//   files FOLDER a=1 b/c=2    several files of a line each
//   pci PATH 8086:1572 020000 WORD...  a function at sys/devices/PATH, which is "at" then. Words: bus=17
//   below a bridge,
//                       sub=8086:0001, link=3x8/4x16 now and at most, slot=12 of a port, node=1, vf=PATH of
//                       the function
//   net NAME a=1...     an interface of the function "at", with its files
//   scsi NAME PATH a=1...  a block device whose device is below the function, with the files of that; "at" is
//   the device smbios 17 3000 BYTES; text; text  a structure of the table: type, handle, what follows,
//   strings entry 17 3000 ...   the same as a file of dmi/entries each N 0 95, end    the lines between for
//   each number: {N}, {N*2+1} (from left to right), {N:2} as so many
//                       hexadecimal digits, {N:w} and {N:d} as the bytes of a word and of a double word
//   * remark
#ifndef TESTS_SCAN_MACHINE_FILE_H
#define TESTS_SCAN_MACHINE_FILE_H

#include <filesystem>

namespace zeldb_test {

// Throws std::runtime_error with the line that is wrong.
void unpack(const std::filesystem::path& file, const std::filesystem::path& root);

// A folder of its own, in memory where that is to be had: a machine has thousands of files.
class Scratch {
 public:
  Scratch();
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;
  ~Scratch();

  std::filesystem::path folder;
};

}  // namespace zeldb_test

#endif
