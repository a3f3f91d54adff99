// SPDX-License-Identifier: Apache-2.0
//
// The parts that a machine consists of, as far as the inventory can tell one from another: what a baseline
// holds and what is compared with it.
#ifndef CLI_PARTS_H
#define CLI_PARTS_H

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "zeldb/storage.h"

namespace zeldb::cli {

constexpr int kBaselineVersion = 1;
// Between the versions that run in one place; a version may have blanks.
constexpr const char* kVersionSeparator = " and ";

// Texts are fit to be shown; an empty one is not known. Kind and place identify a part within its machine.
struct Part {
  std::string kind{};
  std::string place{};
  std::string on{};  // the place of the adapter that it sits on
  std::string name{};
  std::string model{};
  std::string part_number{};
  std::string serial_number{};
  std::string address{};                    // of its first port
  std::string firmware{};                   // that runs, not what waits
  std::string ports_up{};                   // addresses of its ports with a link
  std::map<std::string, uint64_t> sizes{};  // by what is counted
};

// What firmware writes where there is nothing to tell, such as "N/A".
bool is_placeholder(const char* text);

// The list of all drives leaves out what it cannot read, and has drives of some kinds that were pulled: these
// are the ones that are there.
std::vector<aim_disk_info_t> read_present_drives();

// All of them, by kind and place. Throws Failure when a part of the inventory cannot be read: what is missing
// for that reason must not look as if it had been removed.
std::vector<Part> read_parts();

// Whether the one is listed before the other.
bool comes_before(const Part& one, const Part& other);

std::string as_baseline(const std::vector<Part>& parts);
// Throws Failure with the exit status 1 for a text that is no baseline, damaged, or of a newer version; file
// is what it is called.
std::vector<Part> parts_of_baseline(const std::string& text, const std::string& file);

}  // namespace zeldb::cli

#endif
