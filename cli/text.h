// SPDX-License-Identifier: Apache-2.0
//
// Texts of the databases may hold any bytes. These functions make them fit to be shown.
#ifndef CLI_TEXT_H
#define CLI_TEXT_H

#include <string>
#include <string_view>

namespace zeldb::cli {

// Terminal: characters that would control a terminal are shown as \x1b; bytes that are no UTF-8 become
// U+FFFD. Raw: the same, and a backslash as \\. Ascii: as Terminal, but other characters than ASCII are shown
// as \xe4 or \u20ac. None: only the bytes that are no UTF-8 are replaced.
enum class Escape { Terminal, Raw, Ascii, None };
std::string printable(std::string_view text, Escape escape);

// The text, or as many of its characters as leave room for the ellipsis that ends it.
std::string cut(const std::string& text, size_t characters);
// The same by cells of a terminal; in a locale without UTF-8 the text has to be ASCII and "+" ends it.
std::string cut_to_places(const std::string& text, size_t places);
// A printable text, in ASCII unless the locale is UTF-8.
std::string in_locale(const std::string& text);

}  // namespace zeldb::cli

#endif
