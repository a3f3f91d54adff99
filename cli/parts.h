// SPDX-License-Identifier: Apache-2.0
//
// The parts of a machine that the inventory can distinguish: a baseline holds them, and they are compared
// with it.
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
  std::string firmware{};                   // the running version
  std::string ports_up{};                   // addresses of its ports with a link
  std::map<std::string, uint64_t> sizes{};  // by unit
};

// Whether a text means that there is no value, such as "N/A".
bool is_placeholder(const char* text);

// The drives that are present. The list of all drives omits drives that it cannot read, and keeps some that
// were removed.
std::vector<aim_disk_info_t> read_present_drives();

// All parts, by kind and place. Throws Failure if a part of the inventory cannot be read: a part that is
// missing for that reason must not look removed.
std::vector<Part> read_parts();

// Whether one is listed before other.
bool comes_before(const Part& one, const Part& other);

std::string as_baseline(const std::vector<Part>& parts);
// Throws Failure with the exit status 1 for a text that is no baseline, damaged, or of a newer version. file
// is its name in messages.
std::vector<Part> parts_of_baseline(const std::string& text, const std::string& file);

}  // namespace zeldb::cli

#endif
