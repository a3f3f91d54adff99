// SPDX-License-Identifier: Apache-2.0
//
// Values that identify a machine, and their replacement by --mask.
#ifndef CLI_MASK_H
#define CLI_MASK_H

#include <map>
#include <span>
#include <string>
#include <string_view>

#include "cli/column.h"

namespace zeldb::cli {

// The kind of value in a column of this name: "serial", "uuid", "asset" or "address"; "text" if one may stand
// inside a text; "value" for the same or a text that people have written; "other" for an unknown name. Empty
// if nothing is hidden. Listings and tables of the databases share the names of columns.
std::string_view identified_by(std::string_view column);

// The same for a listing's column; numbers, keys and ids are not hidden.
inline std::string_view identified_by(const Column& column) {
  const bool is_free = column.type == Type::Text && column.digits == 0;
  return is_free ? identified_by(column.key) : std::string_view();
}

struct Unmasked {
  std::string_view column;
  const char* why;
};
std::span<const Unmasked> unmasked_columns();

// The description of --mask for help texts.
constexpr const char* kMaskHelp =
    "Replace serial numbers, UUIDs, asset tags, addresses, values of text settings, and all texts "
    "that zeldb columns --unmasked does not list; equal values get the same word";

// Whether the values of a setting are chosen from a list or numbers, or any text.
enum class Holds { Choice, FreeText };

// Replaces identifying values. The same mask gives the same value the same replacement, such as
// "serial-0001".
class Mask {
 public:
  std::string operator()(std::string_view column, const std::string& value, Holds holds = Holds::Choice);

 private:
  const std::string& replacement(std::string_view kind, const std::string& value);
  std::string inside(const std::string& text);

  std::map<std::string, std::string> known_;
  std::map<std::string, unsigned, std::less<>> counts_;
};

}  // namespace zeldb::cli

#endif
