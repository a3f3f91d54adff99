// SPDX-License-Identifier: Apache-2.0
//
// Texts of the databases may hold any bytes. These functions make them fit to be shown.
#ifndef CLI_TEXT_H
#define CLI_TEXT_H

#include <string>
#include <string_view>

namespace zeldb::cli {

// Terminal: what would steer a terminal is shown as \x1b; bytes that are no UTF-8 become U+FFFD.
// Raw: the same, and a backslash as \\.
enum class Escape { Terminal, Raw };
std::string printable(std::string_view text, Escape escape);

// How many places of a terminal a printable text takes.
size_t width_of(std::string_view text);

// The text, or as much of it as leaves room for the ellipsis that ends it. width is at least 1.
std::string cut(const std::string& text, size_t width);

}  // namespace zeldb::cli

#endif
