// SPDX-License-Identifier: Apache-2.0
//
// What tells one machine from another of its kind, and how it is hidden.
#ifndef CLI_MASK_H
#define CLI_MASK_H

#include <map>
#include <string>
#include <string_view>

namespace zeldb::cli {

// What a column of this name identifies: "serial", "uuid", "asset", "address"; "text" where such may stand
// inside a text; empty where nothing does. Listings and tables of the databases name their columns alike.
std::string_view identified_by(std::string_view column);

// Replaces identifying values. The same mask gives the same value the same replacement, such as
// "serial-0001".
class Mask {
 public:
  std::string operator()(std::string_view column, const std::string& value);

 private:
  const std::string& replacement(std::string_view kind, const std::string& value);
  std::string inside(std::string text);

  std::map<std::string, std::string> known_;
  std::map<std::string, unsigned, std::less<>> counts_;
};

}  // namespace zeldb::cli

#endif
